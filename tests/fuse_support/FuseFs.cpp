#include "FuseFs.h"

#include "Pattern.h"

#include <algorithm>
#include <cstring>
#include <string>

namespace fusefs {

int folderAttributes(struct stat* st, mode_t permissions)
{
    std::memset(st, 0, sizeof(*st));
    st->st_mode = S_IFDIR | permissions;
    st->st_nlink = 2;
    return 0;
}

int fileAttributes(struct stat* st, mode_t permissions, long long size)
{
    std::memset(st, 0, sizeof(*st));
    st->st_mode = S_IFREG | permissions;
    st->st_nlink = 1;
    st->st_size = size;
    return 0;
}

void fillFolder(void* buffer, fuse_fill_dir_t fill, const std::vector<const char*>& paths)
{
    const auto noFlags = static_cast<fuse_fill_dir_flags>(0);
    fill(buffer, ".", nullptr, 0, noFlags);
    fill(buffer, "..", nullptr, 0, noFlags);
    for (const char* path : paths)
        fill(buffer, path + 1, nullptr, 0, noFlags);
}

int readPattern(char* buffer, size_t size, off_t offset, long long fileSize)
{
    const long long from = offset;
    if (from >= fileSize)
        return 0;
    const long long count = std::min(static_cast<long long>(size), fileSize - from);
    for (long long i = 0; i < count; ++i)
        buffer[i] = patternByte(from + i);
    return static_cast<int>(count);
}

int run(const char* mountPoint, const fuse_operations& operations, Threads threads, const char* options)
{
    std::vector<std::string> words = {"vindaro_test_fs", "-f", mountPoint};
    if (threads == Threads::Single)
        words.emplace_back("-s");
    if (options)
        words.insert(words.end(), {"-o", options});
    std::vector<char*> arguments;
    for (std::string& word : words)
        arguments.push_back(word.data());
    arguments.push_back(nullptr);
    return fuse_main(static_cast<int>(words.size()), arguments.data(), &operations, nullptr);
}

} // namespace fusefs
