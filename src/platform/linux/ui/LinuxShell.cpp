#include "LinuxShell.h"

#include <QCoreApplication>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusUnixFileDescriptor>
#include <QDesktopServices>
#include <QDir>
#include <QDirIterator>
#include <QFileDialog>
#include <QFileInfo>
#include <QMessageBox>
#include <QMimeDatabase>
#include <QProcess>
#include <QProgressDialog>
#include <QSaveFile>
#include <QStandardPaths>
#include <QUrl>

#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace vindaro::platform {

namespace {

constexpr int kDbusTimeoutMs = 3000;
constexpr qint64 kChunkBytes = 1 << 20;

QByteArray native(const QString& path)
{
    return QFile::encodeName(path);
}

bool lexists(const QString& path, struct stat* st = nullptr)
{
    struct stat local;
    return ::lstat(native(path).constData(), st ? st : &local) == 0;
}

QString withoutTrailingSlash(QString path)
{
    while (path.size() > 1 && path.endsWith(QLatin1Char('/')))
        path.chop(1);
    return path;
}

QString containingFolder(const QString& path)
{
    const QFileInfo info(withoutTrailingSlash(path));
    return info.isDir() && !info.isSymLink() ? info.absoluteFilePath() : info.absolutePath();
}

// One piece of a copy plan: a folder to create, a link to recreate or a file to copy.
struct Step
{
    enum Kind
    {
        Folder,
        Link,
        File
    } kind;
    QString from;
    QString to;
    qint64 bytes = 0;
};

QList<Step> planCopy(const QString& source, const QString& target, qint64& totalBytes)
{
    QList<Step> steps;
    const QFileInfo top(source);
    if (top.isSymLink()) {
        steps.append({Step::Link, source, target, 0});
        return steps;
    }
    if (!top.isDir()) {
        steps.append({Step::File, source, target, top.size()});
        totalBytes += top.size();
        return steps;
    }
    steps.append({Step::Folder, source, target, 0});
    QDirIterator it(source, QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot,
        QDirIterator::Subdirectories); // does not descend through links to folders
    while (it.hasNext()) {
        it.next();
        const QFileInfo info = it.fileInfo();
        const QString to = target + it.filePath().mid(source.size());
        if (info.isSymLink()) {
            steps.append({Step::Link, it.filePath(), to, 0});
        } else if (info.isDir()) {
            steps.append({Step::Folder, it.filePath(), to, 0});
        } else {
            steps.append({Step::File, it.filePath(), to, info.size()});
            totalBytes += info.size();
        }
    }
    return steps;
}

} // namespace

bool LinuxShell::askReplace(const QString& target, QWidget* owner)
{
    if (m_askReplace)
        return m_askReplace(target, owner);
    const QString text = QStringLiteral("“%1”已经存在。\n\n是[Y]：替换它\n否[N]：保留原有的文件，不复制")
                             .arg(QDir::toNativeSeparators(target));
    return QMessageBox::warning(
               owner, QStringLiteral("提醒！"), text, QMessageBox::Yes | QMessageBox::No, QMessageBox::No)
        == QMessageBox::Yes;
}

