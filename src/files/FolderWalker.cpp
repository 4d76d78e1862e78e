#include "FolderWalker.h"

#include "FileListTexts.h"
#include "FileTexts.h"

#include <QFile>

#include <algorithm>
#include <cerrno>
#include <cstring>

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/statfs.h>
#include <sys/statvfs.h>
#include <unistd.h>

namespace vindaro::files {

namespace {

constexpr size_t kListingBytes = 64 * 1024;

char asciiUpper(char c)
{
    return (c >= 'a' && c <= 'z') ? static_cast<char>(c - ('a' - 'A')) : c;
}

char asciiLower(char c)
{
    return (c >= 'A' && c <= 'Z') ? static_cast<char>(c + ('a' - 'A')) : c;
}

bool isAscii(const char* text, size_t length)
{
    for (size_t i = 0; i < length; ++i) {
        if (static_cast<unsigned char>(text[i]) >= 0x80)
            return false;
    }
    return true;
}

bool equalsUpper(const char* text, const QByteArray& upper)
{
    for (qsizetype i = 0; i < upper.size(); ++i) {
        if (asciiUpper(text[i]) != upper.at(i))
            return false;
    }
    return true;
}

// Case-insensitive order of two ASCII names, ties by their bytes: for ASCII text the same order as
// QString::compare(Qt::CaseInsensitive) followed by operator<.
bool asciiNameLess(const char* a, size_t aLength, const char* b, size_t bLength)
{
    const size_t common = std::min(aLength, bLength);
    for (size_t i = 0; i < common; ++i) {
        const auto la = static_cast<unsigned char>(asciiLower(a[i]));
        const auto lb = static_cast<unsigned char>(asciiLower(b[i]));
        if (la != lb)
            return la < lb;
    }
    if (aLength != bLength)
        return aLength < bLength;
    return std::memcmp(a, b, aLength) < 0;
}

// The kernel's bookkeeping file systems (statfs magic numbers): nothing in them is a user's file, and
// /proc alone holds more entries than a home folder.
bool isPseudoFileSystem(long magic)
{
    static constexpr unsigned long kPseudo[] = {
        0x9fa0, // proc
        0x62656572, // sysfs
        0x27e0eb, // cgroup
        0x63677270, // cgroup2
        0x1cd1, // devpts
        0x64626720, // debugfs
        0x74726163, // tracefs
        0x73636673, // securityfs
        0xcafe4a11, // bpf
        0x6165676c, // pstore
        0x62656570, // configfs
        0x65735543, // fusectl
        0x42494e4d, // binfmt_misc
        0xde5e81e4, // efivarfs
        0x6e736673, // nsfs
        0xf97cff8c, // selinuxfs
        0x19800202, // mqueue
    };
    const auto value = static_cast<unsigned long>(magic) & 0xffffffffUL;
    return std::find(std::begin(kPseudo), std::end(kPseudo), value) != std::end(kPseudo);
}

// The facts of the file `name` in folder `fd`, links followed; false when it cannot be examined.
bool readFacts(int fd, const char* name, WalkedFile& facts)
{
    struct statx sx;
    const unsigned mask = STATX_TYPE | STATX_MODE | STATX_UID | STATX_GID | STATX_SIZE;
    if (::statx(fd, name, AT_STATX_SYNC_AS_STAT, mask, &sx) == 0) {
        facts.sizeBytes = static_cast<qint64>(sx.stx_size);
        facts.mode = sx.stx_mode;
        facts.ownerId = sx.stx_uid;
        facts.groupId = sx.stx_gid;
        facts.attributes = sx.stx_attributes & sx.stx_attributes_mask;
        return true;
    }
    if (errno != ENOSYS && errno != EPERM) // statx refused by an old kernel or a sandbox: plain stat
        return false;
    struct stat st;
    if (::fstatat(fd, name, &st, 0) != 0)
        return false;
    facts.sizeBytes = static_cast<qint64>(st.st_size);
    facts.mode = st.st_mode;
    facts.ownerId = st.st_uid;
    facts.groupId = st.st_gid;
    facts.attributes = 0;
    return true;
}

} // namespace

// ---- NameRule ----

NameRule::NameRule(Kind kind, QString upper)
    : m_kind(kind)
    , m_upper(std::move(upper))
{
    m_asciiOnly = std::all_of(m_upper.cbegin(), m_upper.cend(), [](QChar c) { return c.unicode() < 0x80; });
    if (m_asciiOnly)
        m_ascii = m_upper.toLatin1();
}

NameRule NameRule::every()
{
    return NameRule(Kind::Every, {});
}

NameRule NameRule::lastThree(const QString& pattern)
{
    return NameRule(Kind::LastThree, lastThreeUpper(pattern));
}

NameRule NameRule::wholeName(const QString& pattern)
{
    return NameRule(Kind::WholeName, pattern.toUpper());
}

NameRule NameRule::nothing()
{
    return NameRule(Kind::Nothing, {});
}

NameRule NameRule::forFolderScan(const QString& pattern)
{
    return pattern.trimmed() == QLatin1String("*.*") ? every() : lastThree(pattern);
}

bool NameRule::matches(const QString& name) const
{
    switch (m_kind) {
    case Kind::Every:
        return true;
    case Kind::LastThree:
        return lastThreeUpper(name) == m_upper;
    case Kind::WholeName:
        return name.toUpper() == m_upper;
    case Kind::Nothing:
        break;
    }
    return false;
}

bool NameRule::matches(const char* name, size_t length) const
{
    switch (m_kind) {
    case Kind::Every:
        return true;
    case Kind::Nothing:
        return false;
    case Kind::LastThree: {
        // UTF-8 continuation bytes are never ASCII, so three ASCII bytes at the end are the last three
        // characters. Upper-casing ASCII gives ASCII: such a tail never equals a non-ASCII pattern tail.
        const size_t tail = std::min<size_t>(length, 3);
        if (isAscii(name + length - tail, tail))
            return m_asciiOnly && size_t(m_ascii.size()) == tail
                && equalsUpper(name + length - tail, m_ascii);
        break;
    }
    case Kind::WholeName:
        if (isAscii(name, length))
            return m_asciiOnly && size_t(m_ascii.size()) == length && equalsUpper(name, m_ascii);
        break;
    }
    // Other scripts (and letters such as "ß" that grow when upper-cased) follow the text rule itself.
    return matches(QString::fromUtf8(name, static_cast<qsizetype>(length)));
}

// ---- FolderWalker ----

// One folder's kept entries, read whole before the first is handed on (the order needs them all).
struct FolderWalker::Level
{
    struct Entry
    {
        size_t offset; // into names
        size_t length;
        bool folder;
        QString text;
    };
    std::string names; // the kept names, each ended by a NUL
    std::vector<Entry> entries;
    bool allAscii = true;
    bool readOnlyVolume = false;
};

FolderWalker::FolderWalker(Options options, const std::atomic<bool>& stop)
    : m_options(std::move(options))
    , m_stop(stop)
    , m_buffer(kListingBytes)
{
}

FolderWalker::~FolderWalker() = default;

QString FolderWalker::currentPath() const
{
    if (!m_currentPrefix)
        return {};
    if (!m_currentName)
        return *m_currentPrefix;
    return *m_currentPrefix + QString::fromUtf8(m_currentName, static_cast<qsizetype>(m_currentLength));
}

bool FolderWalker::walk(const QString& folder, WalkSink& sink)
{
    m_examined = 0;
    m_sinceTick = 0;
    m_open.clear();
    const QString root = withTrailingSlash(folder);
    if (root.isEmpty())
        return !m_stop.load(std::memory_order_relaxed);
    const int fd = ::open(QFile::encodeName(root).constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (fd >= 0) {
        walkFolder(fd, root, 0, sink);
        ::close(fd);
    }
    m_currentPrefix = nullptr;
    m_currentName = nullptr;
    return !m_stop.load(std::memory_order_relaxed);
}

void FolderWalker::noteExamined(WalkSink& sink)
{
    if (++m_sinceTick >= kTickEntries) {
        m_sinceTick = 0;
        sink.tick(*this);
    }
}

void FolderWalker::walkFolder(int fd, const QString& prefix, int depth, WalkSink& sink)
{
    struct stat self;
    if (::fstat(fd, &self) != 0)
        return;
    const Ancestor here{quint64(self.st_dev), quint64(self.st_ino)};
    for (const Ancestor& open : m_open) {
        if (open.device == here.device && open.inode == here.inode)
            return;
    }
    if (!m_open.empty() && m_open.back().device != here.device) {
        struct statfs fs;
        if (::fstatfs(fd, &fs) == 0 && isPseudoFileSystem(static_cast<long>(fs.f_type)))
            return;
    }
    m_open.push_back(here);

    Level level;
    if (m_options.keep) {
        struct statvfs vfs;
        level.readOnlyVolume = ::fstatvfs(fd, &vfs) == 0 && (vfs.f_flag & ST_RDONLY);
    }
    m_currentPrefix = &prefix;
    m_currentName = nullptr;
    sink.tick(*this);

    const bool recurse = m_options.includeSubfolders && depth < m_options.maxDepth;
    bool stopped = false;
    for (;;) {
        const ssize_t got = ::getdents64(fd, m_buffer.data(), m_buffer.size());
        if (got <= 0)
            break; // the end, or a read error: what was listed so far stays
        for (ssize_t at = 0; at < got;) {
            const auto* entry = reinterpret_cast<const struct dirent64*>(m_buffer.data() + at);
            at += entry->d_reclen;
            const char* name = entry->d_name;
            if (name[0] == '.' && (name[1] == '\0' || (name[1] == '.' && name[2] == '\0')))
                continue;
            if (m_stop.load(std::memory_order_relaxed)) {
                stopped = true;
                break;
            }
            const size_t length = std::strlen(name);
            ++m_examined;
            m_currentName = name;
            m_currentLength = length;
            noteExamined(sink);

            unsigned char type = entry->d_type;
            if (type == DT_UNKNOWN) {
                if (!recurse && !m_options.names.matches(name, length))
                    continue;
                struct stat st;
                if (::fstatat(fd, name, &st, AT_SYMLINK_NOFOLLOW) != 0)
                    continue;
                type = S_ISDIR(st.st_mode) ? DT_DIR
                    : S_ISREG(st.st_mode)  ? DT_REG
                    : S_ISLNK(st.st_mode)  ? DT_LNK
                                           : DT_FIFO;
            }
            bool folder = false;
            if (type == DT_DIR) {
                if (!recurse)
                    continue;
                folder = true;
            } else if (type == DT_REG || type == DT_LNK) {
                if (!m_options.names.matches(name, length))
                    continue;
                if (type == DT_LNK || m_options.keep) {
                    WalkedFile facts;
                    if (!readFacts(fd, name, facts) || !S_ISREG(facts.mode))
                        continue; // a dangling link, or one to a folder (never walked) or a device
                    facts.hiddenName = name[0] == '.';
                    facts.readOnlyVolume = level.readOnlyVolume;
                    if (m_options.keep && !m_options.keep(facts))
                        continue;
                }
            } else {
                continue; // fifos, sockets, devices: nothing a copy could read to an end
            }
            Level::Entry kept{level.names.size(), length, folder, QString::fromUtf8(name, qsizetype(length))};
            level.names.append(name, length + 1); // with its NUL: openat takes it as it stands
            if (level.allAscii && !isAscii(name, length))
                level.allAscii = false;
            level.entries.push_back(std::move(kept));
        }
        if (stopped)
            break;
    }

    if (!stopped) {
        const char* names = level.names.data();
        if (level.allAscii) {
            std::sort(level.entries.begin(), level.entries.end(), [names](const auto& a, const auto& b) {
                return asciiNameLess(names + a.offset, a.length, names + b.offset, b.length);
            });
        } else {
            std::sort(level.entries.begin(), level.entries.end(), [](const auto& a, const auto& b) {
                const int folded = a.text.compare(b.text, Qt::CaseInsensitive);
                return folded != 0 ? folded < 0 : a.text < b.text;
            });
        }
        for (const Level::Entry& entry : level.entries) {
            if (m_stop.load(std::memory_order_relaxed))
                break;
            const char* name = names + entry.offset;
            m_currentPrefix = &prefix;
            m_currentName = name;
            m_currentLength = entry.length;
            if (!entry.folder) {
                sink.found(prefix + entry.text);
                noteExamined(sink);
                continue;
            }
            const int child = ::openat(fd, name, O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
            if (child < 0)
                continue; // no access, or gone since it was listed
            const QString childPrefix = prefix + entry.text + u'/';
            walkFolder(child, childPrefix, depth + 1, sink);
            ::close(child);
        }
    }
    m_open.pop_back();
}

} // namespace vindaro::files
