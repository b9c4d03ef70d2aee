#pragma once

#include "platform/linux/ui/textlayout/TextLineLayout.h"

#include <memory>
#include <QMimeData>

namespace platform::ui {

// A stretch of a text for the clipboard, converted when somebody pastes it: copying all of a long text takes no time.
class TextStretchData : public QMimeData {
    Q_OBJECT

public:
    TextStretchData(std::shared_ptr<const StyledText> text, TextStretch stretch);

    bool hasFormat(const QString& type) const override;
    QStringList formats() const override;

protected:
    QVariant retrieveData(const QString& type, QMetaType preferred) const override;

private:
    std::shared_ptr<const StyledText> _text;
    TextStretch _stretch;
};

// The characters of the stretch.
QString plainText(const StyledText& text, TextStretch stretch);

} // namespace platform::ui
