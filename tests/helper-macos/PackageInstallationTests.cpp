#include "helper/macos/packages/PackageInstallation.h"
#include "helper/PasswordRule.h"
#include "platform/PropertyListCoding.h"
#include "protocol/ErrorCodes.h"
#include "protocol/Messages.h"
#include "tests/helper-macos/StandInProgram.h"
#include "tests/support/EnvironmentVariable.h"

#include <algorithm>
#include <doctest/doctest.h>
#include <openssl/evp.h>
#include <openssl/sha.h>

using helper::PackageInstallation;
using helper::PackageTools;
using platform::Dictionary;

namespace {

// An installation by programs that stand in for the system's, and a feed of files.
class PackagedProduct {
public:
    PackagedProduct()
    {
        REQUIRE(_key);
        std::size_t length = configuration.key->size();
        REQUIRE(EVP_PKEY_get_raw_public_key(_key, configuration.key->data(), &length) == 1);
        pkgutil.say("--check-signature",
                    "   Status: signed by a developer certificate issued by Apple for distribution\n");
        pkgutil.act("--expand", "mkdir \"$3\" && cp Distribution \"$3\"");
        installer.act("-pkg",
                      "cp \"$2\" installed; [ ! -e '" + folder.file("installing") + "' ] || echo marked >>calls");
        tellVersion("2.0");
        offer("2.0");
    }
    ~PackagedProduct() { EVP_PKEY_free(_key); }
    PackagedProduct(const PackagedProduct&) = delete;
    PackagedProduct& operator=(const PackagedProduct&) = delete;

    void offer(const std::string& version, const std::string& name = "Brevane.pkg") const
    {
        const auto bytes = platform::binaryPropertyList(
            Dictionary{{"Version", version}, {"HumanVersion", version}, {"Package", name}});
        folder.write("update.plist", std::string(bytes->begin(), bytes->end()));
    }
    void tellVersion(const std::string& version) const
    {
        pkgutil.folder.write("Distribution", "<pkg-ref id=\"com.zerkolin.brevane\" version=\"" + version + "\"/>");
    }
    std::string signedPackage(const std::string& content) const
    {
        std::string text = "com.zerkolin.brevane.package\n";
        std::array<unsigned char, SHA512_DIGEST_LENGTH> digest{};
        ::SHA512(reinterpret_cast<const unsigned char*>(content.data()), content.size(), digest.data());
        text.append(digest.begin(), digest.end());
        std::array<unsigned char, 64> signature{};
        std::size_t length = signature.size();
        EVP_MD_CTX* const context = EVP_MD_CTX_new();
        CHECK(EVP_DigestSignInit(context, nullptr, nullptr, nullptr, _key) == 1);
        CHECK(EVP_DigestSign(context, signature.data(), &length, reinterpret_cast<const unsigned char*>(text.data()),
                             text.size())
              == 1);
        EVP_MD_CTX_free(context);
        return content + std::string(signature.begin(), signature.end()) + "BRVSIG1\n";
    }

    PackageInstallation installation() const
    {
        return {configuration,
                {.tools = PackageTools(pkgutil.path(), installer.path()),
                 .version = "1.0",
                 .staging = folder.file("state/update"),
                 .installing = folder.file("installing")}};
    }
    platform::Error failureOfInstall() const
    {
        const auto installed = installation().install({});
        REQUIRE_FALSE(installed);
        CHECK(installed.error().domain == ZRKUpdaterErrorDomain);
        CHECK_FALSE(isThere("state/update"));
        CHECK_FALSE(isThere("installing"));
        return installed.error();
    }
    bool isThere(const std::string& name) const
    {
        struct stat status{};
        return ::lstat(folder.file(name).c_str(), &status) == 0;
    }

    const TemporaryDirectory folder;
    const EnvironmentVariable root{"BREVANE_ROOT", folder.path()}; // of the logs
    const StandInProgram pkgutil{"pkgutil"};
    const StandInProgram installer{"installer"};
    helper::UpdateConfiguration configuration{.feed = "file://" + folder.file("update.plist"),
                                              .key = helper::UpdateConfiguration::PublicKey(),
                                              .authorities = {},
                                              .patience = std::chrono::seconds(10),
                                              .interval = std::chrono::seconds(10),
                                              .keeping = std::chrono::seconds(10),
                                              .trial = std::chrono::seconds(10)};

private:
    EVP_PKEY* const _key = EVP_PKEY_Q_keygen(nullptr, nullptr, "ED25519");
};

} // namespace

TEST_CASE("a newer package of the feed is told, and an older one is not")
{
    const PackagedProduct product;
    const auto found = product.installation().check({});
    REQUIRE(found);
    CHECK(*found->dictionary()->stringForKey(PayloadKey::Version) == "2.0");
    product.offer("1.0");
    CHECK(product.installation().check({}).error().code == ZRKUpdaterErrorUpToDate);
}

TEST_CASE("a signed package is installed by the system's installer, without our signature behind it")
{
    const PackagedProduct product;
    product.folder.write("Brevane.pkg", product.signedPackage("the package"));
    CHECK(product.installation().install({}));
    const auto package = product.folder.file("state/update/Brevane.pkg");
    CHECK(product.installer.calls() == "-pkg " + package + " -target /\nmarked\n");
    CHECK(contentOfFile(product.installer.folder.file("installed")) == "the package");
    CHECK(product.pkgutil.calls()
          == "--check-signature " + package + "\n--expand " + package + " "
              + product.folder.file("state/update/expanded") + "\n");
    CHECK_FALSE(product.isThere("state/update"));
    CHECK_FALSE(product.isThere("installing"));
}

