// A FUSE file system for the media windows' tests on a scratched disc: one read-only file, AVSEQ01.DAT,
// with the bytes of a real stream, whose reads fail or hang where they touch a chosen range.
//   scratched_media_fs MOUNTPOINT SOURCE KIND:OFFSET:LENGTH[,KIND:OFFSET:LENGTH...]
//     KIND eio    reads touching the range fail with EIO, as a drive reports an unreadable sector
//     KIND hang   reads touching the range wait, as a drive retrying a sector, until the program gets
//                 SIGUSR1 or 15 s have passed; the first one says "hang" on standard output and the end of
//                 the wait is said as "released" (so a test that was held up by the hang sees it, and a test
//                 that never releases is not held forever)
#include "FuseFs.h"

#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <fstream>
#include <iterator>
#include <semaphore.h>
#include <sstream>
#include <string>
#include <unistd.h>
#include <vector>

namespace {

struct Range
{
    bool hang;
    long long offset;
    long long length;
};

std::vector<char> g_bytes;
std::vector<Range> g_ranges;
sem_t g_release;
std::atomic<bool> g_released{false};
std::atomic<bool> g_told{false};
std::atomic<bool> g_saidReleased{false};
const char* const kName = "/AVSEQ01.DAT";

void release(int)
{
    g_released = true;
    sem_post(&g_release); // async-signal-safe; each woken reader wakes the next
}

void say(const char* text)
{
    [[maybe_unused]] const ssize_t written = write(STDOUT_FILENO, text, std::strlen(text));
}

void waitForRelease()
{
    if (!g_told.exchange(true))
        say("hang\n");
    timespec until = {};
    clock_gettime(CLOCK_REALTIME, &until);
    until.tv_sec += 15;
    while (!g_released) {
        if (sem_timedwait(&g_release, &until) == 0)
            sem_post(&g_release);
        else if (errno == ETIMEDOUT)
            g_released = true;
    }
    if (!g_saidReleased.exchange(true))
        say("released\n");
}

int getAttributes(const char* path, struct stat* st, struct fuse_file_info*)
{
    if (std::strcmp(path, "/") == 0)
        return fusefs::folderAttributes(st, 0755);
    return std::strcmp(path, kName) == 0
        ? fusefs::fileAttributes(st, 0444, static_cast<long long>(g_bytes.size()))
        : -ENOENT;
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
    for (const Range& r : g_ranges) {
        if (offset < r.offset + r.length && r.offset < offset + static_cast<long long>(size)) {
            if (!r.hang)
                return -EIO;
            waitForRelease();
        }
    }
    const long long total = static_cast<long long>(g_bytes.size());
    if (offset >= total)
        return 0;
    const long long count = std::min(static_cast<long long>(size), total - offset);
    std::memcpy(buffer, g_bytes.data() + offset, static_cast<size_t>(count));
    return static_cast<int>(count);
}

} // namespace

int main(int argc, char** argv)
{
    if (argc != 4)
        return 2;
    std::ifstream source(argv[2], std::ios::binary);
    g_bytes.assign(std::istreambuf_iterator<char>(source), std::istreambuf_iterator<char>());
    std::istringstream ranges(argv[3]);
    for (std::string item; std::getline(ranges, item, ',');) {
        const size_t first = item.find(':');
        const size_t second = item.find(':', first + 1);
        if (first == std::string::npos || second == std::string::npos)
            return 2;
        g_ranges.push_back(Range{item.compare(0, first, "hang") == 0, std::atoll(item.c_str() + first + 1),
            std::atoll(item.c_str() + second + 1)});
    }
    sem_init(&g_release, 0, 0);
    struct sigaction action = {};
    action.sa_handler = release;
    sigaction(SIGUSR1, &action, nullptr);

    static fuse_operations operations = {};
    operations.getattr = getAttributes;
    operations.readdir = readFolder;
    operations.open = openFile;
    operations.read = readFile;
    return fusefs::run(argv[1], operations, fusefs::Threads::Multi);
}
