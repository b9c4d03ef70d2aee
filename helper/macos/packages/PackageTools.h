#pragma once

#include "helper/macos/packages/PackageReceipt.h"

#include <expected>
#include <optional>
#include <string>

namespace helper {

// The system's tools for packages and their receipts. Failures are words without a full stop.
class PackageTools {
public:
    template <class T>
    using Outcome = std::expected<T, std::string>;

    explicit PackageTools(std::string pkgutil = "/usr/sbin/pkgutil", std::string installer = "/usr/sbin/installer")
        : _pkgutil(std::move(pkgutil)),
          _installer(std::move(installer))
    {
    }

    // nullopt when no such package is installed.
    Outcome<std::optional<PackageReceipt>> receipt(const std::string& identifier) const;
    // Removes nothing but the receipt.
    Outcome<void> forget(const std::string& identifier) const;

    enum class Signature { Good, Missing, Bad };
    // By a certificate that the system trusts.
    Signature signature(const std::string& package) const;
    // Of what the package at the path would install under the identifier. The folder must not be there; it holds what
    // the package consists of then.
    Outcome<std::string> version(const std::string& package, const std::string& identifier,
                                 const std::string& folder) const;
    // Onto the system's volume. May take minutes.
    Outcome<void> install(const std::string& package) const;

    // By the output of the check and whether it succeeded.
    static Signature signatureInOutput(bool isSuccess, const std::string& output);
    // nullopt when the text of a distribution does not name one.
    static std::optional<std::string> versionInDistribution(std::string_view text, std::string_view identifier);

private:
    std::string _pkgutil;
    std::string _installer;
};

} // namespace helper