int LinuxShell::transfer(const QString& sourcePath, const QString& folder, QWidget* owner, bool move)
{
    const QString source = withoutTrailingSlash(sourcePath);
    struct stat sourceStat;
    if (source.isEmpty() || !lexists(source, &sourceStat))
        return ENOENT;
    if (!QFileInfo(folder).isDir())
        return ENOTDIR;
    const QString target = QDir(folder).absoluteFilePath(QFileInfo(source).fileName());
    const bool sourceIsFolder = S_ISDIR(sourceStat.st_mode);

    // Into its own folder, or a folder into itself: there is nothing sensible to do.
    const QString canonicalSource = QFileInfo(source).canonicalFilePath();
    const QString canonicalFolder = QFileInfo(folder).canonicalFilePath();
    if (QFileInfo(QFileInfo(source).absolutePath()).canonicalFilePath() == canonicalFolder)
        return EINVAL;
    if (sourceIsFolder
        && (canonicalFolder == canonicalSource
            || canonicalFolder.startsWith(canonicalSource + QLatin1Char('/'))))
        return EINVAL;

    struct stat targetStat;
    const bool targetExists = lexists(target, &targetStat);
    if (targetExists) {
        // A file never replaces a folder nor a folder a file.
        if (S_ISDIR(targetStat.st_mode) != sourceIsFolder)
            return sourceIsFolder ? ENOTDIR : EISDIR;
        if (!askReplace(target, owner))
            return kCancelled;
    }

    if (move && (!targetExists || !sourceIsFolder)) {
        // Same file system: one rename, replacing an approved file atomically.
        if (::rename(native(source).constData(), native(target).constData()) == 0)
            return 0;
        if (errno != EXDEV)
            return errno;
    }

    qint64 totalBytes = 0;
    const QList<Step> steps = planCopy(source, target, totalBytes);
    QProgressDialog progress(move ? QStringLiteral("正在移动 %1 ...").arg(QFileInfo(source).fileName())
                                  : QStringLiteral("正在复制 %1 ...").arg(QFileInfo(source).fileName()),
        QStringLiteral("取消"), 0, 1000, owner);
    progress.setWindowTitle(move ? QStringLiteral("移动") : QStringLiteral("复制"));
    progress.setWindowModality(Qt::WindowModal);
    progress.setMinimumDuration(500);
    progress.setAutoClose(false);
    progress.setAutoReset(false);
    qint64 doneBytes = 0;
    const auto report = [&] {
        if (totalBytes > 0)
            progress.setValue(static_cast<int>(doneBytes * 1000 / totalBytes));
        QCoreApplication::processEvents();
        return !progress.wasCanceled();
    };

    QByteArray buffer(kChunkBytes, Qt::Uninitialized);
    for (const Step& step : steps) {
        if (!report())
            return kCancelled;
        if (step.kind == Step::Folder) {
            if (!QDir().mkpath(step.to))
                return EACCES;
            continue;
        }
        if (step.kind == Step::Link) {
            char raw[4096];
            const ssize_t length = ::readlink(native(step.from).constData(), raw, sizeof raw - 1);
            if (length < 0)
                return errno;
            struct stat existing;
            if (lexists(step.to, &existing) && !S_ISDIR(existing.st_mode))
                ::unlink(native(step.to).constData()); // approved by the question above
            if (::symlink(QByteArray(raw, length).constData(), native(step.to).constData()) != 0)
                return errno;
            continue;
        }
        QFile in(step.from);
        if (!in.open(QIODevice::ReadOnly))
            return EACCES;
        // A link in the target's place is what gets replaced, not the file it points at: QSaveFile would
        // write through the link into a file in some other folder that the user never chose.
        struct stat existing;
        if (lexists(step.to, &existing) && S_ISLNK(existing.st_mode)
            && ::unlink(native(step.to).constData()) != 0)
            return errno;
        // QSaveFile writes beside the target and renames over it only on commit().
        QSaveFile out(step.to);
        if (!out.open(QIODevice::WriteOnly))
            return EACCES;
        for (;;) {
            const qint64 got = in.read(buffer.data(), buffer.size());
            if (got < 0) {
                out.cancelWriting();
                return EIO;
            }
            if (got == 0)
                break;
            if (out.write(buffer.constData(), got) != got) {
                out.cancelWriting();
                return ENOSPC;
            }
            doneBytes += got;
            if (!report()) {
                out.cancelWriting();
                return kCancelled;
            }
        }
        if (!out.commit())
            return ENOSPC;
        QFile::setPermissions(step.to, in.permissions());
        QFile stamped(step.to);
        if (stamped.open(QIODevice::ReadWrite))
            stamped.setFileTime(QFileInfo(step.from).lastModified(), QFileDevice::FileModificationTime);
    }
    progress.setValue(1000);
    // The source goes only after every piece arrived.
    if (move && !deletePermanently(source))
        return EACCES;
    return 0;
}

int LinuxShell::copyInto(const QString& source, const QString& folder, QWidget* owner)
{
    return transfer(source, folder, owner, false);
}

int LinuxShell::moveInto(const QString& source, const QString& folder, QWidget* owner)
{
    return transfer(source, folder, owner, true);
}

bool LinuxShell::moveToTrash(const QString& path)
{
    // Without the data folder, Qt reports success yet files the item under ./files of the current folder.
    const QString data = QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation);
    if (data.isEmpty() || !QDir().mkpath(data))
        return false;
    if (!lexists(path))
        return false;
    return QFile::moveToTrash(withoutTrailingSlash(path));
}

