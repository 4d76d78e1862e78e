#include "FileListModel.h"

#include "FileListTexts.h"
#include "FileTexts.h"
#include "FolderScanner.h"

#include <QCoreApplication>
#include <QFile>
#include <QPointer>
#include <QSet>
#include <QThread>

namespace vindaro::files {

namespace {

// The list's own readability test: blanks trimmed, one closing "/" removed, and the file opens for reading.
bool opensForReading(const QString& path)
{
    QFile file(existenceProbePath(path));
    return file.open(QIODevice::ReadOnly);
}

} // namespace

FileListModel::FileListModel(FileSystem& fileSystem, QObject* parent)
    : QAbstractListModel(parent)
    , m_fs(fileSystem)
    , m_filesInfo(kResetFilesInfo)
{
}

FileListModel::~FileListModel() = default;

int FileListModel::rowCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : static_cast<int>(m_entries.size());
}

QVariant FileListModel::data(const QModelIndex& index, int role) const
{
    if (!index.isValid() || index.row() < 0 || index.row() >= m_entries.size())
        return {};
    if (role == Qt::DisplayRole || role == Qt::EditRole || role == Qt::ToolTipRole)
        return m_entries.at(index.row());
    return {};
}

void FileListModel::setCurrentText(const QString& text)
{
    setCurrent(text, static_cast<int>(m_entries.indexOf(text)));
}

void FileListModel::setCurrent(const QString& text, int row)
{
    if (text == m_currentText)
        return;
    m_currentText = text;
    emit currentTextChanged(text, row);
}

void FileListModel::setFilesInfo(const QString& text)
{
    m_filesInfo = text;
    emit filesInfoChanged(text);
}

void FileListModel::appendEntries(const QStringList& paths)
{
    if (paths.isEmpty())
        return;
    const int first = static_cast<int>(m_entries.size());
    beginInsertRows(QModelIndex(), first, first + static_cast<int>(paths.size()) - 1);
    m_entries += paths;
    endInsertRows();
}

qint64 FileListModel::totalBytes() const
{
    qint64 sum = 0;
    for (const QString& path : m_entries)
        sum += m_fs.GetFileSize(path);
    return sum;
}

void FileListModel::showFacts(const QString& path)
{
    m_facts.path = path;
    m_facts.pictureFile = isPictureEnding(path);
    m_facts.panelB
        = sizeTypePanel(m_fs.GetFileSize(path), m_fs.GetFileTypeName(path), m_fs.GetFileAttributesStr(path));
    m_facts.panelA = datesPanel(m_fs.GetFileDateTime(path, 1), m_fs.GetFileDateTime(path, 2));
    emit factsChanged(m_facts);
}

void FileListModel::ResetFileList()
{
    cancelScans();
    beginResetModel();
    m_entries.clear();
    endResetModel();
    setCurrent(QString(), -1);
    m_facts = EntryFacts();
    emit displaysReset();
    setFilesInfo(kResetFilesInfo);
    m_destination.clear();
    emit destinationChanged(m_destination);
    emit previewStopRequested();
}

void FileListModel::RefreshFileList()
{
    if (m_entries.isEmpty())
        return;
    emit busyChanged(true);
    const QString path = m_entries.first();
    setCurrent(path, 0);
    if (opensForReading(path)) {
        showFacts(path);
        setFilesInfo(filesInfoLine(m_entries.size(), totalBytes()));
    }
    emit busyChanged(false);
}

void FileListModel::ShowCurrentEntryInfo(int row)
{
    if (m_entries.isEmpty() || row < 0 || row >= m_entries.size())
        return;
    emit busyChanged(true);
    const QString path = m_entries.at(row);
    setCurrent(path, row);
    followDestination();
    if (m_fs.FileExists(path)) {
        showFacts(path);
        setFilesInfo(filesInfoLine(m_entries.size(), totalBytes(), row + 1));
    }
    emit busyChanged(false);
}

void FileListModel::RemoveCurrentEntry()
{
    if (m_entries.isEmpty())
        return;
    const qsizetype row = m_entries.indexOf(m_currentText);
    if (row >= 0) {
        beginRemoveRows(QModelIndex(), static_cast<int>(row), static_cast<int>(row));
        m_entries.removeAt(row);
        endRemoveRows();
    }
    if (m_entries.isEmpty())
        ResetFileList();
    else
        RefreshFileList();
    followDestination();
}

void FileListModel::AddDroppedFiles(const QStringList& paths)
{
    emit busyChanged(true);
    const QSet<QString> dropped(paths.cbegin(), paths.cend());
    QStringList kept;
    kept.reserve(m_entries.size());
    for (const QString& entry : std::as_const(m_entries)) {
        if (!dropped.contains(entry))
            kept.append(entry);
    }
    if (kept.size() != m_entries.size()) {
        beginResetModel();
        m_entries = kept;
        endResetModel();
    }
    QStringList added;
    for (const QString& path : paths) {
        if (m_fs.FileExists(path) && !m_fs.FolderExists(path))
            added.append(path);
    }
    appendEntries(added);
    RefreshFileList();
    emit busyChanged(false);
}