TEST_CASE("a package that is not ours, not signed, or not newer is not installed")
{
    const PackagedProduct product;
    auto signedBytes = product.signedPackage("the package");
    const auto underlying = [&product] {
        const auto failure = product.failureOfInstall();
        CHECK(failure.code == ZRKUpdaterErrorValidate);
        REQUIRE(failure.underlying);
        return *failure.underlying;
    };
    SUBCASE("since our signature is missing")
    {
        product.folder.write("Brevane.pkg", std::string(200, 'x'));
        CHECK(underlying().code == ZRKInstallerPackageErrorNotSigned);
        CHECK(product.pkgutil.calls().empty());
    }
    SUBCASE("since our signature is of another content")
    {
        signedBytes[0] = 'T';
        product.folder.write("Brevane.pkg", signedBytes);
        CHECK(underlying().code == ZRKInstallerPackageErrorInvalidSignature);
        CHECK(product.pkgutil.calls().empty());
    }
    SUBCASE("since the system finds no signature")
    {
        product.folder.write("Brevane.pkg", signedBytes);
        product.pkgutil.say("--check-signature", "   Status: no signature\n");
        CHECK(underlying().code == ZRKInstallerPackageErrorNotSigned);
    }
    SUBCASE("since the system does not trust its signature")
    {
        product.folder.write("Brevane.pkg", signedBytes);
        product.pkgutil.say("--check-signature", "   Status: signed by untrusted certificate\n");
        CHECK(underlying().code == ZRKInstallerPackageErrorInvalidSignature);
    }
    SUBCASE("since it holds an older version than the feed says")
    {
        product.folder.write("Brevane.pkg", signedBytes);
        product.tellVersion("1.0");
        CHECK(platform::localizedDescription(underlying())
                  .starts_with("The package holds version 1.0, which is not newer."));
    }
    SUBCASE("since it does not say its version")
    {
        product.folder.write("Brevane.pkg", signedBytes);
        product.tellVersion("");
        CHECK(platform::localizedDescription(underlying())
                  .starts_with("the package does not say which version of com.zerkolin.brevane it holds."));
    }
    CHECK(product.installer.calls().empty());
}

TEST_CASE("an installer that fails is told in its own words")
{
    const PackagedProduct product;
    product.folder.write("Brevane.pkg", product.signedPackage("the package"));
    product.installer.complain("-pkg", "installer: The install failed (no space).\n", 1);
    const auto failure = product.failureOfInstall();
    CHECK(failure.code == ZRKUpdaterErrorInstall);
    REQUIRE(failure.underlying);
    CHECK(platform::localizedDescription(*failure.underlying).starts_with("The install failed (no space)."));
}

TEST_CASE("a package that is not there is told as a failed download")
{
    const PackagedProduct product;
    CHECK(product.failureOfInstall().code == ZRKUpdaterErrorDownload);
}

TEST_CASE("what an interrupted install has left is tidied at the start")
{
    const PackagedProduct product;
    product.folder.write("state/update/Brevane.pkg", "part");
    product.folder.write("installing", "");
    product.installation().recover();
    CHECK_FALSE(product.isThere("state/update"));
    CHECK_FALSE(product.isThere("installing"));
    CHECK(product.isThere("state"));
    product.installation().recover();
}

TEST_CASE("removing the product removes what its receipt names, and then the receipt")
{
    const PackagedProduct product;
    product.folder.write("Library/Brevane/com.zerkolin.brevane.scheduler", "");
    product.folder.write("Library/Brevane/mine", "");
    product.folder.write("Library/Preferences/com.zerkolin.brevane.scheduler.plist", "");
    product.pkgutil.say("--pkg-info", "version: 1.0\nvolume: " + product.folder.path() + "\nlocation: /\n");
    product.pkgutil.say("--files", "Library\nLibrary/Brevane\nLibrary/Brevane/com.zerkolin.brevane.scheduler\n");
    const helper::PasswordRule rule(nullptr);
    CHECK(product.installation().remove(rule, {}));
    CHECK_FALSE(product.isThere("Library/Brevane/com.zerkolin.brevane.scheduler"));
    CHECK(product.isThere("Library/Brevane/mine"));
    CHECK(product.isThere("Library/Preferences/com.zerkolin.brevane.scheduler.plist"));
    CHECK(product.pkgutil.calls().ends_with("--forget com.zerkolin.brevane\n"));
}

TEST_CASE("a receipt that cannot be read, or is not there, has nothing removed")
{
    const PackagedProduct product;
    product.folder.write("Library/Brevane/a", "");
    const helper::PasswordRule rule(nullptr);
    product.pkgutil.say("--pkg-info", "version: 1.0\nvolume: " + product.folder.path() + "\nlocation: /\n");
    product.pkgutil.say("--files", "Library/Brevane/a\n../x\n");
    CHECK(platform::localizedDescription(product.installation().remove(rule, {}).error())
              .starts_with("the receipt of com.zerkolin.brevane is not understood."));
    product.pkgutil.complain("--pkg-info", "No receipt for 'com.zerkolin.brevane' found at '/'.\n", 1);
    CHECK(platform::localizedDescription(product.installation().remove(rule, {}).error())
              .starts_with("Brevane was not installed by its package."));
    CHECK(product.isThere("Library/Brevane/a"));
    CHECK(product.pkgutil.calls().find("--forget") == std::string::npos);
}
