#pragma once

#include "files/FolderWalker.h"

#include <QList>
#include <QString>

#include <optional>

// The file search's rules and texts, apart from any window or thread so each can be tested alone.
namespace vindaro::search {

// Status line texts.
inline const QString kEmptyInputText = QStringLiteral("要搜索的文件与文件搜索的范围不能为空.");
inline const QString kNothingFoundText = QStringLiteral("没有找到所需要的文件");
// "找到 12 个文件".
QString foundCountText(int count);

// The folder a scope text names, with a closing "/": "~" and "~/..." stand for the home folder, as
// everywhere on Linux; any other text as it is.
QString scopeFolder(const QString& scope);

// A pattern without "*" names one file exactly (any case).
bool isExactName(const QString& pattern);

// Which names a search takes:
//   no "*": the whole name, compared upper-cased, so "avseq01.dat" finds "AVSEQ01.DAT" only;
//   "*.*" with any blanks around it: every file;
//   otherwise only the last three characters count, upper-cased: "*.DAT" and "AVSEQ*.DAT" take "update"
//   style names too, "*.MPEG" selects by "PEG", "*.DAT;*.VOB" by "VOB".
// A pattern whose last three characters hold a "*" ("*", "abc*") finds nothing: the rule compares those
// characters literally, and a name ending in "*" is no file a user searches for that way.
files::NameRule searchNameRule(const QString& pattern);

// The three size classes, both bounds inclusive: 10M means 10,240,000 bytes and 1G 1,024,000,000 bytes, so
// a file of exactly 10,240,000 bytes lies in the first and the second class.
struct SizeClass
{
    qint64 lowestBytes;
    qint64 highestBytes;
};
inline constexpr SizeClass kSizeClasses[3] = {
    {1'024, 10'240'000},
    {10'240'000, 102'400'000},
    {102'400'000, 1'024'000'000},
};

// The attribute bits the search boxes stand for.
enum AttributeBit : int
{
    kReadOnly = 1,
    kHidden = 2,
    kSystem = 4,
    kArchive = 32,
    kCompressed = 2048,
};

// The window's check boxes as a search reads them when it starts.
struct SearchOptions
{
    bool includeSubfolders = true;
    bool size1 = false;
    bool size2 = false;
    bool size3 = false;
    bool readOnly = false;
    bool hidden = false;
    bool archive = false;
    bool system = false;
    bool compressed = false;
};

// The class in force: the first checked size box wins; none without a checked box.
std::optional<SizeClass> sizeClassOf(const SearchOptions& options);
bool inSizeClass(qint64 bytes, const SizeClass& sizeClass);

// The attribute boxes as a filter: the bits of the checked boxes. 0 (nothing checked) lets every file
// pass; otherwise a file passes when it has at least one of the checked attributes, so "read-only" and
// "hidden" together find the files that are read-only or hidden.
int attributeMask(const SearchOptions& options);

// The attributes of a file on Linux, as the boxes mean them:
//   read-only   the caller's permission class has no write bit, or the volume is mounted read-only;
//   hidden      the name starts with ".";
//   system      the file belongs to a system account (owner id below 1000, or "nobody" 65534): the
//               operating system's files rather than a person's;
//   archive     every regular file (what the property window shows as "存档");
//   compressed  the file system stores it compressed (statx's STATX_ATTR_COMPRESSED, e.g. btrfs).
// `userId` and `groupIds` are the caller's, for the permission class.
int attributeWord(const files::WalkedFile& file, quint32 userId, const QList<quint32>& groupIds);
inline bool passesAttributes(int word, int mask)
{
    return mask == 0 || (word & mask) != 0;
}

// The walk a search makes: names by searchNameRule(); in exact-name mode the size and attribute boxes
// are not consulted; otherwise the size class and the attribute filter, when any is in force, decide.
files::FolderWalker::Options walkOptions(const QString& pattern, const SearchOptions& options);

} // namespace vindaro::search
