#include "helper/simulation/SimulationCommand.h"

#include "helper/simulation/Simulation.h"
#include "platform/AtomicFile.h"
#include "platform/PropertyListCoding.h"

#include <cstdio>
#include <cstdlib>
#include <string_view>
#include <sysexits.h>

namespace helper {

namespace {

std::expected<SimulationScript, std::string> scriptInFile(const std::string& path)
{
    const auto bytes = platform::readFile(path);
    const auto list = bytes ? platform::propertyListWithData(*bytes) : platform::Result<platform::PropertyList>();
    if (!bytes || !list)
        return std::unexpected("The file '" + path + "' is no property list that can be read.");
    return SimulationScript::fromPropertyList(*list);
}

} // namespace

std::optional<int> runSimulationCommand(int count, const char* const* arguments)
{
    if (count != 3 || std::string_view(arguments[1]) != "--simulate")
        return std::nullopt;
    auto script = scriptInFile(arguments[2]);
    if (!script) {
        std::fprintf(stderr, "%s\n", script.error().c_str());
        return EX_USAGE;
    }
    Simulation simulation(std::move(*script), [](const std::string& line) { std::printf("%s\n", line.c_str()); });
    simulation.run();
    return std::fflush(stdout) == 0 && std::ferror(stdout) == 0 ? EXIT_SUCCESS : EX_IOERR;
}

} // namespace helper
