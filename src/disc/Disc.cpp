#include "Disc.h"

#include "Sectors.h"
#include "SenseDecision.h"

#include <QByteArray>
#include <QFile>
#include <QLoggingCategory>

#include <cdio/bytesex.h>
#include <cdio/cdio.h>
#include <cdio/iso9660.h>
#include <cdio/logging.h>
#include <cdio/memory.h>
#include <cdio/mmc.h>
#include <cdio/mmc_ll_cmds.h>
#include <cdio/xa.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstring>
#include <fcntl.h>
#include <functional>
#include <linux/cdrom.h>
#include <mutex>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace vindaro::disc {

namespace {

Q_LOGGING_CATEGORY(lcDisc, "vindaro.disc", QtWarningMsg)

// libcdio writes its warnings to stderr by default; they belong in the debug log, not in a user's terminal.
void libraryMessage(cdio_log_level_t level, const char message[])
{
    qCDebug(lcDisc) << "libcdio" << int(level) << message;
}

void quietLibrary()
{
    static std::once_flag once;
    std::call_once(once, [] { cdio_log_set_handler(libraryMessage); });
}

constexpr char kPoison = '\xA5'; // fills a buffer before a library read: a sector left so was never read

QString systemText(int error)
{
    return QString::fromLocal8Bit(std::strerror(error));
}

DiscFailure failureOf(int error, QString message)
{
    return DiscFailure{error, std::move(message)};
}

DiscFailure driveOpenFailure(const QString& device, int error)
{
    switch (error) {
    case EACCES:
    case EPERM:
        return failureOf(error,
            QStringLiteral("无法打开光驱“%1”：没有访问该设备的权限，请检查光驱设备的访问权限"
                           "（通常要把用户加入 cdrom 组）。")
                .arg(device));
    case ENOENT:
    case ENXIO:
    case ENODEV:
        return failureOf(error, QStringLiteral("无法打开光驱“%1”：设备不存在。").arg(device));
    case ENOMEDIUM:
        return failureOf(
            error, QStringLiteral("无法读取光驱“%1”：光驱中没有光盘，请检查光驱中是否有光盘。").arg(device));
    case EBUSY:
        return failureOf(error, QStringLiteral("无法打开光驱“%1”：光驱正被其他程序独占使用。").arg(device));
    default:
        return failureOf(error, QStringLiteral("无法打开光驱“%1”：%2").arg(device, systemText(error)));
    }
}

DiscFailure imageOpenFailure(const QString& image, int error)
{
    switch (error) {
    case ENOENT:
        return failureOf(error, QStringLiteral("无法打开光盘映像“%1”：文件不存在。").arg(image));
    case EACCES:
    case EPERM:
        return failureOf(error, QStringLiteral("无法打开光盘映像“%1”：没有读取权限。").arg(image));
    default:
        return failureOf(error, QStringLiteral("无法打开光盘映像“%1”：%2").arg(image, systemText(error)));
    }
}

// Opens `path` read-only and closes it again: what open() says is the errno a library would lose.
int openError(const QString& path, int extraFlags = 0)
{
    int fd;
    do {
        fd = ::open(QFile::encodeName(path).constData(), O_RDONLY | O_CLOEXEC | extraFlags);
    } while (fd < 0 && errno == EINTR);
    if (fd < 0)
        return errno;
    ::close(fd);
    return 0;
}

// The drive's own answer whether it holds a disc; 0 when it does.
DiscFailure driveStatusFailure(const QString& device)
{
    int fd;
    do {
        fd = ::open(QFile::encodeName(device).constData(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    } while (fd < 0 && errno == EINTR);
    if (fd < 0)
        return driveOpenFailure(device, errno);
    const int status = ::ioctl(fd, CDROM_DRIVE_STATUS, INT_MAX); // INT_MAX: the drive, not a changer slot
    const int error = errno;
    ::close(fd);
    if (status < 0 && (error == ENOTTY || error == EINVAL))
        return failureOf(ENODEV, QStringLiteral("无法打开光驱“%1”：这个设备不是光驱。").arg(device));
    switch (status) {
    case CDS_NO_DISC:
    case CDS_TRAY_OPEN:
        return driveOpenFailure(device, ENOMEDIUM);
    case CDS_DRIVE_NOT_READY:
        return failureOf(
            ENOMEDIUM, QStringLiteral("无法读取光驱“%1”：光驱尚未就绪，请稍候再试。").arg(device));
    default:
        return {}; // CDS_DISC_OK, or a drive that does not say: reading will tell
    }
}

QString nameWithoutVersion(const char* raw)
{
    QString name
        = QString::fromUtf8(raw); // ISO 9660 names are ASCII; libcdio hands Joliet names over as UTF-8
    const qsizetype semicolon = name.lastIndexOf(QLatin1Char(';'));
    if (semicolon > 0)
        name.truncate(semicolon);
    if (name.size() > 1 && name.endsWith(QLatin1Char('.')))
        name.chop(1); // "README." is shown as "README"
    return name;
}

SectorMode modeOf(const iso9660_stat_t& stat)
{
    if (!stat.b_xa)
        return SectorMode::Mode1;
    const unsigned attributes = uint16_from_be(stat.xa.attributes);
    if (attributes & XA_ATTR_MODE2FORM2)
        return SectorMode::Form2;
    return (attributes & XA_ATTR_MODE2FORM1) ? SectorMode::Form1 : SectorMode::Mode1;
}

struct ListedEntry
{
    DiscEntry entry;
    QByteArray rawPath; // as the directory spells it, for the library's own look-ups below it
};

} // namespace

qint64 DiscEntry::length() const
{
    return isForm2() ? sectors * kForm2PayloadBytes : recordedBytes;
}

struct Disc::Handles
{
    CdIo_t* cdio = nullptr; // drives and images libcdio reads
    iso9660_t* iso = nullptr; // ISO images
    int binFd = -1; // a BIN/CUE image's .bin
    int superblock = 0; // 0 not read yet, 1 read, -1 none
    QByteArray buffer;

    ~Handles()
    {
        if (cdio)
            cdio_destroy(cdio);
        if (iso)
            iso9660_close(iso);
        if (binFd >= 0)
            ::close(binFd);
    }

    // The ISO 9660 volume descriptors (with Joliet, as the kernel would mount the disc); false when the disc
    // has no ISO 9660 file system that can be read.
    bool hasFileSystem()
    {
        if (superblock == 0 && cdio)
            superblock = iso9660_fs_read_superblock(cdio, ISO_EXTENSION_ALL) ? 1 : -1;
        return iso || superblock > 0;
    }

    CdioList_t* readFolder(const QByteArray& rawPath)
    {
        return iso ? iso9660_ifs_readdir(iso, rawPath.constData())
                   : iso9660_fs_readdir(cdio, rawPath.constData());
    }
};

namespace {

// The entries of one folder, "." and ".." left out; `readable` false when the folder cannot be read.
QList<ListedEntry> listFolder(Disc::Handles& handles, bool isoImage, const QByteArray& rawPath,
    const QString& shownPath, bool& readable)
{
    QList<ListedEntry> listed;
    CdioList_t* list = handles.readFolder(rawPath);
    readable = list != nullptr;
    if (!list)
        return listed;
    for (CdioListNode_t* node = _cdio_list_begin(list); node; node = _cdio_list_node_next(node)) {
        const auto* stat = static_cast<const iso9660_stat_t*>(_cdio_list_node_data(node));
        if (!stat || std::strcmp(stat->filename, ".") == 0 || std::strcmp(stat->filename, "..") == 0)
            continue;
        ListedEntry e;
        e.entry.path = shownPath + QLatin1Char('/') + nameWithoutVersion(stat->filename);
        e.entry.lsn = stat->lsn;
        e.entry.sectors = stat->secsize;
        e.entry.recordedBytes = stat->size;
        e.entry.folder = stat->type == iso9660_stat_s::_STAT_DIR;
        e.entry.mode = modeOf(*stat);
        // An ISO image holds 2,048 bytes a sector: a Form 2 flag there cannot be honoured.
        if (isoImage && e.entry.mode == SectorMode::Form2)
            e.entry.mode = SectorMode::Form1;
        e.rawPath = rawPath + (rawPath.endsWith('/') ? "" : "/") + QByteArray(stat->filename);
        listed.append(e);
    }
    iso9660_filelist_free(list);
    return listed;
}

} // namespace

Disc::Disc(QString source, DiscKind kind, std::unique_ptr<Handles> handles)
    : m_source(std::move(source))
    , m_kind(kind)
    , m(std::move(handles))
{
}

Disc::~Disc() = default;

std::unique_ptr<Disc> Disc::open(const QString& source, DiscFailure& failure)
{
    quietLibrary();
    failure = {};
    const DiscKind kind = discKindOf(source);
    auto handles = std::make_unique<Handles>();
    const QByteArray name = QFile::encodeName(source);
    qint64 endLsn = 0;
    switch (kind) {
    case DiscKind::None:
        if (const int error = openError(source)) {
            failure = imageOpenFailure(source, error);
        } else {
            failure = failureOf(EMEDIUMTYPE,
                QStringLiteral("无法打开“%1”：它既不是光驱，也不是可识别的光盘映像"
                               "（.cue、.bin、.nrg、.toc 或 .iso）。")
                    .arg(source));
        }
        return nullptr;
    case DiscKind::Drive:
        failure = driveStatusFailure(source);
        if (failure.error)
            return nullptr;
        handles->cdio = cdio_open(name.constData(), DRIVER_LINUX);
        if (!handles->cdio) {
            const int error = openError(source, O_NONBLOCK);
            failure = driveOpenFailure(source, error ? error : EIO);
            return nullptr;
        }
        break;
    case DiscKind::CueImage:
    case DiscKind::OtherImage: {
        if (const int error = openError(source)) {
            failure = imageOpenFailure(source, error);
            return nullptr;
        }
        const driver_id_t driver = kind == DiscKind::OtherImage
            ? (source.endsWith(QLatin1String(".toc"), Qt::CaseInsensitive) ? DRIVER_CDRDAO : DRIVER_NRG)
            : DRIVER_BINCUE;
        handles->cdio = cdio_open(name.constData(), driver);
        if (!handles->cdio) {
            failure = failureOf(
                EMEDIUMTYPE, QStringLiteral("无法打开光盘映像“%1”：不是可识别的光盘映像。").arg(source));
            return nullptr;
        }
        if (kind == DiscKind::CueImage) {
            // The .bin libcdio's driver reads: its sectors are read here directly, at the same offsets.
            const char* bin = cdio_get_arg(handles->cdio, "source");
            const QString binPath = bin ? QFile::decodeName(bin) : QString();
            do {
                handles->binFd = ::open(bin ? bin : "", O_RDONLY | O_CLOEXEC);
            } while (handles->binFd < 0 && errno == EINTR);
            if (handles->binFd < 0) {
                failure = imageOpenFailure(binPath, errno);
                return nullptr;
            }
        }
        break;
    }
    case DiscKind::IsoImage: {
        if (const int error = openError(source)) {
            failure = imageOpenFailure(source, error);
            return nullptr;
        }
        handles->iso = iso9660_open_ext(name.constData(), ISO_EXTENSION_ALL);
        if (!handles->iso) {
            failure = failureOf(EMEDIUMTYPE,
                QStringLiteral("无法打开光盘映像“%1”：没有可读的 ISO 9660 文件系统。").arg(source));
            return nullptr;
        }
        struct stat st
        {
        };
        endLsn = ::stat(name.constData(), &st) == 0 ? qint64(st.st_size) / kDataSectorBytes : 0;
        break;
    }
    }
    if (handles->cdio) {
        const lsn_t end = cdio_get_disc_last_lsn(handles->cdio);
        if (end == CDIO_INVALID_LSN || end <= 0) {
            failure = failureOf(
                EIO, QStringLiteral("无法读取光盘“%1”的目录（TOC），光盘可能已损坏。").arg(source));
            return nullptr;
        }
        endLsn = end;
    }
    auto disc = std::unique_ptr<Disc>(new Disc(source, kind, std::move(handles)));
    disc->m_endLsn = endLsn;
    return disc;
}

std::optional<DiscEntry> Disc::find(const QString& path, DiscFailure& failure)
{
    failure = {};
    if (!m->hasFileSystem()) {
        failure = failureOf(
            EMEDIUMTYPE, QStringLiteral("光盘“%1”上没有可读的 ISO 9660 文件系统。").arg(m_source));
        return std::nullopt;
    }
    const QStringList names = path.split(QLatin1Char('/'), Qt::SkipEmptyParts);
    DiscEntry found;
    found.folder = true; // the root
    found.path = QStringLiteral("/");
    QByteArray rawPath = "/";
    QString shownPath;
    for (qsizetype i = 0; i < names.size(); ++i) {
        bool readable = false;
        const QList<ListedEntry> listed
            = listFolder(*m, m_kind == DiscKind::IsoImage, rawPath, shownPath, readable);
        if (!readable) {
            failure = failureOf(EIO,
                QStringLiteral("无法读取光盘“%1”上的文件夹“%2”。")
                    .arg(m_source, shownPath.isEmpty() ? QStringLiteral("/") : shownPath));
            return std::nullopt;
        }
        const ListedEntry* match = nullptr;
        for (const ListedEntry& e : listed) {
            if (e.entry.path.section(QLatin1Char('/'), -1).compare(names[i], Qt::CaseInsensitive) == 0) {
                match = &e;
                break;
            }
        }
        if (!match || (i + 1 < names.size() && !match->entry.folder)) {
            failure = failureOf(ENOENT, QStringLiteral("光盘“%1”上没有文件“%2”。").arg(m_source, path));
            return std::nullopt;
        }
        found = match->entry;
        rawPath = match->rawPath;
        shownPath = match->entry.path;
    }
    return found;
}

QList<DiscEntry> Disc::entries()
{
    QList<DiscEntry> all;
    if (!m->hasFileSystem())
        return all;
    // Depth first; a folder whose extent was seen already (a damaged directory can loop) is not entered.
    constexpr int kMaxDepth = 32;
    QList<qint64> visited;
    const std::function<void(const QByteArray&, const QString&, int)> walk
        = [&](const QByteArray& rawPath, const QString& shownPath, int depth) {
              bool readable = false;
              const QList<ListedEntry> listed
                  = listFolder(*m, m_kind == DiscKind::IsoImage, rawPath, shownPath, readable);
              for (const ListedEntry& e : listed) {
                  all.append(e.entry);
                  if (e.entry.folder && depth < kMaxDepth && !visited.contains(e.entry.lsn)) {
                      visited.append(e.entry.lsn);
                      walk(e.rawPath, e.entry.path, depth + 1);
                  }
              }
          };
    walk("/", QString(), 0);
    return all;
}

QList<DiscTrack> Disc::tracks()
{
    QList<DiscTrack> tracks;
    if (!m->cdio) {
        tracks.append(DiscTrack{1, 0, m_endLsn - 1, QStringLiteral("数据（Mode 1）")});
        return tracks;
    }
    const track_t first = cdio_get_first_track_num(m->cdio);
    const track_t count = cdio_get_num_tracks(m->cdio);
    if (first == CDIO_INVALID_TRACK || count == CDIO_INVALID_TRACK)
        return tracks;
    for (int t = first; t < first + count; ++t) {
        const auto track = static_cast<track_t>(t);
        QString format;
        switch (cdio_get_track_format(m->cdio, track)) {
        case TRACK_FORMAT_AUDIO:
            format = QStringLiteral("音频");
            break;
        case TRACK_FORMAT_DATA:
            format = QStringLiteral("数据（Mode 1）");
            break;
        case TRACK_FORMAT_XA:
            format = QStringLiteral("数据（Mode 2 XA）");
            break;
        case TRACK_FORMAT_CDI:
            format = QStringLiteral("CD-i");
            break;
        default:
            format = QStringLiteral("未知");
            break;
        }
        tracks.append(DiscTrack{
            t, cdio_get_track_lsn(m->cdio, track), cdio_get_track_last_lsn(m->cdio, track), format});
    }
    return tracks;
}

QString Disc::volumeLabel()
{
    char* id = nullptr;
    if (m->iso) {
        if (!iso9660_ifs_get_volume_id(m->iso, &id))
            id = nullptr;
    } else if (m->cdio && m->hasFileSystem()) {
        iso9660_pvd_t pvd;
        if (iso9660_fs_read_pvd(m->cdio, &pvd))
            id = iso9660_get_volume_id(&pvd);
    }
    const QString label = id ? QString::fromLatin1(id).trimmed() : QString();
    cdio_free(id);
    return label;
}

SectorRead Disc::bounded(qint64 lsn, qint64& count) const
{
    SectorRead past;
    if (lsn < 0 || lsn >= m_endLsn) {
        count = 0;
        past.error = EIO;
        past.reason = QStringLiteral("超出光盘末尾（光盘只到第%1扇区）").arg(m_endLsn - 1);
        return past;
    }
    count = std::min(count, m_endLsn - lsn);
    return past;
}

SectorRead Disc::readMode2(qint64 lsn, qint64 count, char* out)
{
    return readSectors(lsn, count, out, true);
}

SectorRead Disc::readData(qint64 lsn, qint64 count, char* out)
{
    return readSectors(lsn, count, out, false);
}

SectorRead Disc::readSectors(qint64 lsn, qint64 count, char* out, bool mode2)
{
    const qint64 asked = count;
    SectorRead result = bounded(lsn, count);
    if (result.error)
        return result;
    switch (m_kind) {
    case DiscKind::Drive:
        result = readDriveSectors(lsn, count, out, mode2);
        break;
    case DiscKind::CueImage:
        result = readImageSectors(lsn, count, out, mode2);
        break;
    case DiscKind::OtherImage:
        result = readLibraryImageSectors(lsn, count, out, mode2);
        break;
    case DiscKind::IsoImage:
        if (mode2) {
            result = SectorRead{0, EOPNOTSUPP, QStringLiteral("ISO 映像没有 Mode 2 扇区")};
        } else {
            const long bytes = iso9660_iso_seek_read(m->iso, out, lsn_t(lsn), long(count));
            result.sectors = std::max<qint64>(0, bytes) / kDataSectorBytes;
            if (result.sectors < count) {
                result.error = EIO;
                result.reason = QStringLiteral("映像文件读取失败");
            }
        }
        break;
    case DiscKind::None:
        break;
    }
    if (!result.error && result.sectors < asked) {
        qint64 rest = asked - result.sectors;
        result = SectorRead{result.sectors, EIO, bounded(lsn + result.sectors, rest).reason};
    }
    return result;
}

SectorRead readThroughDrive(qint64 lsn, qint64 count, qint64 blockBytes, char* out,
    const DriveCommand& readCd, const std::function<SenseData()>& lastSense, qint64& endLsn)
{
    qint64 done = 0;
    while (done < count) {
        const qint64 n = std::min(kMaxSectorsPerCommand, count - done);
        if (readCd(lsn + done, n, out + done * blockBytes)) {
            done += n;
            continue;
        }
        // One sector at a time from here, so the first bad one is known and each failure judged.
        for (qint64 i = 0; i < n; ++i) {
            const qint64 at = lsn + done;
            for (int attempt = 0;; ++attempt) {
                if (readCd(at, 1, out + done * blockBytes))
                    break;
                const SenseData sense = lastSense();
                const ReadVerdict verdict = readVerdict(sense);
                if (verdict.error == 0)
                    break; // corrected by the drive: the data is there, its EDC decides
                if (attempt < verdict.retries)
                    continue;
                if (verdict.failure == ReadFailure::OutOfRange)
                    endLsn = std::min(endLsn, at); // nothing after it reads either
                return SectorRead{done, verdict.error, senseText(sense)};
            }
            ++done;
        }
    }
    return SectorRead{done, 0, {}};
}

SectorRead Disc::readDriveSectors(qint64 lsn, qint64 count, char* out, bool mode2)
{
    // READ CD of any sector type. For Mode 2 with the sub-header, the user data and the EDC/ECC field:
    // 8 + 2,324 + 4 bytes of a Form 2 sector, 8 + 2,048 + 280 of a Form 1 one; for data the 2,048 bytes of
    // user data alone. A sector of another kind does not fit the block size and fails.
    const uint16_t blockBytes = mode2 ? uint16_t(kMode2SectorBytes) : uint16_t(kDataSectorBytes);
    const DriveCommand readCd = [&](qint64 at, qint64 n, char* to) {
        return mmc_read_cd(m->cdio, to, lsn_t(at), CDIO_MMC_READ_TYPE_ANY, false, false,
                   mode2 ? uint8_t(2) : uint8_t(0), true, mode2, 0, 0, blockBytes, uint32_t(n))
            == DRIVER_OP_SUCCESS;
    };
    const auto lastSense = [&] {
        cdio_mmc_request_sense_t* raw = nullptr;
        const int length = mmc_last_cmd_sense(m->cdio, &raw);
        const SenseData sense
            = raw && length > 0 ? parseSense(reinterpret_cast<const quint8*>(raw), length) : SenseData{};
        cdio_free(raw);
        return sense;
    };
    return readThroughDrive(lsn, count, blockBytes, out, readCd, lastSense, m_endLsn);
}

SectorRead Disc::readImageSectors(qint64 lsn, qint64 count, char* out, bool mode2)
{
    // Reads whole sectors of the .bin into `raw`; the number read, with the errno of what stopped it.
    const auto readRaw = [fd = m->binFd](qint64 from, qint64 sectors, char* raw, int& error) {
        const qint64 bytes = sectors * kRawSectorBytes;
        qint64 got = 0;
        error = 0;
        while (got < bytes) {
            const ssize_t n
                = ::pread(fd, raw + got, size_t(bytes - got), off_t(from * kRawSectorBytes + got));
            if (n < 0 && errno == EINTR)
                continue;
            if (n <= 0) {
                error = n < 0 ? errno : 0;
                break;
            }
            got += n;
        }
        return got / kRawSectorBytes;
    };
    if (m->buffer.size() < count * kRawSectorBytes)
        m->buffer.resize(count * kRawSectorBytes);
    char* raw = m->buffer.data();
    int error = 0;
    qint64 whole = readRaw(lsn, count, raw, error);
    // A read of many sectors fails as a whole where one of them cannot be read: the rest one by one, so the
    // sectors before the bad one are kept and the bad one is named.
    while (whole < count && readRaw(lsn + whole, 1, raw + whole * kRawSectorBytes, error) == 1)
        ++whole;
    for (qint64 i = 0; i < whole; ++i) {
        const char* sector = raw + i * kRawSectorBytes;
        if (mode2) {
            std::memcpy(out + i * kMode2SectorBytes, sector + 16, size_t(kMode2SectorBytes));
            continue;
        }
        qint64 offset = 0;
        switch (inspectRawDataSector(sector, offset)) {
        case DataSector::Good:
            std::memcpy(out + i * kDataSectorBytes, sector + offset, size_t(kDataSectorBytes));
            break;
        case DataSector::EdcMismatch:
            return SectorRead{i, EIO, QStringLiteral("EDC 校验错误")};
        case DataSector::NotData:
            return SectorRead{i, EIO, QStringLiteral("不是数据扇区")};
        }
    }
    if (whole == count)
        return SectorRead{count, 0, {}};
    if (error)
        return SectorRead{whole, error, QStringLiteral("映像文件读取失败：") + systemText(error)};
    return SectorRead{whole, EIO, QStringLiteral("映像文件在此处提前结束")};
}

SectorRead Disc::readLibraryImageSectors(qint64 lsn, qint64 count, char* out, bool mode2)
{
    // Sector by sector, each buffer filled with a mark first: an image driver may report a read it did
    // not make as a success, and a sector still holding the mark was not read.
    const qint64 blockBytes = mode2 ? kMode2SectorBytes : kDataSectorBytes;
    for (qint64 i = 0; i < count; ++i) {
        char* to = out + i * blockBytes;
        std::memset(to, kPoison, size_t(blockBytes));
        const driver_return_code_t rc = mode2
            ? cdio_read_mode2_sectors(m->cdio, to, lsn_t(lsn + i), true, 1)
            : cdio_read_data_sectors(m->cdio, to, lsn_t(lsn + i), uint16_t(kDataSectorBytes), 1);
        const bool untouched = std::all_of(to, to + blockBytes, [](char c) { return c == kPoison; });
        if (rc != DRIVER_OP_SUCCESS || untouched)
            return SectorRead{i, EIO, QStringLiteral("映像文件读取失败")};
    }
    return SectorRead{count, 0, {}};
}

} // namespace vindaro::disc
