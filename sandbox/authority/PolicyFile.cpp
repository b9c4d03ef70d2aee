#include "sandbox/authority/PolicyFile.h"

#include <QFile>
#include <QXmlStreamReader>

std::optional<PolicyFile::Prompts> PolicyFile::promptsInFile(const std::string& path)
{
    QFile file(QString::fromStdString(path));
    if (!file.open(QIODevice::ReadOnly))
        return std::nullopt;
    Prompts prompts;
    std::string action;
    QXmlStreamReader reader(&file);
    while (!reader.atEnd()) {
        if (reader.readNext() != QXmlStreamReader::StartElement)
            continue;
        if (reader.name() == u"action")
            action = reader.attributes().value("id").toString().toStdString();
        else if (reader.name() == u"message" && !reader.attributes().hasAttribute("xml:lang"))
            prompts[action] = reader.readElementText().toStdString();
    }
    return reader.hasError() ? std::nullopt : std::optional(prompts);
}
