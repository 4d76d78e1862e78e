// A tiny FUSE file system for the end-to-end test of real read errors: one read-only file, disc.dat, whose
// bytes follow the test pattern and whose reads fail with EIO wherever they touch a "scratched" range.
//   scratched_disc_fs MOUNTPOINT SIZE OFFSET:LENGTH[,OFFSET:LENGTH...]
// Runs in the foreground, single-threaded, until unmounted or sent SIGTERM.
#define FUSE_USE_VERSION 31
#include <fuse.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <string>
#include <sys/stat.h>
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

char patternByte(long long offset)
{
    return static_cast<char>((offset * 7 + offset / 251) & 0xFF);
}

int getAttributes(const char* path, struct stat* st, struct fuse_file_info*)
{
    std::memset(st, 0, sizeof(*st));
    if (std::strcmp(path, "/") == 0) {
        st->st_mode = S_IFDIR | 0755;
        st->st_nlink = 2;
        return 0;
    }
    if (std::strcmp(path, kName) == 0) {
        st->st_mode = S_IFREG | 0444;
        st->st_nlink = 1;
        st->st_size = g_size;
        return 0;
    }
    return -ENOENT;
}

int readFolder(const char* path, void* buffer, fuse_fill_dir_t fill, off_t, struct fuse_file_info*,
    enum fuse_readdir_flags)
{
    if (std::strcmp(path, "/") != 0)
        return -ENOENT;
    fill(buffer, ".", nullptr, 0, static_cast<fuse_fill_dir_flags>(0));
    fill(buffer, "..", nullptr, 0, static_cast<fuse_fill_dir_flags>(0));
    fill(buffer, kName + 1, nullptr, 0, static_cast<fuse_fill_dir_flags>(0));
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
    const long long from = offset;
    for (const Range& r : g_scratches) {
        if (from < r.offset + r.length && r.offset < from + static_cast<long long>(size))
            return -EIO;
    }
    if (from >= g_size)
        return 0;
    const long long count = std::min<long long>(static_cast<long long>(size), g_size - from);
    for (long long i = 0; i < count; ++i)
        buffer[i] = patternByte(from + i);
    return static_cast<int>(count);
}

} // namespace

int main(int argc, char** argv)
{
    if (argc != 4)
        return 2;
    g_size = std::atoll(argv[2]);
    std::string ranges = argv[3];
    size_t at = 0;
    while (at < ranges.size()) {
        const size_t comma = ranges.find(',', at);
        const std::string item
            = ranges.substr(at, comma == std::string::npos ? std::string::npos : comma - at);
        const size_t colon = item.find(':');
        if (colon != std::string::npos)
            g_scratches.push_back(Range{std::atoll(item.c_str()), std::atoll(item.c_str() + colon + 1)});
        if (comma == std::string::npos)
            break;
        at = comma + 1;
    }

    static struct fuse_operations operations = {};
    operations.getattr = getAttributes;
    operations.readdir = readFolder;
    operations.open = openFile;
    operations.read = readFile;

    char program[] = "scratched_disc_fs";
    char foreground[] = "-f";
    char single[] = "-s";
    char* fuseArgs[] = {program, foreground, single, argv[1], nullptr};
    return fuse_main(4, fuseArgs, &operations, nullptr);
}
