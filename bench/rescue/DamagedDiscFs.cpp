// A scratched disc for the rescue benchmark: one read-only file, disc.vob, of pattern bytes in 2,048-byte
// sectors, of which a seeded set is unreadable. A read that touches a bad sector fails with EIO after a
// set delay, as a drive's retries take their time; requests are served one at a time, as a drive does.
// The file stats counts the reads of disc.vob and the failed ones.
//
//   damaged_disc_fs MOUNTPOINT [--size BYTES] [--seed N] [--delay-ms MS]
//   damaged_disc_fs --describe [--size BYTES] [--seed N]      the damage: bad sectors and runs
//   damaged_disc_fs --check FILE [--size BYTES] [--seed N]    a copy against the disc: "readable recovered
//                                                              wrong" byte counts
//
// The damage, in sectors of the file (S of them):
// - radial scratches: each crosses a band of the disc once a turn, so its bad sectors repeat every 8 sectors
//   near the start of the file to 44 near its end (the sectors in one turn grow with the radius);
// - a bad outer edge: the last S/200 sectors;
// - random spots of 1 to 4 sectors;
// - one long bad run of S/128 sectors.
#include "FuseFs.h"
#include "Pattern.h"

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <random>
#include <string>
#include <thread>
#include <vector>

namespace {

constexpr long long kSector = 2048;
const char* const kName = "/disc.vob";
const char* const kStats = "/stats";

long long g_size = 64LL << 20;
unsigned g_seed = 1;
int g_delayMs = 50;
std::vector<bool> g_bad; // one entry a sector
std::atomic<long long> g_reads{0};
std::atomic<long long> g_failedReads{0};

void makeDamage()
{
    const long long sectors = (g_size + kSector - 1) / kSector;
    g_bad.assign(static_cast<size_t>(sectors), false);
    if (sectors < 256)
        return;
    std::mt19937_64 random(g_seed);
    const auto below
        = [&](long long n) { return static_cast<long long>(random() % static_cast<unsigned long long>(n)); };
    const auto markRun = [&](long long from, long long count) {
        for (long long s = std::max(0LL, from); s < std::min(sectors, from + count); ++s)
            g_bad[static_cast<size_t>(s)] = true;
    };
    for (int scratch = 0; scratch < 4; ++scratch) {
        long long at = below(sectors * 85 / 100);
        const long long width = 1 + below(3);
        const long long crossings = 10 + below(11);
        for (long long c = 0; c < crossings; ++c) {
            markRun(at, width);
            at += 8 + 36 * at / sectors;
        }
    }
    markRun(sectors - sectors / 200, sectors / 200);
    for (int spot = 0; spot < 10; ++spot)
        markRun(below(sectors), 1 + below(4));
    markRun(sectors / 8 + below(sectors / 2), sectors / 128);
}

bool touchesBad(long long offset, long long size)
{
    const long long last = std::min(offset + size, g_size) - 1;
    for (long long s = offset / kSector; s <= last / kSector; ++s) {
        if (g_bad[static_cast<size_t>(s)])
            return true;
    }
    return false;
}

std::string statsText()
{
    return "reads " + std::to_string(g_reads.load()) + "\nfailed_reads "
        + std::to_string(g_failedReads.load()) + "\n";
}

int getAttributes(const char* path, struct stat* st, struct fuse_file_info*)
{
    if (std::strcmp(path, "/") == 0)
        return fusefs::folderAttributes(st, 0755);
    if (std::strcmp(path, kStats) == 0)
        return fusefs::fileAttributes(st, 0444, 4096); // read whole: its text is shorter
    return std::strcmp(path, kName) == 0 ? fusefs::fileAttributes(st, 0444, g_size) : -ENOENT;
}

int readFolder(const char* path, void* buffer, fuse_fill_dir_t fill, off_t, struct fuse_file_info*,
    enum fuse_readdir_flags)
{
    if (std::strcmp(path, "/") != 0)
        return -ENOENT;
    fusefs::fillFolder(buffer, fill, {kName, kStats});
    return 0;
}

int openFile(const char* path, struct fuse_file_info* info)
{
    if (std::strcmp(path, kName) != 0 && std::strcmp(path, kStats) != 0)
        return -ENOENT;
    if ((info->flags & O_ACCMODE) != O_RDONLY)
        return -EACCES;
    info->direct_io = 1; // every read reaches us: no page cache hides a bad sector or a second read
    return 0;
}

int readFile(const char* path, char* buffer, size_t size, off_t offset, struct fuse_file_info*)
{
    if (std::strcmp(path, kStats) == 0) {
        const std::string text = statsText();
        if (offset >= static_cast<off_t>(text.size()))
            return 0;
        const size_t count = std::min(size, text.size() - static_cast<size_t>(offset));
        std::memcpy(buffer, text.data() + offset, count);
        return static_cast<int>(count);
    }
    if (std::strcmp(path, kName) != 0)
        return -ENOENT;
    if (offset >= g_size || size == 0)
        return 0;
    ++g_reads;
    if (touchesBad(offset, static_cast<long long>(size))) {
        ++g_failedReads;
        std::this_thread::sleep_for(std::chrono::milliseconds(g_delayMs));
        return -EIO;
    }
    return fusefs::readPattern(buffer, size, offset, g_size);
}

int describe()
{
    long long badSectors = 0;
    long long runs = 0;
    long long longest = 0;
    long long run = 0;
    for (size_t s = 0; s < g_bad.size(); ++s) {
        if (g_bad[s]) {
            ++badSectors;
            runs += run == 0 ? 1 : 0;
            longest = std::max(longest, ++run);
        } else {
            run = 0;
        }
    }
    std::printf("%lld bytes, %zu sectors of 2048: %lld bad sectors in %lld runs (longest %lld); readable "
                "%lld bytes\n",
        g_size, g_bad.size(), badSectors, runs, longest, g_size - std::min(g_size, badSectors * kSector));
    return 0;
}

// Compares a copy with the disc: bytes of readable sectors that hold the disc's byte are recovered; a byte
// that is neither the disc's nor 0 (what a tool leaves where it read nothing), or a byte past the disc's
// end, is wrong.
int check(const char* path)
{
    FILE* file = std::fopen(path, "rb");
    long long readable = 0;
    long long recovered = 0;
    long long wrong = 0;
    std::vector<char> chunk(1 << 20);
    long long at = 0;
    size_t got = 0;
    while (file && (got = std::fread(chunk.data(), 1, chunk.size(), file)) > 0) {
        for (size_t i = 0; i < got; ++i, ++at) {
            if (at >= g_size) {
                ++wrong;
                continue;
            }
            const bool bad = g_bad[static_cast<size_t>(at / kSector)];
            const char expected = bad ? 0 : fusefs::patternByte(at);
            if (!bad && chunk[i] == expected)
                ++recovered;
            else if (chunk[i] != expected && chunk[i] != 0)
                ++wrong;
        }
    }
    if (file)
        std::fclose(file);
    for (long long s = 0; s < static_cast<long long>(g_bad.size()); ++s)
        readable += g_bad[static_cast<size_t>(s)] ? 0 : std::min(kSector, g_size - s * kSector);
    std::printf("%lld %lld %lld\n", readable, recovered, wrong);
    return 0;
}

} // namespace

int main(int argc, char** argv)
{
    const char* mountPoint = nullptr;
    const char* checked = nullptr;
    bool describeOnly = false;
    for (int i = 1; i < argc; ++i) {
        const std::string a = argv[i];
        const bool hasValue = i + 1 < argc;
        if (a == "--size" && hasValue)
            g_size = std::atoll(argv[++i]);
        else if (a == "--seed" && hasValue)
            g_seed = static_cast<unsigned>(std::atoll(argv[++i]));
        else if (a == "--delay-ms" && hasValue)
            g_delayMs = std::atoi(argv[++i]);
        else if (a == "--check" && hasValue)
            checked = argv[++i];
        else if (a == "--describe")
            describeOnly = true;
        else if (a[0] != '-' && !mountPoint)
            mountPoint = argv[i];
        else
            return 2;
    }
    if (g_size <= 0)
        return 2;
    makeDamage();
    if (describeOnly)
        return describe();
    if (checked)
        return check(checked);
    if (!mountPoint)
        return 2;

    static fuse_operations operations = {};
    operations.getattr = getAttributes;
    operations.readdir = readFolder;
    operations.open = openFile;
    operations.read = readFile;
    return fusefs::run(mountPoint, operations, fusefs::Threads::Single);
}
