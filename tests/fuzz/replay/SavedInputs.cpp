#include "tests/fuzz/replay/SavedInputs.h"

#include <algorithm>
#include <archive.h>
#include <archive_entry.h>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>

namespace {

using Function = std::function<void(const std::string& name, const std::vector<std::uint8_t>& bytes)>;

struct ReadFree {
    void operator()(archive* reader) const { archive_read_free(reader); }
};

[[noreturn]] void fail(const std::string& path, const char* why)
{
    std::fprintf(stderr, "%s: %s\n", path.c_str(), why);
    std::exit(1);
}

void forEachInArchive(const std::string& path, const Function& function)
{
    const std::unique_ptr<archive, ReadFree> reader(archive_read_new());
    archive_read_support_filter_xz(reader.get());
    archive_read_support_format_tar(reader.get());
    if (archive_read_open_filename(reader.get(), path.c_str(), 1 << 16) != ARCHIVE_OK)
        fail(path, archive_error_string(reader.get()));
    archive_entry* entry = nullptr;
    int result = ARCHIVE_OK;
    while ((result = archive_read_next_header(reader.get(), &entry)) == ARCHIVE_OK) {
        std::vector<std::uint8_t> bytes(static_cast<std::size_t>(archive_entry_size(entry)));
        if (archive_read_data(reader.get(), bytes.data(), bytes.size()) != static_cast<la_ssize_t>(bytes.size()))
            fail(path, "an input is cut short");
        function(archive_entry_pathname(entry), bytes);
    }
    if (result != ARCHIVE_EOF)
        fail(path, archive_error_string(reader.get()));
}

} // namespace

void forEachSavedInput(const std::string& folder, const Function& function)
{
    std::vector<std::filesystem::path> paths;
    for (const auto& entry : std::filesystem::directory_iterator(folder))
        paths.push_back(entry.path());
    std::sort(paths.begin(), paths.end());
    for (const auto& path : paths) {
        if (path.extension() == ".xz") {
            forEachInArchive(path, function);
            continue;
        }
        std::ifstream file(path, std::ios::binary);
        if (!file)
            fail(path, "cannot be read");
        function(path.filename(), {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()});
    }
}
