#pragma once

#include <QByteArray>
#include <QString>

#include <atomic>
#include <functional>
#include <string>
#include <vector>

namespace vindaro::files {

// Which file names a walk takes. The test runs on the name's bytes as the folder listing gives them, so a
// walk decodes only the names it keeps; its answer is the same as that of the QString rules below for
// every name (names with non-ASCII bytes near the end are decoded and compared as text).
class NameRule
{
public:
    // Every file.
    static NameRule every();
    // Names whose last three characters, upper-cased, equal those of `pattern` ("*.DAT" takes
    // "update.dat" and "notdat").
    static NameRule lastThree(const QString& pattern);
    // Names equal to `pattern` when both are upper-cased.
    static NameRule wholeName(const QString& pattern);
    // No file at all.
    static NameRule nothing();
    // The add-folder rule: every file for "*.*" (blanks around it ignored), else the last three characters.
    static NameRule forFolderScan(const QString& pattern);

    bool matches(const char* name, size_t length) const;
    bool matches(const QString& name) const;

private:
    enum class Kind
    {
        Every,
        LastThree,
        WholeName,
        Nothing
    };
    NameRule(Kind kind, QString upper);

    Kind m_kind = Kind::Nothing;
    QString m_upper; // the upper-cased text a name is compared with
    QByteArray m_ascii; // the same when it is plain ASCII (the fast path), else empty
    bool m_asciiOnly = false;
};

// Facts of one file that a walk's filter may ask for: those of the file a link points at, apart from
// the name.
struct WalkedFile
{
    qint64 sizeBytes = 0;
    quint32 mode = 0; // st_mode: type and permission bits
    quint32 ownerId = 0;
    quint32 groupId = 0;
    quint64 attributes = 0; // statx's STATX_ATTR_* flags the file system reports (compressed ...)
    bool hiddenName = false; // the name starts with "."
    bool readOnlyVolume = false; // the folder's file system is mounted read-only
};

class FolderWalker;

// Receives what a walk finds, on the walk's thread.
class WalkSink
{
public:
    virtual ~WalkSink() = default;
    // A file the walk keeps, in walk order: the folder as given to walk() (with its closing "/") followed
    // by the path below it.
    virtual void found(const QString& path) = 0;
    // Called as each folder is opened and after every kTickEntries entries; walker.currentPath() names the
    // entry being examined then.
    virtual void tick(const FolderWalker& walker) { Q_UNUSED(walker); }
};

// Walks a folder tree for the file search and the add-folder command.
//
// Order: depth first; within a folder, names sorted without regard to case (ties by exact text); a
// sub-folder is walked at once, where it stands among its siblings. Only regular files (and links to
// them) are files; links to folders are never followed, so no link cycle can trap the walk; a folder
// already open higher up (a bind mount of its own ancestor) is not entered again; nesting is capped at
// maxDepth levels below the start. The kernel's own pseudo file systems (/proc, /sys and their like) are
// not entered from above, though a walk may start in one. A folder that cannot be listed adds nothing.
//
// Folders are read with getdents64. The entry's type spares a stat where the file system gives it; where
// it reports DT_UNKNOWN the walker asks lstat. Only a file whose name matches, or a link, costs a stat of
// its own, and only when the filter or the link needs it. `stop` is looked at before every entry.
class FolderWalker
{
public:
    static constexpr int kDefaultMaxDepth = 256;
    static constexpr int kTickEntries = 256;

    struct Options
    {
        NameRule names = NameRule::every();
        bool includeSubfolders = false;
        int maxDepth = kDefaultMaxDepth;
        // A further test on the facts of every file whose name matched; when set, each such file costs
        // one statx.
        std::function<bool(const WalkedFile&)> keep;
    };

    FolderWalker(Options options, const std::atomic<bool>& stop);
    ~FolderWalker();
    FolderWalker(const FolderWalker&) = delete;
    FolderWalker& operator=(const FolderWalker&) = delete;

    // Walks `folder` ("/" is added when it has none). Returns false when it was stopped.
    bool walk(const QString& folder, WalkSink& sink);

    // Entries examined so far ("." and ".." not counted).
    qint64 examined() const { return m_examined; }
    // The full path of the entry being examined; meaningful during a sink call.
    QString currentPath() const;

private:
    struct Level;
    void walkFolder(int fd, const QString& prefix, int depth, WalkSink& sink);
    void noteExamined(WalkSink& sink);

    Options m_options;
    const std::atomic<bool>& m_stop;
    std::vector<char> m_buffer; // one getdents64 buffer: a folder is read whole before any sub-folder
    struct Ancestor
    {
        quint64 device;
        quint64 inode;
    };
    std::vector<Ancestor> m_open; // the folders of the current branch, for loops made by bind mounts
    qint64 m_examined = 0;
    int m_sinceTick = 0;
    const QString* m_currentPrefix = nullptr;
    const char* m_currentName = nullptr;
    size_t m_currentLength = 0;
};

} // namespace vindaro::files
