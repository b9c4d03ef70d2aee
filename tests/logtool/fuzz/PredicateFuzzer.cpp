#include "platform/linux/logtool/Predicate.h"
#include "platform/Unicode.h"
#include "tests/fuzz/Require.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>

using namespace logtool;

namespace {

LogRecord messageOf(const char* subsystem, const char* path)
{
    LogRecord record;
    record[Field::Subsystem] = subsystem;
    record[Field::ProcessImagePath] = path;
    record[Field::MessageType] = "Default";
    record[Field::EventMessage] = "a";
    return record;
}

} // namespace

// The input is a predicate. What it matches is in a subsystem that it needs, and a bracket around it changes nothing.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size)
{
    const std::string text(reinterpret_cast<const char*>(bytes), size);
    const auto predicate = Predicate::parse(text);
    if (!predicate) {
        require(!predicate.error().empty());
        require(!platform::isValidUTF8(text) || platform::isValidUTF8(predicate.error()));
        return 0;
    }
    const auto needed = predicate->subsystems();
    const auto inBrackets = Predicate::parse("(" + text + ")");
    for (const char* const subsystem : {"a", "com.zerkolin.brevane", ""}) {
        for (const char* const path : {"a", "/usr/libexec/backupd", ""}) {
            const auto message = messageOf(subsystem, path);
            const bool matches = predicate->matches(message);
            require(!matches || needed.empty() || std::ranges::find(needed, subsystem) != needed.end());
            // One bracket more may be one too many.
            require(!inBrackets || inBrackets->matches(message) == matches);
        }
    }
    return 0;
}
