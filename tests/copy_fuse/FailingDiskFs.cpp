// A FUSE file system for the end-to-end tests of real I/O errors: every file lives in a backing folder (so
// what did arrive survives an unmount), and one kind of operation fails with a chosen errno:
//   failing_disk_fs MOUNTPOINT BACKING MODE ERRNO [LIMIT]
//     MODE write   writes that reach past byte LIMIT fail, and nothing of them is written
//     MODE fsync   fsync and fdatasync fail (a write-back failure)
//     MODE flush   close() fails (a share that reports a lost write only at the end)
//     MODE read    reads that touch a byte of LIMIT (a list: OFFSET,OFFSET...) fail, as a scratched disc's
//                  or a disk's bad sectors do
//     MODE none    nothing fails
#include "FuseFs.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <sstream>
#include <string>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <unistd.h>
#include <vector>

namespace {

std::string g_backing;
std::string g_mode;
int g_errno = EIO;
long long g_limit = 0;
std::vector<long long> g_badBytes;

std::string real(const char* path)
{
    return g_backing + path;
}

int result(long r)
{
    return r < 0 ? -errno : static_cast<int>(r);
}

int fd(const fuse_file_info* info)
{
    return static_cast<int>(info->fh);
}

int opened(int descriptor, fuse_file_info* info)
{
    if (descriptor < 0)
        return -errno;
    info->fh = static_cast<uint64_t>(descriptor);
    info->direct_io = 1; // every write reaches us: no page cache hides a failure
    return 0;
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
    std::istringstream bad(argc > 5 ? argv[5] : "");
    for (std::string offset; std::getline(bad, offset, ',');)
        g_badBytes.push_back(std::atoll(offset.c_str()));

    static fuse_operations operations = {};
    operations.getattr = [](const char* path, struct stat* st, fuse_file_info*) {
        return result(::lstat(real(path).c_str(), st));
    };
    operations.open = [](const char* path, fuse_file_info* info) {
        return opened(::open(real(path).c_str(), info->flags & ~O_TRUNC & ~O_CREAT), info);
    };
    operations.create = [](const char* path, mode_t mode, fuse_file_info* info) {
        return opened(::open(real(path).c_str(), info->flags | O_CREAT, mode), info);
    };
    operations.read = [](const char*, char* buffer, size_t size, off_t offset, fuse_file_info* info) {
        for (const long long byte : g_badBytes) {
            if (g_mode == "read" && offset <= byte && byte < offset + static_cast<long long>(size))
                return -g_errno;
        }
        return result(::pread(fd(info), buffer, size, offset));
    };
    operations.write = [](const char*, const char* buffer, size_t size, off_t offset, fuse_file_info* info) {
        if (g_mode == "write" && offset + static_cast<long long>(size) > g_limit)
            return -g_errno;
        return result(::pwrite(fd(info), buffer, size, offset));
    };
    operations.fsync = [](const char*, int, fuse_file_info* info) {
        return g_mode == "fsync" ? -g_errno : result(::fsync(fd(info)));
    };
    operations.flush = [](const char*, fuse_file_info*) { return g_mode == "flush" ? -g_errno : 0; };
    operations.release = [](const char*, fuse_file_info* info) { return result(::close(fd(info))); };
    operations.truncate = [](const char* path, off_t size, fuse_file_info*) {
        return result(::truncate(real(path).c_str(), size));
    };
    operations.unlink = [](const char* path) { return result(::unlink(real(path).c_str())); };
    operations.statfs
        = [](const char*, struct statvfs* facts) { return result(::statvfs(g_backing.c_str(), facts)); };
    return fusefs::run(argv[1], operations, fusefs::Threads::Single);
}