void FileListModel::scanFolder(const FolderChoice& choice)
{
    m_waitingScans.enqueue(choice);
    if (m_scanner)
        return;
    // One busy period for a run of queued scans: announced here, ended when the last one ends.
    emit scanningChanged(true);
    startNextScan();
}

bool FileListModel::isScanning() const
{
    return m_scanner != nullptr;
}

void FileListModel::cancelScans()
{
    m_waitingScans.clear();
    if (!m_scanner)
        return;
    FolderScanner* scanner = m_scanner;
    m_scanner = nullptr;
    scanner->disconnect(this);
    scanner->cancel();
    scanner->deleteLater();
    emit scanningChanged(false);
    emit scanFinished(true);
}

void FileListModel::startNextScan()
{
    if (m_waitingScans.isEmpty())
        return;
    const FolderChoice choice = m_waitingScans.dequeue();
    m_scanner = new FolderScanner(this);
    connect(m_scanner, &FolderScanner::found, this, &FileListModel::appendEntries);
    connect(m_scanner, &FolderScanner::finished, this, [this](bool cancelled) {
        m_scanner->deleteLater();
        m_scanner = nullptr;
        RefreshFileList();
        if (m_waitingScans.isEmpty())
            emit scanningChanged(false);
        emit scanFinished(cancelled);
        startNextScan();
    });
    m_scanner->start(choice.folder, choice.pattern, choice.includeSubfolders);
}

void FileListModel::followDestination()
{
    const QString followed = followedDestination(m_destination, m_currentText);
    if (followed == m_destination)
        return;
    m_destination = followed;
    emit destinationChanged(m_destination);
}

void FileListModel::previewFollowUp()
{
    if (m_entries.isEmpty() || !m_fs.FileExists(m_currentText))
        return;
    emit previewStopRequested();
    const QString path = m_currentText;
    if (!isPreviewVideo(path) || m_fs.GetFileSize(path) < 2048)
        return;
    const int kind = m_fs.GetDriveType(path);
    if (kind != platform::kDriveCdRom && kind != platform::kDriveFixed)
        return;
    // Read the head once so a slow disc has spun up before the preview opens it. The read runs on a
    // thread of its own: on a scratched disc it can last as long as the drive retries, and the window must
    // not wait for it. The preview gets the file when the read is over, unless the current entry changed
    // meanwhile (a newer follow-up owns the preview then) or the preview flag has been cleared.
    const quint64 ticket = ++m_previewTicket;
    ++m_previewReads;
    QPointer<FileListModel> self(this);
    QThread* reader = QThread::create([self, path, ticket] {
        {
            QFile file(path);
            if (file.open(QIODevice::ReadOnly))
                file.read(2048);
        }
        if (QCoreApplication* app = QCoreApplication::instance()) {
            QMetaObject::invokeMethod(
                app,
                [self, path, ticket] {
                    if (!self)
                        return;
                    --self->m_previewReads;
                    if (ticket == self->m_previewTicket && self->m_previewFlag && self->m_currentText == path)
                        emit self->previewRequested(path);
                },
                Qt::QueuedConnection);
        }
    });
    // A reader still stuck in a drive when the program ends is left to the process's exit.
    connect(reader, &QThread::finished, reader, &QObject::deleteLater);
    reader->start(QThread::LowPriority);
}

FileListModel::RenameResult FileListModel::renameFile(const QString& path, const QString& newNameText)
{
    RenameResult result;
    const QString folder = withTrailingSlash(m_fs.GetParentFolderName(path));
    const QString name = newNameText.trimmed();
    result.newPath = folder + name;
    // A "/" would move the file into another folder rather than rename it: never hand such a name on.
    const bool nameUsable = !name.isEmpty() && !name.contains(u'/') && !name.contains(QChar(0))
        && name != QLatin1String(".") && name != QLatin1String("..");
    if (!nameUsable || !m_fs.ReName(path, result.newPath)) {
        result.refusal = renameRefusalText(path, folder, name);
        return result;
    }
    result.renamed = true;
    for (qsizetype row = 0; row < m_entries.size(); ++row) {
        if (m_fs.FileExists(m_entries.at(row)))
            continue;
        m_entries[row] = result.newPath;
        const QModelIndex changed = index(static_cast<int>(row));
        emit dataChanged(changed, changed);
        setCurrent(result.newPath, static_cast<int>(row));
        break;
    }
    return result;
}

} // namespace vindaro::files
