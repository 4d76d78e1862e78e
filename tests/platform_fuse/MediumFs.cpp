// A tiny FUSE file system standing in for a mounted medium: one read-only file, disc.dat, in the root.
//   medium_fs MOUNTPOINT readable|unreadable|stuck [-o FUSE-OPTIONS]
// "unreadable" fails every listing of the root with EIO, as a scratched disc's directory does, while the
// root itself and the file can still be looked up. "stuck" never answers a look-up of the root, as a
// daemon that hangs: whoever examines the mount point waits until the daemon is killed. Runs in the
// foreground, single-threaded, until unmounted or killed.
#define FUSE_USE_VERSION 31
#include <fuse.h>

#include <cerrno>
#include <cstring>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

namespace {

bool g_unreadable = false;
bool g_stuck = false;
const char* const kName = "/disc.dat";
const char kContents[] = "a medium\n";

int getAttributes(const char* path, struct stat* st, struct fuse_file_info*)
{
    std::memset(st, 0, sizeof(*st));
    while (g_stuck)
        ::pause();
    if (std::strcmp(path, "/") == 0) {
        st->st_mode = S_IFDIR | 0555;
        st->st_nlink = 2;
        return 0;
    }
    if (std::strcmp(path, kName) == 0) {
        st->st_mode = S_IFREG | 0444;
        st->st_nlink = 1;
        st->st_size = sizeof kContents - 1;
        return 0;
    }
    return -ENOENT;
}

int readFolder(const char* path, void* buffer, fuse_fill_dir_t fill, off_t, struct fuse_file_info*,
    enum fuse_readdir_flags)
{
    if (std::strcmp(path, "/") != 0)
        return -ENOENT;
    if (g_unreadable)
        return -EIO;
    fill(buffer, ".", nullptr, 0, static_cast<fuse_fill_dir_flags>(0));
    fill(buffer, "..", nullptr, 0, static_cast<fuse_fill_dir_flags>(0));
    fill(buffer, kName + 1, nullptr, 0, static_cast<fuse_fill_dir_flags>(0));
    return 0;
}

int readFile(const char* path, char* buffer, size_t size, off_t offset, struct fuse_file_info*)
{
    if (std::strcmp(path, kName) != 0)
        return -ENOENT;
    const off_t length = sizeof kContents - 1;
    if (offset >= length)
        return 0;
    const size_t count = std::min<size_t>(size, size_t(length - offset));
    std::memcpy(buffer, kContents + offset, count);
    return static_cast<int>(count);
}

} // namespace

int main(int argc, char** argv)
{
    if (argc != 3 && argc != 5)
        return 2;
    g_unreadable = std::strcmp(argv[2], "unreadable") == 0;
    g_stuck = std::strcmp(argv[2], "stuck") == 0;

    static struct fuse_operations operations = {};
    operations.getattr = getAttributes;
    operations.readdir = readFolder;
    operations.read = readFile;

    char program[] = "medium_fs";
    char foreground[] = "-f";
    char single[] = "-s";
    std::vector<char*> fuseArgs = {program, foreground, single, argv[1]};
    if (argc == 5) {
        fuseArgs.push_back(argv[3]); // -o
        fuseArgs.push_back(argv[4]);
    }
    fuseArgs.push_back(nullptr);
    return fuse_main(static_cast<int>(fuseArgs.size()) - 1, fuseArgs.data(), &operations, nullptr);
}
