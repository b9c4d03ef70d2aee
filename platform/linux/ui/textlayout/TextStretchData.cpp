#include "platform/linux/ui/textlayout/TextStretchData.h"

namespace platform::ui {

namespace {

const QString& plainType()
{
    static const auto type = QStringLiteral("text/plain");
    return type;
}

} // namespace

TextStretchData::TextStretchData(std::shared_ptr<const StyledText> text, TextStretch stretch)
    : _text(std::move(text)),
      _stretch(stretch)
{
}

bool TextStretchData::hasFormat(const QString& type) const
{
    return type == plainType();
}

QStringList TextStretchData::formats() const
{
    return {plainType()};
}

QVariant TextStretchData::retrieveData(const QString& type, QMetaType) const
{
    return type == plainType() ? QVariant(plainText(*_text, _stretch)) : QVariant();
}

QString plainText(const StyledText& text, TextStretch stretch)
{
    const auto bytes = std::string_view(text.string()).substr(stretch.begin, stretch.end - stretch.begin);
    return QString::fromUtf8(bytes.data(), static_cast<qsizetype>(bytes.size()));
}

} // namespace platform::ui
