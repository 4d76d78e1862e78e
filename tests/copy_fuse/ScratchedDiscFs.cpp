// A FUSE file system for the end-to-end test of real read errors: one read-only file, disc.dat, of pattern
// bytes, whose reads fail with EIO wherever they touch a "scratched" range.
//   scratched_disc_fs MOUNTPOINT SIZE OFFSET:LENGTH[,OFFSET:LENGTH...]
#include "FuseFs.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <sstream>
#include <string>
#include <vector>

namespace {

struct Range
{
    long long offset;
    long long length;
};

long long g_size = 0;
std::vector<Range> g_scratches;
const char* const kName = "/disc.dat";

int getAttributes(const char* path, struct stat* st, struct fuse_file_info*)
{
    if (std::strcmp(path, "/") == 0)
        return fusefs::folderAttributes(st, 0755);
    return std::strcmp(path, kName) == 0 ? fusefs::fileAttributes(st, 0444, g_size) : -ENOENT;
}

int readFolder(const char* path, void* buffer, fuse_fill_dir_t fill, off_t, struct fuse_file_info*,
    enum fuse_readdir_flags)
{
    if (std::strcmp(path, "/") != 0)
        return -ENOENT;
    fusefs::fillFolder(buffer, fill, {kName});
    return 0;
}

int openFile(const char* path, struct fuse_file_info* info)
{
    if (std::strcmp(path, kName) != 0)
        return -ENOENT;
    if ((info->flags & O_ACCMODE) != O_RDONLY)
        return -EACCES;
    info->direct_io = 1; // every read reaches us: no page cache hides a scratch
    return 0;
}

int readFile(const char* path, char* buffer, size_t size, off_t offset, struct fuse_file_info*)
{
    if (std::strcmp(path, kName) != 0)
        return -ENOENT;
    for (const Range& r : g_scratches) {
        if (offset < r.offset + r.length && r.offset < offset + static_cast<long long>(size))
            return -EIO;
    }
    return fusefs::readPattern(buffer, size, offset, g_size);
}

} // namespace

int main(int argc, char** argv)
{
    if (argc != 4)
        return 2;
    g_size = std::atoll(argv[2]);
    std::istringstream ranges(argv[3]);
    for (std::string item; std::getline(ranges, item, ',');) {
        const size_t colon = item.find(':');
        if (colon != std::string::npos)
            g_scratches.push_back(Range{std::atoll(item.c_str()), std::atoll(item.c_str() + colon + 1)});
    }

    static fuse_operations operations = {};
    operations.getattr = getAttributes;
    operations.readdir = readFolder;
    operations.open = openFile;
    operations.read = readFile;
    return fusefs::run(argv[1], operations, fusefs::Threads::Single);
}
