#pragma once

#include <string>
#include <string_view>

// A new private folder, removed with its contents in the end.
class TemporaryDirectory {
public:
    TemporaryDirectory();
    ~TemporaryDirectory();
    TemporaryDirectory(const TemporaryDirectory&) = delete;
    TemporaryDirectory& operator=(const TemporaryDirectory&) = delete;

    const std::string& path() const { return _path; }
    std::string file(std::string_view name) const { return _path + "/" + std::string(name); }

    // Writes a file, making the folders on its way; returns its whole path.
    std::string write(std::string_view name, std::string_view content) const;

private:
    std::string _path;
};
