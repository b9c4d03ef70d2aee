#include "platform/ui/TextField.h"

#include "platform/IntegerText.h"
#include "platform/linux/ui/entry/LineEdit.h"
#include "platform/linux/ui/entry/TextFieldNative.h"
#include "platform/ui/TextAppearance.h"

#include <QLabel>

namespace platform::ui {

namespace {

// Null for a label.
LineEdit* editor(const View& view)
{
    return view.native().as<LineEdit>();
}

TextFieldNative& fieldNative(const View& view)
{
    return static_cast<TextFieldNative&>(view.native());
}

QString text(const View& view)
{
    if (const auto* const line = editor(view))
        return line->value();
    return widgetOf<QLabel>(view).text();
}

} // namespace

TextField::TextField(std::unique_ptr<Native> native) : Control(std::move(native))
{
    auto* const line = editor(*this);
    if (!line) {
        widgetOf<QLabel>(*this).setTextFormat(Qt::PlainText);
        return;
    }
    auto& field = fieldNative(*this);
    line->setJudge([this, &field](const TextEdit& edit) {
        const auto delegate = field.delegate.lock();
        const TextRange range{static_cast<std::size_t>(edit.location), static_cast<std::size_t>(edit.length)};
        return !delegate || delegate->shouldChangeText(*this, range, edit.replacement.toStdString());
    });
    line->setCommandHandler([this, &field](TextCommand command) {
        const auto delegate = field.delegate.lock();
        return delegate && delegate->doCommand(*this, command);
    });
    QObject::connect(line, &LineEdit::valueEdited, field.receiver(), [this, &field] {
        if (const auto delegate = field.delegate.lock())
            delegate->controlTextDidChange(*this);
    });
    QObject::connect(line, &QLineEdit::returnPressed, field.receiver(), [&field] { field.sendAction(); });
}

std::string TextField::stringValue() const
{
    return text(*this).toStdString();
}

void TextField::setStringValue(const std::string& value)
{
    if (auto* const line = editor(*this))
        return line->setValue(QString::fromStdString(value));
    widgetOf<QLabel>(*this).setText(QString::fromStdString(value));
}

std::size_t TextField::length() const
{
    return static_cast<std::size_t>(text(*this).size());
}

std::int64_t TextField::integerValue() const
{
    return integerOfText(stringValue());
}

void TextField::setIntegerValue(std::int64_t value)
{
    setStringValue(std::to_string(value));
}

void TextField::setTextColor(const Color& color)
{
    auto& widget = widgetOf<QWidget>(*this);
    auto palette = widget.palette();
    const bool isDark = palette.color(QPalette::Window).lightness() < 128;
    const auto components = resolvedColor(color, isDark ? Appearance::Dark : Appearance::Light);
    const auto resolved = QColor::fromRgbF(static_cast<float>(components.red), static_cast<float>(components.green),
                                           static_cast<float>(components.blue), static_cast<float>(components.alpha));
    palette.setColor(widget.foregroundRole(), resolved);
    widget.setPalette(palette);
}

void TextField::setDelegate(std::weak_ptr<TextFieldDelegate> delegate)
{
    fieldNative(*this).delegate = std::move(delegate);
}

} // namespace platform::ui
