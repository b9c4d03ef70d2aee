#pragma once

namespace platform {

// Whether what was written to the file, or to the entries of the folder, is on the disk itself now and survives a power
// cut. The failure is in errno.
bool makePermanent(int file);

// A new file for this process alone at a path that ends with "XXXXXX", which become other letters; no program that is
// started inherits it. -1 on failure, which is in errno.
int makeTemporary(char* path);

} // namespace platform
