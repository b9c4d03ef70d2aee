#include "platform/FileSync.h"

#include <fcntl.h>
#include <stdlib.h>
#include <unistd.h>

namespace platform {

bool makePermanent(int file)
{
    return ::fsync(file) == 0;
}

int makeTemporary(char* path)
{
    return ::mkostemp(path, O_CLOEXEC);
}

} // namespace platform
