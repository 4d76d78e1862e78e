#pragma once
// What the tests' FUSE file systems share: attributes, listings, pattern reads and the run of the loop.
#define FUSE_USE_VERSION 31
#include <fuse.h>

#include <sys/stat.h>
#include <sys/types.h>

#include <vector>

namespace fusefs {

// Fill `st` for a folder or a regular file; both return 0, as getattr does on success.
int folderAttributes(struct stat* st, mode_t permissions);
int fileAttributes(struct stat* st, mode_t permissions, long long size);

// A listing: "." and "..", then `paths` without their leading slash.
void fillFolder(void* buffer, fuse_fill_dir_t fill, const std::vector<const char*>& paths);

// A read of a file of `fileSize` pattern bytes: the count copied, 0 at or past the end.
int readPattern(char* buffer, size_t size, off_t offset, long long fileSize);

enum class Threads
{
    Single, // one request at a time: the simplest, where nothing blocks
    Multi, // a read that hangs holds nothing else up
};

// Mounts `operations` at `mountPoint` and serves it in the foreground until unmounted or killed.
// `options` (may be null) are passed as -o OPTIONS, e.g. "fsname=/dev/sr7".
int run(const char* mountPoint, const fuse_operations& operations, Threads threads,
    const char* options = nullptr);

} // namespace fusefs
