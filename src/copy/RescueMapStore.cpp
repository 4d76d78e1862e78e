#include "RescueMapStore.h"

#include "FileResumeStore.h"
#include "RescueMessages.h"

#include <QCryptographicHash>
#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <utility>

namespace vindaro::copy {

FileRescueMapStore::FileRescueMapStore(QString creator, QString folder)
    : m_creator(std::move(creator))
    , m_folder(folder.isEmpty() ? defaultFolder() : std::move(folder))
{
}

QString FileRescueMapStore::defaultFolder()
{
    // The resume records' folder, so that both live and go together.
    return QFileInfo(FileResumeStore::defaultStorePath()).absolutePath() + QStringLiteral("/maps");
}

QString FileRescueMapStore::pathFor(const QString& destination) const
{
    const QByteArray key = FileResumeStore::keyFor(destination).toUtf8();
    const QByteArray hash = QCryptographicHash::hash(key, QCryptographicHash::Sha1).toHex();
    return m_folder + QLatin1Char('/') + QString::fromLatin1(hash) + QStringLiteral(".map");
}

QString FileRescueMapStore::errorString() const
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_errorString;
}

bool FileRescueMapStore::load(const QString& destination, RescueMap& map, MapfileStatus* status)
{
    if (destination.isEmpty())
        return false;
    const std::lock_guard<std::mutex> lock(m_mutex);
    const MapfileResult read = readMapfile(pathFor(destination), -1);
    if (!read.ok())
        return false;
    map = read.map;
    if (status)
        *status = read.status;
    return true;
}

bool FileRescueMapStore::save(
    const QString& destination, const RescueMap& map, std::optional<MapfileStatus> status)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_errorString.clear();
    if (destination.isEmpty()) {
        m_errorString = msg::mapStoreNoDestination();
        return false;
    }
    if (!QDir().mkpath(m_folder)) {
        m_errorString = msg::mapStoreFolderFailed(m_folder);
        return false;
    }
    MapfileHeader header;
    header.creator = m_creator;
    header.notes << QStringLiteral("Destination: ") + FileResumeStore::keyFor(destination);
    header.savedAt = QDateTime::currentDateTime();
    return writeMapfile(pathFor(destination), map, header, m_errorString, status);
}

void FileRescueMapStore::remove(const QString& destination)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (!destination.isEmpty())
        QFile::remove(pathFor(destination));
}

} // namespace vindaro::copy
