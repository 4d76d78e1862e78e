// A tiny FUSE file system standing in for a mounted medium: one read-only file, disc.dat, in the root.
//   medium_fs MOUNTPOINT readable|unreadable|stuck [-o FUSE-OPTIONS]
// "unreadable" fails every listing of the root with EIO, as a scratched disc's directory does, while the
// root itself and the file can still be looked up. "stuck" never answers a look-up of the root, as a
// daemon that hangs: whoever examines the mount point waits until the daemon is killed. Runs in the
// foreground until unmounted or killed.
#include "FuseFs.h"

#include <cerrno>
#include <cstring>
#include <unistd.h>

namespace {

bool g_unreadable = false;
bool g_stuck = false;
const char* const kName = "/disc.dat";
constexpr long long kSize = 2048;

int getAttributes(const char* path, struct stat* st, struct fuse_file_info*)
{
    while (g_stuck)
        ::pause();
    if (std::strcmp(path, "/") == 0)
        return fusefs::folderAttributes(st, 0555);
    return std::strcmp(path, kName) == 0 ? fusefs::fileAttributes(st, 0444, kSize) : -ENOENT;
}

int readFolder(const char* path, void* buffer, fuse_fill_dir_t fill, off_t, struct fuse_file_info*,
    enum fuse_readdir_flags)
{
    if (std::strcmp(path, "/") != 0)
        return -ENOENT;
    if (g_unreadable)
        return -EIO;
    fusefs::fillFolder(buffer, fill, {kName});
    return 0;
}

int readFile(const char* path, char* buffer, size_t size, off_t offset, struct fuse_file_info*)
{
    return std::strcmp(path, kName) == 0 ? fusefs::readPattern(buffer, size, offset, kSize) : -ENOENT;
}

} // namespace

int main(int argc, char** argv)
{
    if (argc != 3 && !(argc == 5 && std::strcmp(argv[3], "-o") == 0))
        return 2;
    g_unreadable = std::strcmp(argv[2], "unreadable") == 0;
    g_stuck = std::strcmp(argv[2], "stuck") == 0;

    static fuse_operations operations = {};
    operations.getattr = getAttributes;
    operations.readdir = readFolder;
    operations.read = readFile;
    return fusefs::run(argv[1], operations, fusefs::Threads::Single, argc == 5 ? argv[4] : nullptr);
}
