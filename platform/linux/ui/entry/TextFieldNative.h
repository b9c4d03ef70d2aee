#pragma once

#include "platform/linux/ui/controls/ControlNative.h"
#include "platform/linux/ui/entry/LineEdit.h"
#include "platform/ui/TextField.h"

namespace platform::ui {

struct TextFieldNative : ControlNative {
    using ControlNative::ControlNative;

    ~TextFieldNative() override
    {
        if (auto* const line = as<LineEdit>()) {
            line->setJudge({});
            line->setCommandHandler({});
        }
    }

    std::weak_ptr<TextFieldDelegate> delegate;
};

} // namespace platform::ui
