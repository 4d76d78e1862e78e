#include "LinuxVolumes.h"

#include "DiscStatus.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSet>

#include <cerrno>
#include <climits>

#include <dirent.h>
#include <fcntl.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <sys/statfs.h>
#include <sys/statvfs.h>
#include <sys/sysmacros.h>
#include <unistd.h>

#ifdef __linux__
#include <linux/cdrom.h>
#endif

namespace vindaro::platform {

namespace {
constexpr qint64 kProcMagic = 0x9FA0; // PROC_SUPER_MAGIC
} // namespace

QString unescapeMountField(const QString& field)
{
    QString out;
    out.reserve(field.size());
    for (qsizetype i = 0; i < field.size(); ++i) {
        const QChar c = field.at(i);
        if (c == QLatin1Char('\\') && i + 3 < field.size()) {
            bool allOctal = true;
            int value = 0;
            for (qsizetype k = 1; k <= 3; ++k) {
                const QChar d = field.at(i + k);
                if (d < QLatin1Char('0') || d > QLatin1Char('7')) {
                    allOctal = false;
                    break;
                }
                value = value * 8 + (d.unicode() - '0');
            }
            if (allOctal && value < 256) {
                out += QChar(value);
                i += 3;
                continue;
            }
        }
        out += c;
    }
    return out;
}

QList<MountEntry> parseMountInfo(const QString& text)
{
    QList<MountEntry> entries;
    const QStringList lines = text.split(QLatin1Char('\n'), Qt::SkipEmptyParts);
    for (const QString& line : lines) {
        const QStringList fields = line.split(QLatin1Char(' '), Qt::SkipEmptyParts);
        const qsizetype dash = fields.indexOf(QStringLiteral("-"), 6);
        // Six fixed fields before the optional ones, then "-", type and source.
        if (dash < 6 || dash + 2 >= fields.size())
            continue;
        MountEntry entry;
        entry.mountPoint = unescapeMountField(fields.at(4));
        entry.fsType = unescapeMountField(fields.at(dash + 1));
        entry.device = unescapeMountField(fields.at(dash + 2));
        if (!entry.mountPoint.startsWith(QLatin1Char('/')))
            continue;
        entries.append(entry);
    }
    return entries;
}

bool isPseudoFileSystem(const QString& fsType)
{
    static const QSet<QString> kPseudo = {
        QStringLiteral("proc"),
        QStringLiteral("sysfs"),
        QStringLiteral("cgroup"),
        QStringLiteral("cgroup2"),
        QStringLiteral("devpts"),
        QStringLiteral("devtmpfs"),
        QStringLiteral("securityfs"),
        QStringLiteral("debugfs"),
        QStringLiteral("tracefs"),
        QStringLiteral("mqueue"),
        QStringLiteral("bpf"),
        QStringLiteral("pstore"),
        QStringLiteral("autofs"),
        QStringLiteral("configfs"),
        QStringLiteral("fusectl"),
        QStringLiteral("hugetlbfs"),
        QStringLiteral("binfmt_misc"),
        QStringLiteral("efivarfs"),
        QStringLiteral("rpc_pipefs"),
        QStringLiteral("nsfs"),
        QStringLiteral("selinuxfs"),
        QStringLiteral("nfsd"),
        QStringLiteral("fuse.gvfsd-fuse"),
        QStringLiteral("fuse.portal"),
    };
    return kPseudo.contains(fsType);
}

bool isRemoteFileSystem(const QString& fsType, const QString& device)
{
    static const QSet<QString> kRemote = {
        QStringLiteral("nfs"),
        QStringLiteral("nfs4"),
        QStringLiteral("cifs"),
        QStringLiteral("smb3"),
        QStringLiteral("smbfs"),
        QStringLiteral("sshfs"),
        QStringLiteral("fuse.sshfs"),
        QStringLiteral("9p"),
        QStringLiteral("afs"),
        QStringLiteral("davfs"),
        QStringLiteral("fuse.davfs2"),
        QStringLiteral("ncpfs"),
        QStringLiteral("ceph"),
        QStringLiteral("fuse.ceph"),
        QStringLiteral("glusterfs"),
        QStringLiteral("fuse.glusterfs"),
        QStringLiteral("lustre"),
        QStringLiteral("fuse.rclone"),
        QStringLiteral("fuse.s3fs"),
        QStringLiteral("coda"),
        QStringLiteral("virtiofs"),
    };
    if (kRemote.contains(fsType))
        return true;
    if (device.startsWith(QLatin1String("//")))
        return true; // //server/share
    // server:/export (but not a Windows-looking "C:\" or a device path)
    const qsizetype colon = device.indexOf(QLatin1String(":/"));
    return colon > 0 && !device.startsWith(QLatin1Char('/'));
}

namespace {

quint16 le16(const QByteArray& b, qsizetype at)
{
    return static_cast<quint16>(static_cast<quint8>(b.at(at)) | (static_cast<quint8>(b.at(at + 1)) << 8));
}

quint32 be32(const QByteArray& b, qsizetype at)
{
    quint32 v = 0;
    for (qsizetype i = 0; i < 4; ++i)
        v = (v << 8) | static_cast<quint8>(b.at(at + i));
    return v;
}

// A NUL- or blank-padded label field.
QString paddedText(const QByteArray& b, qsizetype at, qsizetype length)
{
    QByteArray raw = b.mid(at, length);
    const qsizetype nul = raw.indexOf('\0');
    if (nul >= 0)
        raw.truncate(nul);
    return QString::fromUtf8(raw).trimmed();
}

} // namespace

SuperblockFacts readSuperblock(const QByteArray& head)
{
    SuperblockFacts facts;
    if (head.size() >= 0x478 + 16 && le16(head, 0x438) == 0xEF53) {
        facts.recognised = true;
        facts.serial = be32(head, 0x468);
        facts.label = paddedText(head, 0x478, 16);
        return facts;
    }
    if (head.size() >= 0x8028 + 32 && head.mid(0x8001, 5) == "CD001") {
        facts.recognised = true;
        facts.label = paddedText(head, 0x8028, 32);
    }
    return facts;
}

quint32 serialFromUuid(const QString& uuid)
{
    QString digits;
    for (const QChar c : uuid) {
        if (c == QLatin1Char('-'))
            continue;
        if (!QStringLiteral("0123456789abcdefABCDEF").contains(c))
            return 0;
        digits += c;
        if (digits.size() == 8)
            break;
    }
    if (digits.size() < 8)
        return 0;
    bool ok = false;
    const uint value = digits.toUInt(&ok, 16);
    return ok ? value : 0;
}

LinuxVolumes::LinuxVolumes(QString mountInfoPath, QString sysRoot, QString devRoot)
    : m_mountInfoPath(std::move(mountInfoPath))
    , m_sysRoot(std::move(sysRoot))
    , m_devRoot(std::move(devRoot))
{
}

LinuxVolumes::~LinuxVolumes()
{
    if (m_noticeFd >= 0)
        ::close(m_noticeFd);
}

namespace {

// Reads an open file from its start to its end. mountinfo reports a size of 0: read until the end rather
// than by size.
QByteArray readAllFrom(int fd)
{
    QByteArray text;
    if (::lseek(fd, 0, SEEK_SET) != 0)
        return text;
    char chunk[16384];
    for (;;) {
        const ssize_t got = ::read(fd, chunk, sizeof chunk);
        if (got < 0 && errno == EINTR)
            continue;
        if (got <= 0)
            break;
        text.append(chunk, qsizetype(got));
    }
    return text;
}

// What tells a plain file's versions apart; empty when it cannot be examined.
QByteArray fileStamp(const QByteArray& path)
{
    struct stat st;
    if (::stat(path.constData(), &st) != 0)
        return {};
    return QByteArray::number(quint64(st.st_dev)) + ':' + QByteArray::number(quint64(st.st_ino)) + ':'
        + QByteArray::number(qint64(st.st_size)) + ':' + QByteArray::number(qint64(st.st_mtim.tv_sec)) + '.'
        + QByteArray::number(qint64(st.st_mtim.tv_nsec)) + ':'
        + QByteArray::number(qint64(st.st_ctim.tv_nsec));
}

bool isProcFile(int fd)
{
    struct statfs fs;
    return ::fstatfs(fd, &fs) == 0 && fs.f_type == kProcMagic;
}

} // namespace

LinuxVolumes::Table LinuxVolumes::table()
{
    QMutexLocker lock(&m_mutex);
    if (m_noticeFd >= 0) {
        // The kernel raises POLLPRI (with POLLERR) on an open mountinfo once per change of the mount
        // namespace, and clears it by this poll: a change after it shows at the next call.
        pollfd notice{m_noticeFd, POLLPRI, 0};
        int ready = 0;
        do {
            ready = ::poll(&notice, 1, 0);
        } while (ready < 0 && errno == EINTR);
        if (ready == 0 || (ready > 0 && (notice.revents & (POLLPRI | POLLERR)) == 0))
            return m_table;
        reloadLocked(readAllFrom(m_noticeFd));
        return m_table;
    }

    const QByteArray native = QFile::encodeName(m_mountInfoPath);
    QByteArray stamp = fileStamp(native);
    if (m_loaded && !stamp.isEmpty() && stamp == m_fileStamp)
        return m_table;
    int fd = -1;
    do {
        fd = ::open(native.constData(), O_RDONLY | O_CLOEXEC);
    } while (fd < 0 && errno == EINTR);
    if (fd < 0) {
        if (!m_loaded || !m_table.entries.isEmpty())
            reloadLocked({});
        m_fileStamp.clear(); // tried again at the next call
        return m_table;
    }
    // The stamp is taken before the read: a change made while reading shows as a new stamp next time.
    reloadLocked(readAllFrom(fd));
    if (isProcFile(fd)) {
        m_noticeFd = fd; // the change notice replaces the stamp from now on
    } else {
        m_fileStamp = stamp;
        ::close(fd);
    }
    return m_table;
}

void LinuxVolumes::reloadLocked(const QByteArray& text)
{
    ++m_tableReads;
    m_loaded = true;
    Table fresh;
    fresh.entries = parseMountInfo(QString::fromUtf8(text));
    for (const MountEntry& entry : std::as_const(fresh.entries)) {
        // Helpers the kernel mounts below /proc and /sys (cgroup trees, binfmt) are no drive whatever
        // their type.
        if (isPseudoFileSystem(entry.fsType) || entry.mountPoint.startsWith(QLatin1String("/proc/"))
            || entry.mountPoint.startsWith(QLatin1String("/sys/")))
            continue;
        Volume volume{entry.mountPoint, entry.device, entry.fsType, classify(entry)};
        // A file bind-mounted over another (containers' /etc/hosts) is no drive. Remote and FUSE mounts
        // are not examined: a stat on a dead server, or on a FUSE daemon that is stuck, can hang.
        const bool mayHang = volume.kind == kDriveRemote || entry.fsType == QLatin1String("fuse")
            || entry.fsType.startsWith(QLatin1String("fuse."));
        if (!mayHang && !QFileInfo(entry.mountPoint).isDir())
            continue;
        // A later mount on the same point hides the earlier one.
        bool replaced = false;
        for (Volume& known : fresh.volumes) {
            if (known.mountPoint == volume.mountPoint) {
                known = volume;
                replaced = true;
                break;
            }
        }
        if (!replaced)
            fresh.volumes.append(volume);
    }
    m_table = std::move(fresh);
}

int LinuxVolumes::tableReads() const
{
    QMutexLocker lock(&m_mutex);
    return m_tableReads;
}

QString LinuxVolumes::diskOfDevice(const QString& deviceName) const
{
    const QString block = m_sysRoot + QStringLiteral("/block/");
    if (QFileInfo::exists(block + deviceName + QStringLiteral("/removable")))
        return deviceName;
    // A partition lives in its disk's folder: /sys/block/sdb/sdb1.
    const QStringList disks = QDir(block).entryList(QDir::Dirs | QDir::NoDotAndDotDot);
    for (const QString& disk : disks) {
        if (QFileInfo(block + disk + QLatin1Char('/') + deviceName).isDir())
            return disk;
    }
    return {};
}

namespace {

// The kernel name of a /dev node, symbolic links (/dev/mapper/x, /dev/disk/by-id/...) resolved.
QString kernelName(const QString& device, const QString& devRoot)
{
    if (!device.startsWith(QLatin1String("/dev/")))
        return {};
    const QString mapped = devRoot + device.mid(4);
    const QString canonical = QFileInfo(mapped).canonicalFilePath();
    return QFileInfo(canonical.isEmpty() ? device : canonical).fileName();
}

} // namespace

int LinuxVolumes::classify(const MountEntry& entry) const
{
    if (isRemoteFileSystem(entry.fsType, entry.device))
        return kDriveRemote;
    const QString name = kernelName(entry.device, m_devRoot);
    if (name.startsWith(QLatin1String("sr")) || name.startsWith(QLatin1String("scd"))
        || entry.fsType == QLatin1String("iso9660") || entry.fsType == QLatin1String("udf"))
        return kDriveCdRom;
    if (entry.fsType == QLatin1String("tmpfs") || entry.fsType == QLatin1String("ramfs"))
        return kDriveRamDisk;
    if (!name.isEmpty()) {
        const QString disk = diskOfDevice(name);
        if (!disk.isEmpty()) {
            QFile flag(m_sysRoot + QStringLiteral("/block/") + disk + QStringLiteral("/removable"));
            if (flag.open(QIODevice::ReadOnly) && flag.read(1) == "1")
                return kDriveRemovable;
        }
    }
    return kDriveFixed;
}

QList<Volume> LinuxVolumes::list()
{
    return table().volumes;
}

std::optional<Volume> LinuxVolumes::volumeOf(const QString& path)
{
    if (!path.startsWith(QLatin1Char('/')))
        return std::nullopt;
    if (auto volume = volumeHolding(table().volumes, path))
        return volume;
    return volumeFromPath(path);
}

namespace {

// A few file systems by their statfs magic number, for a volume the mount table does not name.
QString fsTypeOfMagic(qint64 magic)
{
    struct Known
    {
        qint64 magic;
        const char* name;
    };
    static constexpr Known kKnown[] = {
        {0xEF53, "ext4"}, // ext2, ext3 and ext4 share it
        {0x9123683E, "btrfs"},
        {0x58465342, "xfs"},
        {0x4D44, "vfat"},
        {0x2011BAB0, "exfat"},
        {0x5346544E, "ntfs"},
        {0x01021994, "tmpfs"},
        {0x858458F6, "ramfs"},
        {0x794C7630, "overlay"},
        {0x9660, "iso9660"},
        {0x15013346, "udf"},
        {0x6969, "nfs"},
        {0xFF534D42, "cifs"},
        {0xFE534D42, "smb3"},
        {0x65735546, "fuse"},
    };
    for (const Known& known : kKnown) {
        if (known.magic == magic)
            return QString::fromLatin1(known.name);
    }
    return {};
}

QString parentOf(const QString& path)
{
    const qsizetype slash = path.lastIndexOf(QLatin1Char('/'));
    return slash <= 0 ? QStringLiteral("/") : path.left(slash);
}

} // namespace

std::optional<Volume> LinuxVolumes::volumeFromPath(const QString& path) const
{
    // The nearest existing folder: a destination file does not exist before the copy.
    QString at = QDir::cleanPath(path);
    struct stat st;
    while (::stat(QFile::encodeName(at).constData(), &st) != 0 || !S_ISDIR(st.st_mode)) {
        if (at == QLatin1String("/"))
            return std::nullopt;
        at = parentOf(at);
    }
    // Up to the highest folder on the same device: the root of that file system as this process sees it.
    const dev_t device = st.st_dev;
    while (at != QLatin1String("/")) {
        const QString parent = parentOf(at);
        if (::stat(QFile::encodeName(parent).constData(), &st) != 0 || st.st_dev != device)
            break;
        at = parent;
    }
    MountEntry entry;
    entry.mountPoint = at;
    struct statfs fs;
    if (::statfs(QFile::encodeName(at).constData(), &fs) == 0)
        entry.fsType = fsTypeOfMagic(qint64(fs.f_type));
    // sysfs names the block device behind a device number: DEVNAME=sda1 in its uevent.
    QFile uevent(m_sysRoot + QStringLiteral("/dev/block/%1:%2/uevent").arg(major(device)).arg(minor(device)));
    if (uevent.open(QIODevice::ReadOnly)) {
        for (const QByteArray& line : uevent.readAll().split('\n')) {
            if (line.startsWith("DEVNAME="))
                entry.device = QStringLiteral("/dev/") + QString::fromUtf8(line.mid(8)).trimmed();
        }
    }
    return Volume{entry.mountPoint, entry.device, entry.fsType, classify(entry)};
}

std::optional<VolumeSpace> LinuxVolumes::space(const QString& mountPoint)
{
    struct statvfs vfs;
    if (::statvfs(QFile::encodeName(mountPoint).constData(), &vfs) != 0)
        return std::nullopt;
    VolumeSpace s;
    const quint64 fragment = vfs.f_frsize ? vfs.f_frsize : vfs.f_bsize;
    if (fragment == 0)
        return std::nullopt;
    s.totalBytes = quint64(vfs.f_blocks) * fragment;
    s.freeBytes = quint64(vfs.f_bavail) * fragment;
    s.totalFreeBytes = quint64(vfs.f_bfree) * fragment;
    s.bytesPerSector = static_cast<quint32>(fragment);
    const quint64 perCluster = vfs.f_bsize >= fragment ? vfs.f_bsize / fragment : 1;
    s.sectorsPerCluster = static_cast<quint32>(perCluster ? perCluster : 1);
    const quint64 clusterBytes = fragment * s.sectorsPerCluster;
    s.totalClusters = s.totalBytes / clusterBytes;
    s.freeClusters = s.totalFreeBytes / clusterBytes;
    return s;
}

QString LinuxVolumes::udevName(const QString& folder, const QString& device) const
{
    const QString wanted = kernelName(device, m_devRoot);
    if (wanted.isEmpty())
        return {};
    QDir dir(m_devRoot + QStringLiteral("/disk/") + folder);
    const QFileInfoList links = dir.entryInfoList(QDir::System | QDir::Files | QDir::NoDotAndDotDot);
    for (const QFileInfo& link : links) {
        if (!link.isSymLink() || QFileInfo(link.symLinkTarget()).fileName() != wanted)
            continue;
        // udev writes unsafe characters as \xNN.
        const QByteArray raw = QFile::encodeName(link.fileName());
        QByteArray name;
        for (qsizetype i = 0; i < raw.size(); ++i) {
            if (raw.at(i) == '\\' && i + 3 < raw.size() && raw.at(i + 1) == 'x') {
                bool ok = false;
                const int value = raw.mid(i + 2, 2).toInt(&ok, 16);
                if (ok) {
                    name += static_cast<char>(value);
                    i += 3;
                    continue;
                }
            }
            name += raw.at(i);
        }
        return QString::fromUtf8(name);
    }
    return {};
}

std::optional<VolumeIdentity> LinuxVolumes::identity(const QString& mountPoint)
{
    std::optional<MountEntry> found;
    for (const MountEntry& entry : table().entries) {
        if (entry.mountPoint == mountPoint)
            found = entry; // the last one is the visible one
    }
    if (!found && !volumeHolding(table().volumes, mountPoint)) {
        // A root the table does not cover: what the path itself tells.
        const auto volume = volumeFromPath(mountPoint);
        if (volume && volume->mountPoint == mountPoint)
            found = MountEntry{volume->mountPoint, volume->device, volume->fsType};
    }
    if (!found)
        return std::nullopt;
    VolumeIdentity id;
    id.fsName = found->fsType;
    id.label = udevName(QStringLiteral("by-label"), found->device);
    id.serial = serialFromUuid(udevName(QStringLiteral("by-uuid"), found->device));
    if ((id.label.isEmpty() || id.serial == 0) && found->device.startsWith(QLatin1String("/dev/"))) {
        // O_NONBLOCK: an optical drive without a disc must answer at once.
        const int fd = ::open(QFile::encodeName(m_devRoot + found->device.mid(4)).constData(),
            O_RDONLY | O_NONBLOCK | O_CLOEXEC);
        if (fd >= 0) {
            QByteArray head(kSuperblockBytes, '\0');
            qsizetype have = 0;
            while (have < head.size()) {
                const ssize_t got = ::pread(fd, head.data() + have, size_t(head.size() - have), have);
                if (got <= 0)
                    break;
                have += got;
            }
            ::close(fd);
            head.truncate(have);
            const SuperblockFacts facts = readSuperblock(head);
            if (facts.recognised) {
                if (id.label.isEmpty())
                    id.label = facts.label;
                if (id.serial == 0)
                    id.serial = facts.serial;
            }
        }
    }
    return id;
}

namespace {

// Opening a folder reads nothing of the medium; reading its first entry does, and fails (EIO, ENOMEDIUM)
// when the medium is unreadable.
bool canReadFirstEntry(const QString& folder)
{
    DIR* dir = ::opendir(QFile::encodeName(folder).constData());
    if (!dir)
        return false;
    errno = 0;
    const dirent* entry = ::readdir(dir);
    const bool ok = entry != nullptr || errno == 0;
    ::closedir(dir);
    return ok;
}

} // namespace

bool LinuxVolumes::isReady(const QString& mountPoint)
{
    QString device;
    for (const MountEntry& entry : table().entries) {
        if (entry.mountPoint == mountPoint)
            device = entry.device; // the last one is the visible one
    }
    const QString name = kernelName(device, m_devRoot);
    if ((name.startsWith(QLatin1String("sr")) || name.startsWith(QLatin1String("scd")))
        && discStatus(m_devRoot + QLatin1Char('/') + name) == DiscStatus::Absent)
        return false;
    return canReadFirstEntry(mountPoint);
}

bool LinuxVolumes::setLabel(const QString& mountPoint, const QString& label)
{
    Q_UNUSED(mountPoint);
    Q_UNUSED(label);
    return false;
}

} // namespace vindaro::platform
