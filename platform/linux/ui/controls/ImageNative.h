#pragma once

#include "platform/ui/Image.h"

#include <QIcon>
#include <QSize>

namespace platform::ui {

struct Image::Native {
    QIcon icon;
    QSize size; // empty: as the control likes it
};

} // namespace platform::ui
