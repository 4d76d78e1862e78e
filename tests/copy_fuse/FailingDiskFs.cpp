// A FUSE file system for the end-to-end test of a failing destination: every file lives in a backing
// folder (so what did arrive survives an unmount), and one kind of operation fails with a chosen errno:
//   failing_disk_fs MOUNTPOINT BACKING MODE ERRNO [LIMIT]
//     MODE write   writes that reach past byte LIMIT fail, and nothing of them is written
//     MODE fsync   fsync and fdatasync fail (a write-back failure)
//     MODE flush   close() fails (a share that reports a lost write only at the end)
//     MODE none    nothing fails
#include "FuseFs.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <string>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <unistd.h>

namespace {

std::string g_backing;
std::string g_mode;
int g_errno = EIO;
long long g_limit = 0;

std::string real(const char* path)
{
    return g_backing + path;
}

int result(int r)
{
    return r < 0 ? -errno : r;
}

int getAttributes(const char* path, struct stat* st, struct fuse_file_info*)
{
    return result(::lstat(real(path).c_str(), st));
}

int openFile(const char* path, struct fuse_file_info* info)
{
    const int fd = ::open(real(path).c_str(), info->flags & ~O_TRUNC & ~O_CREAT);
    if (fd < 0)
        return -errno;
    info->fh = static_cast<uint64_t>(fd);
    info->direct_io = 1; // every write reaches us: no page cache hides a failure
    return 0;
}

int createFile(const char* path, mode_t mode, struct fuse_file_info* info)
{
    const int fd = ::open(real(path).c_str(), info->flags | O_CREAT, mode);
    if (fd < 0)
        return -errno;
    info->fh = static_cast<uint64_t>(fd);
    info->direct_io = 1;
    return 0;
}

int readFile(const char*, char* buffer, size_t size, off_t offset, struct fuse_file_info* info)
{
    const ssize_t n = ::pread(static_cast<int>(info->fh), buffer, size, offset);
    return n < 0 ? -errno : static_cast<int>(n);
}

int writeFile(const char*, const char* buffer, size_t size, off_t offset, struct fuse_file_info* info)
{
    if (g_mode == "write" && offset + static_cast<long long>(size) > g_limit)
        return -g_errno;
    const ssize_t n = ::pwrite(static_cast<int>(info->fh), buffer, size, offset);
    return n < 0 ? -errno : static_cast<int>(n);
}

int syncFile(const char*, int, struct fuse_file_info* info)
{
    if (g_mode == "fsync")
        return -g_errno;
    return result(::fsync(static_cast<int>(info->fh)));
}

int flushFile(const char*, struct fuse_file_info*)
{
    return g_mode == "flush" ? -g_errno : 0;
}

int releaseFile(const char*, struct fuse_file_info* info)
{
    ::close(static_cast<int>(info->fh));
    return 0;
}

int truncateFile(const char* path, off_t size, struct fuse_file_info*)
{
    return result(::truncate(real(path).c_str(), size));
}

int removeFile(const char* path)
{
    return result(::unlink(real(path).c_str()));
}

int fileSystemFacts(const char*, struct statvfs* facts)
{
    return result(::statvfs(g_backing.c_str(), facts));
}

} // namespace

int main(int argc, char** argv)
{
    if (argc < 5)
        return 2;
    g_backing = argv[2];
    g_mode = argv[3];
    g_errno = std::atoi(argv[4]);
    g_limit = argc > 5 ? std::atoll(argv[5]) : 0;

    static fuse_operations operations = {};
    operations.getattr = getAttributes;
    operations.open = openFile;
    operations.create = createFile;
    operations.read = readFile;
    operations.write = writeFile;
    operations.fsync = syncFile;
    operations.flush = flushFile;
    operations.release = releaseFile;
    operations.truncate = truncateFile;
    operations.unlink = removeFile;
    operations.statfs = fileSystemFacts;

    return fusefs::run(argv[1], operations, fusefs::Threads::Single);
}