bool LinuxShell::deletePermanently(const QString& path)
{
    const QString clean = withoutTrailingSlash(path);
    struct stat st;
    if (clean.isEmpty() || !lexists(clean, &st))
        return false;
    if (S_ISDIR(st.st_mode))
        return QDir(clean).removeRecursively(); // links inside are removed, not followed
    return ::unlink(native(clean).constData()) == 0;
}

int LinuxShell::rename(const QString& oldPath, const QString& newPath)
{
    struct stat from;
    struct stat to;
    if (!lexists(oldPath, &from))
        return ENOENT;
    if (lexists(newPath, &to)) {
        // Only a change of letter case on a file system that ignores case names the same entry.
        const bool sameEntry = from.st_dev == to.st_dev && from.st_ino == to.st_ino
            && QFileInfo(oldPath).absoluteFilePath() != QFileInfo(newPath).absoluteFilePath();
        if (!sameEntry)
            return EEXIST;
        return ::rename(native(oldPath).constData(), native(newPath).constData()) == 0 ? 0 : errno;
    }
    if (::renameat2(
            AT_FDCWD, native(oldPath).constData(), AT_FDCWD, native(newPath).constData(), RENAME_NOREPLACE)
        == 0)
        return 0;
    if (errno != EINVAL && errno != ENOSYS)
        return errno;
    // The file system cannot promise "no replace": the check above is the best we have.
    if (lexists(newPath))
        return EEXIST;
    return ::rename(native(oldPath).constData(), native(newPath).constData()) == 0 ? 0 : errno;
}

bool LinuxShell::open(const QString& path)
{
    return QDesktopServices::openUrl(QUrl::fromLocalFile(path));
}

bool LinuxShell::openWith(const QString& path)
{
    QDBusConnection bus = QDBusConnection::sessionBus();
    if (bus.isConnected()) {
        const int fd = ::open(native(path).constData(), O_PATH | O_CLOEXEC);
        if (fd >= 0) {
            QDBusMessage call
                = QDBusMessage::createMethodCall(QStringLiteral("org.freedesktop.portal.Desktop"),
                    QStringLiteral("/org/freedesktop/portal/desktop"),
                    QStringLiteral("org.freedesktop.portal.OpenURI"), QStringLiteral("OpenFile"));
            QVariantMap options;
            options.insert(QStringLiteral("ask"), true);
            call << QString() << QVariant::fromValue(QDBusUnixFileDescriptor(fd)) << options;
            const QDBusMessage reply = bus.call(call, QDBus::Block, kDbusTimeoutMs);
            ::close(fd);
            if (reply.type() == QDBusMessage::ReplyMessage)
                return true;
        }
    }
    // No portal: the desktop's default opener is the best remaining choice.
    return QProcess::startDetached(QStringLiteral("xdg-open"), {path});
}

bool LinuxShell::callFileManager(const QString& method, const QString& path)
{
    QDBusConnection bus = QDBusConnection::sessionBus();
    if (!bus.isConnected())
        return false;
    QDBusMessage call = QDBusMessage::createMethodCall(QStringLiteral("org.freedesktop.FileManager1"),
        QStringLiteral("/org/freedesktop/FileManager1"), QStringLiteral("org.freedesktop.FileManager1"),
        method);
    call << QStringList{QUrl::fromLocalFile(QFileInfo(path).absoluteFilePath()).toString()} << QString();
    return bus.call(call, QDBus::Block, kDbusTimeoutMs).type() == QDBusMessage::ReplyMessage;
}

bool LinuxShell::showProperties(const QString& path, QWidget* owner)
{
    Q_UNUSED(owner);
    if (callFileManager(QStringLiteral("ShowItemProperties"), path))
        return true;
    return open(containingFolder(path));
}

bool LinuxShell::showInFolder(const QString& path)
{
    if (callFileManager(QStringLiteral("ShowItems"), path))
        return true;
    return open(QFileInfo(withoutTrailingSlash(path)).absolutePath());
}

QString LinuxShell::chooseFolder(const QString& title, QWidget* owner)
{
    return QFileDialog::getExistingDirectory(owner, title);
}

QString LinuxShell::typeName(const QString& path)
{
    // By the name alone, as the desktop's type names go: asking the content would read the file, which on
    // a scratched disc can hold the window for as long as the drive retries.
    const QMimeType type = QMimeDatabase().mimeTypeForFile(path, QMimeDatabase::MatchExtension);
    return type.isValid() && !type.isDefault() ? type.comment() : QString();
}

} // namespace vindaro::platform
