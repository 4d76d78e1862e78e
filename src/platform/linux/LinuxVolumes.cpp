#include "LinuxVolumes.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSet>

#include <dirent.h>
#include <fcntl.h>
#include <sys/statvfs.h>
#include <unistd.h>

namespace vindaro::platform {

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

namespace {

QList<MountEntry> readMountTable(const QString& path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return {};
    // mountinfo reports a size of 0: read until the end rather than by size.
    return parseMountInfo(QString::fromUtf8(file.readAll()));
}

} // namespace

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
    QList<Volume> volumes;
    for (const MountEntry& entry : readMountTable(m_mountInfoPath)) {
        // Helpers the kernel mounts below /proc and /sys (cgroup trees, binfmt) are no drive whatever
        // their type.
        if (isPseudoFileSystem(entry.fsType) || entry.mountPoint.startsWith(QLatin1String("/proc/"))
            || entry.mountPoint.startsWith(QLatin1String("/sys/")))
            continue;
        Volume volume{entry.mountPoint, entry.device, entry.fsType, classify(entry)};
        // A file bind-mounted over another (containers' /etc/hosts) is no drive. Remote mounts are not
        // examined: a stat on a dead server can hang.
        if (volume.kind != kDriveRemote && !QFileInfo(entry.mountPoint).isDir())
            continue;
        // A later mount on the same point hides the earlier one.
        bool replaced = false;
        for (Volume& known : volumes) {
            if (known.mountPoint == volume.mountPoint) {
                known = volume;
                replaced = true;
                break;
            }
        }
        if (!replaced)
            volumes.append(volume);
    }
    return volumes;
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
    for (const MountEntry& entry : readMountTable(m_mountInfoPath)) {
        if (entry.mountPoint == mountPoint)
            found = entry; // the last one is the visible one
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

bool LinuxVolumes::isReady(const QString& mountPoint)
{
    DIR* dir = ::opendir(QFile::encodeName(mountPoint).constData());
    if (!dir)
        return false;
    ::closedir(dir);
    return true;
}

bool LinuxVolumes::setLabel(const QString& mountPoint, const QString& label)
{
    Q_UNUSED(mountPoint);
    Q_UNUSED(label);
    return false;
}

} // namespace vindaro::platform
