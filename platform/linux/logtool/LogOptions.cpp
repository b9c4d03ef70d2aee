#include "platform/linux/logtool/LogOptions.h"

#include <optional>
#include <utility>

namespace logtool {

namespace {

// "--name value" and "--name=value".
class Arguments {
public:
    explicit Arguments(const std::vector<std::string>& all) : _all(all) { }

    bool isAtEnd() const { return _next >= _all.size(); }
    const std::string& take() { return _all[_next++]; }

    std::expected<std::string, std::string> valueOf(const std::string& option, const std::string& name)
    {
        if (option.size() > name.size())
            return option.substr(name.size() + 1);
        if (isAtEnd())
            return std::unexpected("the option " + name + " needs a value");
        return take();
    }

private:
    const std::vector<std::string>& _all;
    std::size_t _next = 0;
};

bool isOption(const std::string& argument, const std::string& name)
{
    return argument == name || argument.starts_with(name + "=");
}

std::expected<void, std::string> setPredicate(LogOptions& options, const std::string& text)
{
    auto predicate = Predicate::parse(text);
    if (!predicate)
        return std::unexpected("bad predicate: " + predicate.error());
    options.predicate = std::move(*predicate);
    return {};
}

std::expected<void, std::string> setStyle(LogOptions& options, const std::string& name)
{
    if (name != "json" && name != "ndjson")
        return std::unexpected("there is no style '" + name + "'");
    options.style = name == "json" ? Style::Json : Style::LineJson;
    return {};
}

std::expected<void, std::string> takeOption(LogOptions& options, const std::string& option, Arguments& arguments)
{
    if (option == "--info" || option == "--debug") {
        (option == "--info" ? options.includesInfo : options.includesDebug) = true;
        return {};
    }
    for (const auto& [name, set] : {std::pair("--predicate", &setPredicate), std::pair("--style", &setStyle)}) {
        if (!isOption(option, name))
            continue;
        const auto value = arguments.valueOf(option, name);
        return value ? set(options, *value) : std::unexpected(value.error());
    }
    return std::unexpected("there is no option '" + option + "'");
}

} // namespace

std::expected<LogOptions, std::string> LogOptions::parse(const std::vector<std::string>& all)
{
    LogOptions options;
    Arguments arguments(all);
    const auto command = arguments.isAtEnd() ? std::string() : arguments.take();
    options.asksForHelp = command == "help" || command == "--help" || command == "-h";
    if (options.asksForHelp)
        return options;
    if (command != "show")
        return std::unexpected(command.empty() ? "a command is missing" : "there is no command '" + command + "'");
    while (!arguments.isAtEnd()) {
        const auto taken = takeOption(options, arguments.take(), arguments);
        if (!taken)
            return std::unexpected(taken.error());
    }
    return options;
}

bool LogOptions::wants(const LogRecord& record) const
{
    const auto& type = record[Field::MessageType];
    if ((type == "Info" && !includesInfo) || (type == "Debug" && !includesDebug))
        return false;
    return predicate.matches(record);
}

} // namespace logtool
