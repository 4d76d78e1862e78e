// A tiny FUSE file system for the tests of the file commands on real system calls. Its root holds four
// files of kSize bytes each, and refuses every write:
//   good.dat    reads fine;
//   bad.dat     reads fail with EIO from kBadFrom on (a scratch in the middle of the file);
//   hang.dat    reads from kHangFrom on wait until "release" is looked up; each hanging read prints
//               "hanging" on stdout first, so the test knows when to act;
//   locked.dat  reads fine, cannot be removed (EACCES).
// Creating, writing, renaming and making folders fail with EROFS; the other three files can be removed
// (so a move that wrongly removes its source shows). Multi-threaded, so a hanging read holds nothing else.
//   faulty_folder_fs MOUNTPOINT
#include "FuseFs.h"

#include <cerrno>
#include <condition_variable>
#include <cstdio>
#include <cstring>
#include <mutex>
#include <set>
#include <string>
#include <vector>

namespace {

constexpr long long kSize = 3 * 1024 * 1024;
constexpr long long kBadFrom = 2 * 1024 * 1024;
constexpr long long kHangFrom = 1024 * 1024;
const char* const kNames[] = {"/good.dat", "/bad.dat", "/hang.dat", "/locked.dat"};

std::mutex g_lock;
std::condition_variable g_released;
bool g_release = false;
std::set<std::string> g_removed;

bool isFile(const char* path)
{
    std::lock_guard<std::mutex> hold(g_lock);
    if (g_removed.count(path))
        return false;
    for (const char* name : kNames) {
        if (std::strcmp(path, name) == 0)
            return true;
    }
    return false;
}

int getAttributes(const char* path, struct stat* st, struct fuse_file_info*)
{
    if (std::strcmp(path, "/") == 0)
        return fusefs::folderAttributes(st, 0755);
    if (std::strcmp(path, "/release") == 0) {
        std::lock_guard<std::mutex> hold(g_lock);
        g_release = true;
        g_released.notify_all();
        return -ENOENT;
    }
    return isFile(path) ? fusefs::fileAttributes(st, 0644, kSize) : -ENOENT;
}

int readFolder(const char* path, void* buffer, fuse_fill_dir_t fill, off_t, struct fuse_file_info*,
    enum fuse_readdir_flags)
{
    if (std::strcmp(path, "/") != 0)
        return -ENOENT;
    std::vector<const char*> present;
    for (const char* name : kNames) {
        if (isFile(name))
            present.push_back(name);
    }
    fusefs::fillFolder(buffer, fill, present);
    return 0;
}

int openFile(const char* path, struct fuse_file_info* info)
{
    if (!isFile(path))
        return -ENOENT;
    if ((info->flags & O_ACCMODE) != O_RDONLY)
        return -EROFS;
    info->direct_io = 1; // every read reaches us
    return 0;
}

int readFile(const char* path, char* buffer, size_t size, off_t offset, struct fuse_file_info*)
{
    const long long to = offset + static_cast<long long>(size);
    if (std::strcmp(path, "/bad.dat") == 0 && to > kBadFrom)
        return -EIO;
    if (std::strcmp(path, "/hang.dat") == 0 && to > kHangFrom) {
        std::printf("hanging\n");
        std::fflush(stdout);
        std::unique_lock<std::mutex> hold(g_lock);
        g_released.wait(hold, [] { return g_release; });
        return -EIO;
    }
    return fusefs::readPattern(buffer, size, offset, kSize);
}

int removeFile(const char* path)
{
    if (!isFile(path))
        return -ENOENT;
    if (std::strcmp(path, "/locked.dat") == 0)
        return -EACCES;
    std::lock_guard<std::mutex> hold(g_lock);
    g_removed.insert(path);
    return 0;
}

} // namespace

int main(int argc, char** argv)
{
    if (argc != 2)
        return 2;
    static fuse_operations operations = {};
    operations.getattr = getAttributes;
    operations.readdir = readFolder;
    operations.open = openFile;
    operations.read = readFile;
    operations.unlink = removeFile;
    operations.create = [](const char*, mode_t, fuse_file_info*) { return -EROFS; };
    operations.mknod = [](const char*, mode_t, dev_t) { return -EROFS; };
    operations.mkdir = [](const char*, mode_t) { return -EROFS; };
    operations.rmdir = [](const char*) { return -EROFS; };
    operations.symlink = [](const char*, const char*) { return -EROFS; };
    operations.link = [](const char*, const char*) { return -EROFS; };
    operations.rename = [](const char*, const char*, unsigned int) { return -EROFS; };

    return fusefs::run(argv[1], operations, fusefs::Threads::Multi);
}
