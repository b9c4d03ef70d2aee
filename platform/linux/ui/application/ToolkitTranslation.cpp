#include "platform/linux/ui/application/ToolkitTranslation.h"

#include "platform/linux/system/texts/StringTable.h"

#include <QCoreApplication>
#include <QLibraryInfo>
#include <QTranslator>

namespace platform::ui {

namespace {

// As the toolkit names its files: after the region rather than the script.
QString toolkitLanguage(const std::string& language)
{
    if (language == "zh-Hans")
        return QStringLiteral("zh_CN");
    if (language == "zh-Hant")
        return QStringLiteral("zh_TW");
    return QString::fromStdString(language).replace(u'-', u'_');
}

} // namespace

void installToolkitTranslation(QCoreApplication& application)
{
    const std::string& language = StringTable::shared().language();
    if (language == "en")
        return; // what the toolkit speaks by itself
    auto* const translator = new QTranslator(&application);
    const auto folder = QLibraryInfo::path(QLibraryInfo::TranslationsPath);
    if (translator->load(QStringLiteral("qtbase_") + toolkitLanguage(language), folder))
        QCoreApplication::installTranslator(translator);
    else
        delete translator;
}

} // namespace platform::ui
