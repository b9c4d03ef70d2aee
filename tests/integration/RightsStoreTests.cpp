#include "platform/Authorization.h"
#include "tests/support/TemporaryDirectory.h"

#include <cstdlib>
#include <doctest/doctest.h>
#include <sys/stat.h>

using platform::Authorization;
using platform::Dictionary;

namespace {

constexpr const char* Right = "com.zerkolin.brevane.settings.modify-1";
constexpr const char* Store = "Library/Preferences/com.zerkolin.brevane.rights.plist";

// A root of the product's files of its own.
struct Root {
    Root() { setenv("BREVANE_ROOT", directory.path().c_str(), 1); }
    ~Root() { unsetenv("BREVANE_ROOT"); }

    TemporaryDirectory directory;
};

Dictionary rule(const char* name)
{
    return {{"rule", platform::Array{name}}, {"timeout", 300}};
}

Authorization::Status setRight(const char* name, const Dictionary& definition)
{
    return (*Authorization::create())->setRight(name, definition);
}

} // namespace

TEST_CASE("a right's definition reads back as it was written, and others are left alone")
{
    const Root root;
    CHECK(setRight(Right, rule("is-admin")) == Authorization::Success);
    CHECK(setRight("other", rule("authenticate-admin")) == Authorization::Success);
    CHECK(Authorization::right(Right) == rule("is-admin"));
    CHECK(setRight(Right, rule("authenticate-admin")) == Authorization::Success);
    CHECK(Authorization::right(Right) == rule("authenticate-admin"));
    CHECK(Authorization::right("other") == rule("authenticate-admin"));
}

TEST_CASE("the definitions are readable by everyone and writable by their owner alone")
{
    const Root root;
    const mode_t mask = umask(0077);
    REQUIRE(setRight(Right, rule("is-admin")) == Authorization::Success);
    umask(mask);
    struct stat status = {};
    REQUIRE(stat(root.directory.file(Store).c_str(), &status) == 0);
    CHECK((status.st_mode & 07777) == 0644);
}

TEST_CASE("a right without a definition, or with a damaged store, is denied")
{
    const Root root;
    CHECK(Authorization::right(Right) == std::unexpected(Authorization::Denied));
    for (const char* damage : {"", "bplist00", "bplist00\xff\xff\xff\xff", "no property list {", "( an, array )",
                               "{ \"com.zerkolin.brevane.settings.modify-1\" = text; }"}) {
        root.directory.write(Store, damage);
        CHECK(Authorization::right(Right) == std::unexpected(Authorization::Denied));
    }
    CHECK(setRight(Right, rule("is-admin")) == Authorization::Success);
    CHECK(Authorization::right(Right) == rule("is-admin"));
}

TEST_CASE("a definition that can't be written is denied and the old one stays")
{
    const Root root;
    REQUIRE(setRight(Right, rule("is-admin")) == Authorization::Success);
    const std::string unwritable("not \xff text");
    CHECK(setRight(Right, {{"rule", unwritable}}) == Authorization::Denied);
    CHECK(Authorization::right(Right) == rule("is-admin"));

    // A file stands where the folder would have to be.
    const TemporaryDirectory blocked;
    blocked.write("Library", "");
    setenv("BREVANE_ROOT", blocked.path().c_str(), 1);
    CHECK(setRight(Right, rule("is-admin")) == Authorization::Denied);
}
