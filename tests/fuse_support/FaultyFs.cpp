// A FUSE folder of read-only files with faults of the test's choosing, as a scratched disc or a refusing
// device shows them to the programs on real system calls:
//   faulty_fs MOUNTPOINT FILE...
//     FILE      NAME:CONTENT[:FAULT]...
//     CONTENT   a byte count (the pattern bytes of Pattern.h) or @PATH (the bytes of that file)
//     FAULT     eio@OFFSET+LENGTH   reads that touch the range fail with EIO, as an unreadable sector does
//               hang@OFFSET+LENGTH  reads that touch the range wait, as a drive retrying a sector, until
//                                   "release" is looked up in the root or 15 s have passed, then go on
//               locked              the file cannot be removed (EACCES)
// The first hanging read says "hang" on standard output, the end of the wait "released". Creating, writing,
// renaming and making folders fail with EROFS; a file that is not locked can be removed (so a move that
// wrongly removes its source shows). Multi-threaded, so a hanging read holds nothing else up.
#include "FuseFs.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <condition_variable>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iterator>
#include <mutex>
#include <string>
#include <vector>

namespace {

struct Fault
{
    bool hang; // else EIO
    long long offset;
    long long length;
};

struct File
{
    std::string path; // "/NAME"
    long long size = 0;
    std::vector<char> bytes; // the copied file's; empty for pattern bytes
    std::vector<Fault> faults;
    bool locked = false;
    bool removed = false;
};

std::vector<File> g_files;
std::mutex g_lock;
std::condition_variable g_wake;
bool g_released = false;
bool g_saidHang = false;

void say(const char* text)
{
    std::fputs(text, stdout);
    std::fflush(stdout);
}

File* find(const char* path)
{
    std::lock_guard<std::mutex> hold(g_lock);
    for (File& file : g_files) {
        if (file.path == path && !file.removed)
            return &file;
    }
    return nullptr;
}

void release()
{
    std::lock_guard<std::mutex> hold(g_lock);
    if (!g_released)
        say("released\n");
    g_released = true;
    g_wake.notify_all();
}

void waitForRelease()
{
    std::unique_lock<std::mutex> hold(g_lock);
    if (!g_saidHang)
        say("hang\n");
    g_saidHang = true;
    if (!g_wake.wait_for(hold, std::chrono::seconds(15), [] { return g_released; })) {
        hold.unlock();
        release();
    }
}

int getAttributes(const char* path, struct stat* st, struct fuse_file_info*)
{
    if (std::strcmp(path, "/") == 0)
        return fusefs::folderAttributes(st, 0755);
    if (std::strcmp(path, "/release") == 0) {
        release();
        return -ENOENT;
    }
    const File* file = find(path);
    return file ? fusefs::fileAttributes(st, 0444, file->size) : -ENOENT;
}

int readFolder(const char* path, void* buffer, fuse_fill_dir_t fill, off_t, struct fuse_file_info*,
    enum fuse_readdir_flags)
{
    if (std::strcmp(path, "/") != 0)
        return -ENOENT;
    std::vector<const char*> present;
    for (const File& file : g_files) {
        if (find(file.path.c_str()))
            present.push_back(file.path.c_str());
    }
    fusefs::fillFolder(buffer, fill, present);
    return 0;
}

int openFile(const char* path, struct fuse_file_info* info)
{
    if (!find(path))
        return -ENOENT;
    if ((info->flags & O_ACCMODE) != O_RDONLY)
        return -EROFS;
    info->direct_io = 1; // every read reaches us: no page cache hides a scratch
    return 0;
}

int readFile(const char* path, char* buffer, size_t size, off_t offset, struct fuse_file_info*)
{
    const File* file = find(path);
    if (!file)
        return -ENOENT;
    const long long count = static_cast<long long>(size);
    for (const Fault& f : file->faults) {
        if (offset < f.offset + f.length && f.offset < offset + count) {
            if (!f.hang)
                return -EIO;
            waitForRelease();
        }
    }
    if (file->bytes.empty())
        return fusefs::readPattern(buffer, size, offset, file->size);
    if (offset >= file->size)
        return 0;
    const long long copied = std::min(count, file->size - offset);
    std::memcpy(buffer, file->bytes.data() + offset, static_cast<size_t>(copied));
    return static_cast<int>(copied);
}

int removeFile(const char* path)
{
    File* file = find(path);
    if (!file)
        return -ENOENT;
    if (file->locked)
        return -EACCES;
    std::lock_guard<std::mutex> hold(g_lock);
    file->removed = true;
    return 0;
}

bool parseFile(const std::string& argument)
{
    File file;
    size_t from = 0;
    for (int field = 0; from <= argument.size(); ++field) {
        const size_t colon = std::min(argument.find(':', from), argument.size());
        const std::string item = argument.substr(from, colon - from);
        from = colon + 1;
        if (field == 0) {
            file.path = "/" + item;
        } else if (field == 1 && item.rfind('@', 0) == 0) {
            std::ifstream source(item.substr(1), std::ios::binary);
            file.bytes.assign(std::istreambuf_iterator<char>(source), std::istreambuf_iterator<char>());
            file.size = static_cast<long long>(file.bytes.size());
        } else if (field == 1) {
            file.size = std::atoll(item.c_str());
        } else if (item == "locked") {
            file.locked = true;
        } else {
            char kind[5] = {};
            Fault fault{false, 0, 0};
            if (std::sscanf(item.c_str(), "%4[a-z]@%lld+%lld", kind, &fault.offset, &fault.length) != 3)
                return false;
            fault.hang = std::strcmp(kind, "hang") == 0;
            if (!fault.hang && std::strcmp(kind, "eio") != 0)
                return false;
            file.faults.push_back(fault);
        }
    }
    g_files.push_back(std::move(file));
    return true;
}

} // namespace

int main(int argc, char** argv)
{
    if (argc < 3)
        return 2;
    for (int i = 2; i < argc; ++i) {
        if (!parseFile(argv[i]))
            return 2;
    }
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
