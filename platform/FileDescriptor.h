#pragma once

#include <unistd.h>
#include <utility>

namespace platform {

// Owns one file descriptor, or none (-1).
class FileDescriptor {
public:
    FileDescriptor() = default;
    explicit FileDescriptor(int descriptor) : _descriptor(descriptor) { }
    FileDescriptor(FileDescriptor&& other) noexcept : _descriptor(std::exchange(other._descriptor, -1)) { }
    FileDescriptor& operator=(FileDescriptor&& other) noexcept
    {
        reset(std::exchange(other._descriptor, -1));
        return *this;
    }
    ~FileDescriptor() { reset(); }

    int get() const { return _descriptor; }
    explicit operator bool() const { return _descriptor >= 0; }

    void reset(int descriptor = -1)
    {
        if (_descriptor >= 0)
            ::close(_descriptor);
        _descriptor = descriptor;
    }

private:
    int _descriptor = -1;
};

} // namespace platform
