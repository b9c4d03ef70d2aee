#include "platform/linux/logtool/RecordWriter.h"

#include "platform/linux/system/journal/JsonText.h"

namespace logtool {

namespace {

void appendMember(std::string& out, std::string_view name, std::string_view value)
{
    out.append("\"").append(name).append("\":");
    platform::appendJsonString(out, value);
    out += ',';
}

} // namespace

RecordWriter::RecordWriter(std::FILE* out, Style style) : _out(out), _style(style) { }

void RecordWriter::write(const LogRecord& record)
{
    _line = _style == Style::LineJson ? "{" : _isFirst ? "[{" : ",\n{";
    _isFirst = false;
    appendMember(_line, "timestamp", record.timestamp);
    for (std::size_t field = 0; field < FieldCount; ++field)
        appendMember(_line, FieldNames[field], record.fields[field]);
    _line.append("\"processID\":").append(std::to_string(record.processID)).append("}");
    if (_style == Style::LineJson)
        _line += '\n';
    put(_line);
}

bool RecordWriter::finish()
{
    if (_style == Style::Json)
        put(_isFirst ? "[]\n" : "]\n");
    return std::fflush(_out) == 0 && !std::ferror(_out);
}

void RecordWriter::put(const std::string& text)
{
    std::fwrite(text.data(), 1, text.size(), _out);
}

} // namespace logtool
