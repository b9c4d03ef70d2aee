#include "helper/update/Download.h"
#include "platform/FileDescriptor.h"
#include "tests/support/FileContent.h"
#include "tests/support/TemporaryDirectory.h"

#include <cerrno>
#include <cstdint>
#include <doctest/doctest.h>
#include <fcntl.h>
#include <string>

using helper::Download;
using helper::UpdateConfiguration;
using platform::FileDescriptor;

TEST_CASE("what is saved comes after what the file holds, whole")
{
    const TemporaryDirectory folder;
    const std::string content(1'000'000, 'x');
    const auto url = "file://" + folder.write("served", content);
    const auto path = folder.write("saved", "before ");
    const FileDescriptor file(::open(path.c_str(), O_WRONLY | O_APPEND | O_CLOEXEC));
    const auto configuration = UpdateConfiguration::builtIn();
    CHECK(Download(configuration).save(url, content.size(), file.get()).has_value());
    CHECK(contentOfFile(path) == "before " + content);
}

TEST_CASE("what cannot be saved ends a download with the system's error, and what is too large with one of its own")
{
    const TemporaryDirectory folder;
    const auto url = "file://" + folder.write("served", "content");
    const auto configuration = UpdateConfiguration::builtIn();
    const FileDescriptor full(::open("/dev/full", O_WRONLY | O_CLOEXEC));
    const auto saved = Download(configuration).save(url, 7, full.get());
    REQUIRE_FALSE(saved.has_value());
    CHECK(saved.error().fault == Download::Fault::Storage);
    CHECK(saved.error().reason.domain == platform::POSIXErrorDomain);
    CHECK(saved.error().reason.code == ENOSPC);

    const auto tooLarge = Download(configuration).fetch(url, 6);
    REQUIRE_FALSE(tooLarge.has_value());
    CHECK(tooLarge.error().fault == Download::Fault::TooLarge);
    CHECK(tooLarge.error().reason.domain == "NSURLErrorDomain");
    CHECK(tooLarge.error().reason.code == -1103);
    CHECK(platform::localizedDescription(tooLarge.error().reason) == "The answer is too large.");
    const auto fetched = Download(configuration).fetch(url, 7);
    REQUIRE(fetched.has_value());
    CHECK(std::string(fetched->begin(), fetched->end()) == "content");
}

TEST_CASE("a file that is not there, and an address of no kind that is served, have errors of their own")
{
    const TemporaryDirectory folder;
    const auto configuration = UpdateConfiguration::builtIn();
    struct Row {
        std::string url;
        std::int64_t code;
    };
    for (const auto& [url, code] : {Row{"file://" + folder.file("none"), -1100}, Row{"ftp://127.0.0.1/file", -1002},
                                    Row{"http://", -1000}, Row{"http://127.0.0.1:1/", -1004}}) {
        CAPTURE(url);
        const auto fetched = Download(configuration).fetch(url, 10);
        REQUIRE_FALSE(fetched.has_value());
        CHECK(fetched.error().fault == Download::Fault::Network);
        CHECK(fetched.error().status == 0);
        CHECK(fetched.error().reason.code == code);
    }
}

TEST_CASE("only whole addresses of https and http are addresses of the web")
{
    for (const char* text : {"https://example.invalid/a", "http://example.invalid", "HTTPS://example.invalid"})
        CHECK_MESSAGE(Download::isWebAddress(text), text);
    for (const char* text : {"", "example.invalid", "/a", "file:///a", "ftp://example.invalid/", "https:", "http://"})
        CHECK_FALSE_MESSAGE(Download::isWebAddress(text), text);
}
