#include "helper/macos/packages/PackageTools.h"

#include "helper/macos/commands/Command.h"
#include "platform/AtomicFile.h"

namespace helper {

namespace {

constexpr std::chrono::seconds askLimit{60};
constexpr std::chrono::seconds installLimit{1800};
constexpr std::size_t maximumDistribution = std::size_t(1) << 20;

PackageTools::Outcome<std::string> outputOf(const std::vector<std::string>& command, std::chrono::seconds limit)
{
    auto end = runCommand(command, limit);
    if (!end.isSuccess())
        return std::unexpected(failureOfCommand(command, end));
    return std::move(end.output);
}

// The value of an attribute of the element's opening, which has no entities; empty when there is none.
std::string_view attribute(std::string_view element, std::string_view name)
{
    const auto start = std::string(" ").append(name).append("=\"");
    const auto at = element.find(start);
    if (at == std::string_view::npos)
        return {};
    element.remove_prefix(at + start.size());
    return element.substr(0, element.find('"'));
}

} // namespace

PackageTools::Outcome<std::optional<PackageReceipt>> PackageTools::receipt(const std::string& identifier) const
{
    const std::vector<std::string> ask{_pkgutil, "--pkg-info", identifier};
    const auto information = runCommand(ask, askLimit);
    if (information.output.find("No receipt for") != std::string::npos)
        return std::nullopt;
    if (!information.isSuccess())
        return std::unexpected(failureOfCommand(ask, information));
    const auto files = outputOf({_pkgutil, "--files", identifier}, askLimit);
    if (!files)
        return std::unexpected(files.error());
    auto receipt = PackageReceipt::inOutput(information.output, *files);
    if (!receipt)
        return std::unexpected("the receipt of " + identifier + " is not understood");
    return receipt;
}

PackageTools::Outcome<void> PackageTools::forget(const std::string& identifier) const
{
    return successOf(outputOf({_pkgutil, "--forget", identifier}, askLimit));
}

PackageTools::Signature PackageTools::signature(const std::string& package) const
{
    const auto end = runCommand({_pkgutil, "--check-signature", package}, askLimit);
    return signatureInOutput(end.isSuccess(), end.output);
}

PackageTools::Signature PackageTools::signatureInOutput(bool isSuccess, const std::string& output)
{
    if (output.find("Status: no signature") != std::string::npos)
        return Signature::Missing;
    const bool isTrusted = output.find("Status: signed ") != std::string::npos
        && output.find("untrusted") == std::string::npos && output.find("expired") == std::string::npos;
    return isSuccess && isTrusted ? Signature::Good : Signature::Bad;
}

PackageTools::Outcome<std::string> PackageTools::version(const std::string& package, const std::string& identifier,
                                                         const std::string& folder) const
{
    if (const auto expanded = outputOf({_pkgutil, "--expand", package, folder}, askLimit); !expanded)
        return std::unexpected(expanded.error());
    const auto bytes = platform::readFile(folder + "/Distribution", maximumDistribution);
    const auto found = bytes
        ? versionInDistribution(std::string_view(reinterpret_cast<const char*>(bytes->data()), bytes->size()),
                                identifier)
        : std::nullopt;
    if (!found)
        return std::unexpected("the package does not say which version of " + identifier + " it holds");
    return *found;
}

std::optional<std::string> PackageTools::versionInDistribution(std::string_view text, std::string_view identifier)
{
    constexpr std::string_view opening = "<pkg-ref ";
    for (auto at = text.find(opening); at != std::string_view::npos; at = text.find(opening, at + 1)) {
        const auto element = text.substr(at, text.find('>', at) - at);
        const auto version = attribute(element, "version");
        if (attribute(element, "id") == identifier && !version.empty())
            return std::string(version);
    }
    return std::nullopt;
}

PackageTools::Outcome<void> PackageTools::install(const std::string& package) const
{
    return successOf(outputOf({_installer, "-pkg", package, "-target", "/"}, installLimit));
}

} // namespace helper
