#include "tests/diagnostics/log/CountedCalls.h"

#include <atomic>
#include <cerrno>
#include <sys/stat.h>
#include <sys/types.h>

namespace {

std::atomic<int> writeCount = 0;
std::atomic<int> queryCount = 0;
std::atomic<int> queryError = 0;

} // namespace

// The linker sends the program's calls here.
extern "C" {

ssize_t __real_write(int descriptor, const void* bytes, size_t length);
int __real_fstat(int descriptor, struct stat* status);

ssize_t __wrap_write(int descriptor, const void* bytes, size_t length)
{
    ++writeCount;
    return __real_write(descriptor, bytes, length);
}

int __wrap_fstat(int descriptor, struct stat* status)
{
    ++queryCount;
    if (queryError != 0) {
        errno = queryError;
        return -1;
    }
    return __real_fstat(descriptor, status);
}
}

namespace counted {

void reset()
{
    writeCount = 0;
    queryCount = 0;
    queryError = 0;
}

int writes()
{
    return writeCount;
}

int queries()
{
    return queryCount;
}

void failQueries(int error)
{
    queryError = error;
}

} // namespace counted
