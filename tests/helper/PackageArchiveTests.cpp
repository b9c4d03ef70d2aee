#include "helper/linux/update/PackageArchive.h"
#include "platform/FileDescriptor.h"
#include "tests/support/FileContent.h"
#include "tests/support/TemporaryDirectory.h"

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <cstdio>
#include <doctest/doctest.h>
#include <fcntl.h>
#include <string>
#include <unistd.h>

using helper::PackageArchive;

namespace {

constexpr std::size_t blockSize = 512;

// An entry of a tar archive: a folder or, with a content, a file.
std::string tarEntry(const std::string& name, char type, const std::string& content = {})
{
    std::string header(blockSize, '\0');
    const auto put = [&](std::size_t at, const std::string& text) {
        std::ranges::copy(text, header.begin() + static_cast<std::ptrdiff_t>(at));
    };
    const auto octal = [](std::size_t number) {
        char text[12];
        std::snprintf(text, sizeof text, "%011zo", number);
        return std::string(text);
    };
    put(0, name);
    put(100, "0000755");
    put(108, "0000000");
    put(116, "0000000");
    put(124, octal(content.size()));
    put(136, octal(0));
    put(148, "        ");
    header[156] = type;
    put(257, "ustar");
    put(263, "00");
    std::size_t sum = 0;
    for (const char byte : header)
        sum += static_cast<unsigned char>(byte);
    put(148, octal(sum).substr(5) + '\0');
    auto padded = content;
    padded.resize((content.size() + blockSize - 1) / blockSize * blockSize);
    return header + padded;
}

// Why an archive of these entries is not unpacked; empty when it is.
std::string unpackingRefusal(const std::string& entries, const std::string& folder)
{
    const TemporaryDirectory place;
    const auto archive = entries + std::string(2 * blockSize, '\0');
    const platform::FileDescriptor file(
        ::open(place.write("archive", archive + "signature").c_str(), O_RDONLY | O_CLOEXEC));
    const auto unpacked = PackageArchive::unpack(file.get(), archive.size(), folder);
    CHECK((unpacked || unpacked.error().code == EBADMSG));
    return unpacked ? "" : platform::localizedDescription(unpacked.error());
}

} // namespace

TEST_CASE("an archive may have 20000 entries, and not one more")
{
    const TemporaryDirectory folder;
    const auto last = tarEntry("file", '0', "content");
    const auto self = tarEntry("./", '5');
    std::string many;
    for (std::size_t count = 1; count < PackageArchive::maximumEntries; ++count)
        many += self;
    CHECK(unpackingRefusal(self + many + last, folder.path()) == "The package holds too many files.");
    CHECK(::access(folder.file("file").c_str(), F_OK) != 0);
    CHECK(unpackingRefusal(many + last, folder.path()).empty());
    CHECK(contentOfFile(folder.file("file")) == "content");
}

TEST_CASE("an archive is unpacked with folders that come twice or not at all, but files only once")
{
    const TemporaryDirectory folder;
    const auto a = tarEntry("./a/", '5');
    const auto file = tarEntry("b/c/file", '0', std::string(100'000, 'x'));
    CHECK(unpackingRefusal(a + file + a, folder.path()).empty());
    CHECK(::access(folder.file("a").c_str(), F_OK) == 0);
    CHECK(contentOfFile(folder.file("b/c/file")) == std::string(100'000, 'x'));
    CHECK(unpackingRefusal(file, folder.path()) == "'b/c/file' is in the package twice.");
    CHECK(unpackingRefusal(tarEntry("b/c/file/d", '0'), folder.path())
          == "The path 'b/c/file/d' in the package leads through something that is no folder.");
    CHECK(unpackingRefusal(tarEntry("", '0'), folder.path()).contains("leads outside of it."));
}
