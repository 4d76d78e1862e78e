#include "FileResumeStore.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonDocument>
#include <QJsonObject>
#include <QJsonValue>
#include <QSaveFile>

#include <limits>
#include <sys/stat.h>
#include <utility>

namespace vindaro::copy {

namespace {

// {"format": "vindaro-resume", "version": 1,
//  "records": {"/abs/dest.dat": {"continuePosition": 5000000000, "copiedPosition": ..., "estimatedSeconds":
//  ...,
//                                "elapsedSeconds": ..., "speedKBps": ..., "savedUtc":
//                                "2024-05-01T10:00:00Z"}}}
// Positions are JSON integers written in full (no detour through double).
const QString kFormatKey = QStringLiteral("format");
const QString kFormatName = QStringLiteral("vindaro-resume");
const QString kVersionKey = QStringLiteral("version");
constexpr int kVersion = 1;
const QString kRecordsKey = QStringLiteral("records");
const QString kContinuePosition = QStringLiteral("continuePosition");
const QString kCopiedPosition = QStringLiteral("copiedPosition");
const QString kEstimatedSeconds = QStringLiteral("estimatedSeconds");
const QString kElapsedSeconds = QStringLiteral("elapsedSeconds");
const QString kSpeedKBps = QStringLiteral("speedKBps");
const QString kSavedUtc = QStringLiteral("savedUtc");
// Only in a merge's record ("merge": true, "writePosition": ...); a record without them is a plain copy's,
// as every record written before merges were recorded.
const QString kMerge = QStringLiteral("merge");
const QString kWritePosition = QStringLiteral("writePosition");

// An integer field within [low, high]; false for a missing, fractional or out-of-range value.
bool readInteger(const QJsonObject& object, const QString& key, qint64 low, qint64 high, qint64& out)
{
    const QJsonValue value = object.value(key);
    if (!value.isDouble())
        return false;
    const qint64 n = value.toInteger(0);
    if (n != value.toInteger(1)) // toInteger() falls back to its default for a non-integral number
        return false;
    if (n < low || n > high)
        return false;
    out = n;
    return true;
}

bool readIntField(const QJsonObject& object, const QString& key, int& out)
{
    qint64 n = 0;
    if (!readInteger(object, key, std::numeric_limits<int>::min(), std::numeric_limits<int>::max(), n))
        return false;
    out = int(n);
    return true;
}

// False for a record that is damaged or older than the age limit at `now`.
bool parseRecord(const QJsonValue& value, const QDateTime& now, ResumeRecord& record)
{
    if (!value.isObject())
        return false;
    const QJsonObject object = value.toObject();
    const QDateTime saved = QDateTime::fromString(object.value(kSavedUtc).toString(), Qt::ISODate);
    if (!saved.isValid() || saved.addDays(FileResumeStore::kMaxAgeDays) < now)
        return false;
    constexpr qint64 kMax = std::numeric_limits<qint64>::max();
    ResumeRecord parsed;
    if (!readInteger(object, kContinuePosition, 0, kMax, parsed.continuePosition)
        || !readInteger(object, kCopiedPosition, 0, kMax, parsed.copiedPosition)
        || !readIntField(object, kEstimatedSeconds, parsed.estimatedSeconds)
        || !readIntField(object, kElapsedSeconds, parsed.elapsedSeconds)
        || !readIntField(object, kSpeedKBps, parsed.speedKBps))
        return false;
    if (object.contains(kMerge)) {
        if (!object.value(kMerge).isBool())
            return false;
        parsed.merge = object.value(kMerge).toBool();
        if (parsed.merge && !readInteger(object, kWritePosition, 1, kMax, parsed.writePosition))
            return false; // a merge that does not say where it writes cannot be continued
    }
    record = parsed;
    return true;
}

QJsonObject recordObject(const ResumeRecord& record, const QDateTime& now)
{
    QJsonObject object;
    object.insert(kContinuePosition, QJsonValue(record.continuePosition));
    object.insert(kCopiedPosition, QJsonValue(record.copiedPosition));
    object.insert(kEstimatedSeconds, record.estimatedSeconds);
    object.insert(kElapsedSeconds, record.elapsedSeconds);
    object.insert(kSpeedKBps, record.speedKBps);
    object.insert(kSavedUtc, now.toUTC().toString(Qt::ISODate));
    if (record.merge) {
        object.insert(kMerge, true);
        object.insert(kWritePosition, QJsonValue(record.writePosition));
    }
    return object;
}

// The records worth keeping: damaged and expired ones are dropped.
QJsonObject liveRecords(const QJsonObject& records, const QDateTime& now)
{
    QJsonObject kept;
    for (auto it = records.constBegin(); it != records.constEnd(); ++it) {
        ResumeRecord ignored;
        if (parseRecord(it.value(), now, ignored))
            kept.insert(it.key(), it.value());
    }
    return kept;
}

// Writes the whole store through QSaveFile; on failure the previous file stays as it was.
bool writeStore(const QString& path, const QJsonObject& records, QString& errorString)
{
    QJsonObject root;
    root.insert(kFormatKey, kFormatName);
    root.insert(kVersionKey, kVersion);
    root.insert(kRecordsKey, records);
    const QByteArray bytes = QJsonDocument(root).toJson(QJsonDocument::Indented);

    const QString folder = QFileInfo(path).absolutePath();
    if (!QDir().mkpath(folder)) {
        errorString = QStringLiteral("无法创建文件夹“%1”，没有保存续拷记录。").arg(folder);
        return false;
    }
    // Unbuffered: a short write on a full disk shows in write()'s count. Buffered, Qt 6.4 drops the short
    // count while flushing at commit() and would rename a truncated store into place.
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Unbuffered) || file.write(bytes) != bytes.size()
        || file.size() != bytes.size() || !file.commit()) {
        errorString = QStringLiteral("无法写入续拷记录文件“%1”：%2").arg(path, file.errorString());
        file.cancelWriting();
        return false;
    }
    return true;
}

} // namespace

