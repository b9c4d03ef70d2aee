#pragma once

#include "platform/macos/ui/ControlNative.h"
#include "platform/ui/TextField.h"

@class BRVTextFieldDelegate;

namespace platform::ui {

struct TextFieldNative : ControlNative {
    explicit TextFieldNative(NSView* theView);
    ~TextFieldNative() override;

    std::weak_ptr<TextFieldDelegate> delegate;
    BRVTextFieldDelegate* listener;
};

} // namespace platform::ui
