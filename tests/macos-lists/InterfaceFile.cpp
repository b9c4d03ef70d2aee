#include "tests/macos-lists/InterfaceFile.h"

#include "tests/macos-lists/Sources.h"

#include <QXmlStreamReader>

namespace {

class FileReader {
public:
    explicit FileReader(const std::string& text) : _xml(QByteArray::fromStdString(text)) { }

    InterfaceFile read()
    {
        _xml.readNextStartElement(); // ui
        while (_xml.readNextStartElement()) {
            if (_xml.name() == u"widget")
                readElement(attribute("class"));
            else
                _xml.skipCurrentElement();
        }
        return std::move(_file);
    }

private:
    std::string attribute(const char* name) const
    {
        return _xml.attributes().value(QLatin1String(name)).toString().toStdString();
    }

    void readElement(const std::string& kind)
    {
        const auto identifier = attribute("name");
        FileElement element{kind, {}, {}, {}, {}};
        std::vector<std::string> actions;
        while (_xml.readNextStartElement()) {
            if (_xml.name() == u"property")
                readProperty(element, kind == "QMainWindow");
            else if (_xml.name() == u"widget")
                readElement(attribute("class"));
            else if (_xml.name() == u"action")
                readElement("action");
            else if (_xml.name() == u"layout")
                readLayout();
            else if (_xml.name() == u"item")
                element.items.push_back(readItem());
            else {
                if (_xml.name() == u"addaction")
                    actions.push_back(attribute("name"));
                _xml.skipCurrentElement();
            }
        }
        if (kind == "QMenu")
            _file.menus.push_back(std::move(actions));
        if (!identifier.empty())
            _file.elements.emplace(identifier, std::move(element));
    }

    void readLayout()
    {
        while (_xml.readNextStartElement()) {
            if (_xml.name() == u"item" || _xml.name() == u"layout")
                readLayout();
            else if (_xml.name() == u"widget")
                readElement(attribute("class"));
            else
                _xml.skipCurrentElement();
        }
    }

    void readProperty(FileElement& element, bool isWindow)
    {
        const auto name = attribute("name");
        const auto texts = readTexts();
        const auto text = texts.empty() ? std::string() : texts.front();
        if (name == "windowTitle" && isWindow)
            _file.windowTitle = text;
        else if (name == "text" || name == "title")
            element.title = text;
        else if (name == "accessibleName")
            element.accessibleName = text;
        else if (name == "shortcut")
            element.key = text;
        else if (name == "columns")
            element.items = texts;
    }

    std::string readItem()
    {
        const auto texts = readTexts();
        return texts.empty() ? std::string() : texts.front();
    }

    // Those of the element that has just begun.
    std::vector<std::string> readTexts()
    {
        std::vector<std::string> texts;
        while (_xml.readNextStartElement()) {
            if (_xml.name() == u"string")
                texts.push_back(_xml.readElementText().toStdString());
            else
                for (auto& text : readTexts())
                    texts.push_back(std::move(text));
        }
        return texts;
    }

    QXmlStreamReader _xml;
    InterfaceFile _file;
};

} // namespace

InterfaceFile InterfaceFile::read(const std::string& name)
{
    return FileReader(Sources::read("resources/linux/" + name + ".ui")).read();
}