FileResumeStore::FileResumeStore(QString storePath, std::function<QDateTime()> now)
    : m_storePath(storePath.isEmpty() ? defaultStorePath() : std::move(storePath))
    , m_now(now ? std::move(now) : [] { return QDateTime::currentDateTimeUtc(); })
    , m_encodedStorePath(QFile::encodeName(m_storePath))
{
}

QString FileResumeStore::defaultStorePath()
{
    QString stateHome = qEnvironmentVariable("XDG_STATE_HOME");
    if (stateHome.isEmpty() || !QDir::isAbsolutePath(stateHome)) // relative values are to be ignored
        stateHome = QDir::homePath() + QStringLiteral("/.local/state");
    return QDir::cleanPath(stateHome + QStringLiteral("/vindaro/resume.json"));
}

QString FileResumeStore::keyFor(const QString& destination)
{
    if (destination.isEmpty())
        return {};
    if (QDir::isAbsolutePath(destination))
        return QDir::cleanPath(destination); // what QFileInfo would answer, without its file engine
    return QDir::cleanPath(QFileInfo(destination).absoluteFilePath());
}

bool FileResumeStore::stampOf(const QByteArray& path, FileStamp& stamp)
{
    struct stat st
    {
    };
    if (::stat(path.constData(), &st) != 0)
        return false;
    stamp.device = quint64(st.st_dev);
    stamp.inode = quint64(st.st_ino);
    stamp.size = qint64(st.st_size);
    stamp.modifiedNs = qint64(st.st_mtim.tv_sec) * 1'000'000'000 + st.st_mtim.tv_nsec;
    stamp.changedNs = qint64(st.st_ctim.tv_sec) * 1'000'000'000 + st.st_ctim.tv_nsec;
    return true;
}

const FileResumeStore::Contents& FileResumeStore::contents()
{
    FileStamp stamp;
    if (!stampOf(m_encodedStorePath, stamp)) {
        m_kept = false;
        m_contents = Contents{};
        return m_contents;
    }
    if (m_kept && stamp == m_stamp)
        return m_contents;

    // Taken before the read: a file replaced or written meanwhile has another stamp by the next call, which
    // then reads it again. Unreadable files are not kept, so every call tries them anew.
    m_kept = false;
    m_contents = Contents{};
    ++m_fileReads;
    QFile file(m_storePath);
    if (!file.open(QIODevice::ReadOnly)) {
        m_contents.state = State::Unreadable;
        return m_contents;
    }
    if (file.size() > kMaxStoreBytes) {
        m_contents.state = State::Damaged;
    } else {
        const QByteArray bytes = file.readAll();
        if (file.error() != QFileDevice::NoError) {
            m_contents.state = State::Unreadable;
            return m_contents;
        }
        QJsonParseError error{};
        const QJsonDocument document = QJsonDocument::fromJson(bytes, &error);
        const QJsonObject root = document.object();
        if (error.error != QJsonParseError::NoError || !document.isObject()
            || root.value(kFormatKey).toString() != kFormatName
            || root.value(kVersionKey).toInt(-1) != kVersion || !root.value(kRecordsKey).isObject()) {
            m_contents.state = State::Damaged;
        } else {
            m_contents.state = State::Valid;
            m_contents.records = root.value(kRecordsKey).toObject();
        }
    }
    m_stamp = stamp;
    m_kept = true;
    return m_contents;
}

bool FileResumeStore::write(const QJsonObject& records)
{
    // Not kept: another run may replace the file between our commit and a stat of it, and its records
    // must not be taken for ours. The next call reads the file once.
    m_kept = false;
    return writeStore(m_storePath, records, m_errorString);
}

bool FileResumeStore::load(const QString& destination, ResumeRecord& record)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    const QString key = keyFor(destination);
    if (key.isEmpty())
        return false;
    const Contents& store = contents();
    if (store.state != State::Valid)
        return false;
    return parseRecord(store.records.value(key), m_now(), record);
}

bool FileResumeStore::save(const QString& destination, const ResumeRecord& record)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_errorString.clear();
    const QString key = keyFor(destination);
    if (key.isEmpty()) {
        m_errorString = QStringLiteral("续拷记录没有目标文件路径。");
        return false;
    }
    const Contents& store = contents();
    if (store.state == State::Unreadable) {
        m_errorString = QStringLiteral("无法读取续拷记录文件“%1”，没有保存续拷记录。").arg(m_storePath);
        return false;
    }
    if (store.state == State::Damaged) {
        // Keep the damaged file for a look before the fresh store replaces it.
        const QString aside = damagedCopyPath();
        QFile::remove(aside);
        if (!QFile::copy(m_storePath, aside)) {
            m_errorString = QStringLiteral("续拷记录文件“%1”已损坏，且无法备份到“%2”，没有保存续拷记录。")
                                .arg(m_storePath, aside);
            return false;
        }
    }
    const QDateTime now = m_now();
    QJsonObject records = liveRecords(store.records, now);
    records.insert(key, recordObject(record, now));

    return write(records);
}

void FileResumeStore::remove(const QString& destination)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_errorString.clear();
    if (destination.isEmpty())
        return;
    const Contents& store = contents();
    if (store.state != State::Valid || store.records.isEmpty()) // the usual case in a batch: no key made
        return;
    const QString key = keyFor(destination);
    if (!store.records.contains(key))
        return;
    const QDateTime now = m_now();
    QJsonObject records = liveRecords(store.records, now);
    records.remove(key);

    write(records);
}

} // namespace vindaro::copy
