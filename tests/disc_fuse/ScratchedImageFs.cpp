// A FUSE file system for the end-to-end test of a disc image with unreadable sectors: a read-only view of a
// backing folder whose .bin files fail reads with EIO wherever they touch a "scratched" byte range.
//   scratched_image_fs MOUNTPOINT BACKING OFFSET:LENGTH[,OFFSET:LENGTH...]
#include "FuseFs.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <dirent.h>
#include <fcntl.h>
#include <sstream>
#include <string>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

namespace {

struct Range
{
    long long offset;
    long long length;
};

std::string g_backing;
std::vector<Range> g_scratches;

std::string real(const char* path)
{
    return g_backing + path;
}

int result(long r)
{
    return r < 0 ? -errno : static_cast<int>(r);
}

bool scratched(const char* path, off_t offset, size_t size)
{
    const size_t length = std::strlen(path);
    if (length < 4 || std::strcmp(path + length - 4, ".bin") != 0)
        return false;
    for (const Range& r : g_scratches) {
        if (offset < r.offset + r.length && r.offset < offset + static_cast<long long>(size))
            return true;
    }
    return false;
}

} // namespace

int main(int argc, char** argv)
{
    if (argc != 4)
        return 2;
    g_backing = argv[2];
    std::istringstream ranges(argv[3]);
    for (std::string item; std::getline(ranges, item, ',');) {
        const size_t colon = item.find(':');
        if (colon != std::string::npos)
            g_scratches.push_back(Range{std::atoll(item.c_str()), std::atoll(item.c_str() + colon + 1)});
    }

    static fuse_operations operations = {};
    operations.getattr = [](const char* path, struct stat* st, fuse_file_info*) {
        return result(::lstat(real(path).c_str(), st));
    };
    operations.readdir = [](const char* path, void* buffer, fuse_fill_dir_t fill, off_t, fuse_file_info*,
                             fuse_readdir_flags) {
        DIR* folder = ::opendir(real(path).c_str());
        if (!folder)
            return -errno;
        while (const dirent* entry = ::readdir(folder))
            fill(buffer, entry->d_name, nullptr, 0, static_cast<fuse_fill_dir_flags>(0));
        ::closedir(folder);
        return 0;
    };
    operations.open = [](const char* path, fuse_file_info* info) {
        if ((info->flags & O_ACCMODE) != O_RDONLY)
            return -EROFS;
        const int fd = ::open(real(path).c_str(), O_RDONLY);
        if (fd < 0)
            return -errno;
        info->fh = static_cast<uint64_t>(fd);
        info->direct_io = 1; // every read reaches us: no page cache hides a scratch
        return 0;
    };
    operations.read = [](const char* path, char* buffer, size_t size, off_t offset, fuse_file_info* info) {
        if (scratched(path, offset, size))
            return -EIO;
        return result(::pread(static_cast<int>(info->fh), buffer, size, offset));
    };
    operations.release
        = [](const char*, fuse_file_info* info) { return result(::close(static_cast<int>(info->fh))); };
    return fusefs::run(argv[1], operations, fusefs::Threads::Single);
}
