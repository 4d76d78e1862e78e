// A small FUSE file system for the folder walk on real system calls. Its listings give no entry types
// (DT_UNKNOWN), so the walker must ask for each entry's kind; and it holds what a plain folder cannot:
//   /a.dat, /z.dat     files;
//   /broken/           a folder whose listing fails with EIO;
//   /locked/           a folder that cannot be opened (EACCES; the tests run as root, so a permission
//                      bit would stop nothing);
//   /sub/b.dat         a file in a folder;
//   /sub/again/        the same folder again, with the same inode number (as a bind mount of a folder
//                      into itself shows it): again/b.dat, again/again/ ... without end.
//   looping_tree_fs MOUNTPOINT
#include "FuseFs.h"

#include <cerrno>
#include <cstring>
#include <string>

namespace {

enum class Node
{
    None,
    Root,
    Sub, // /sub, /sub/again, /sub/again/again ...
    Broken,
    Locked,
    File
};

Node nodeOf(const char* path)
{
    const std::string p = path;
    if (p == "/")
        return Node::Root;
    if (p == "/a.dat" || p == "/z.dat")
        return Node::File;
    if (p == "/broken")
        return Node::Broken;
    if (p == "/locked")
        return Node::Locked;
    if (p.rfind("/sub", 0) != 0)
        return Node::None;
    std::string rest = p.substr(4);
    while (rest.rfind("/again", 0) == 0)
        rest = rest.substr(6);
    if (rest.empty())
        return Node::Sub;
    return rest == "/b.dat" ? Node::File : Node::None;
}

int getAttributes(const char* path, struct stat* st, struct fuse_file_info*)
{
    switch (nodeOf(path)) {
    case Node::Root:
        fusefs::folderAttributes(st, 0755);
        st->st_ino = 1;
        return 0;
    case Node::Sub:
        fusefs::folderAttributes(st, 0755);
        st->st_ino = 2;
        return 0;
    case Node::Broken:
    case Node::Locked:
        fusefs::folderAttributes(st, 0755);
        st->st_ino = nodeOf(path) == Node::Broken ? 3 : 4;
        return 0;
    case Node::File:
        fusefs::fileAttributes(st, 0644, 100);
        st->st_ino = std::hash<std::string>{}(path) | 0x100;
        return 0;
    case Node::None:
        break;
    }
    return -ENOENT;
}

int openFolder(const char* path, struct fuse_file_info*)
{
    return nodeOf(path) == Node::Locked ? -EACCES : 0;
}

int readFolder(const char* path, void* buffer, fuse_fill_dir_t fill, off_t, struct fuse_file_info*,
    enum fuse_readdir_flags)
{
    switch (nodeOf(path)) {
    case Node::Root:
        fusefs::fillFolder(buffer, fill, {"/a.dat", "/broken", "/locked", "/sub", "/z.dat"});
        return 0;
    case Node::Sub:
        fusefs::fillFolder(buffer, fill, {"/b.dat", "/again"});
        return 0;
    case Node::Broken:
        return -EIO;
    default:
        return -ENOENT;
    }
}

} // namespace

int main(int argc, char** argv)
{
    if (argc != 2)
        return 2;
    static fuse_operations operations = {};
    operations.getattr = getAttributes;
    operations.opendir = openFolder;
    operations.readdir = readFolder;
    operations.init = [](struct fuse_conn_info*, struct fuse_config* config) -> void* {
        config->use_ino = 1; // the inode numbers above, not the library's own
        return nullptr;
    };
    return fusefs::run(argv[1], operations, fusefs::Threads::Single);
}
