#include "LinuxShell.h"

#include "platform/linux/FileTransfer.h"
#include "platform/linux/MimeAssociations.h"
#include "platform/linux/ui/OpenWithDialog.h"

#include <QApplication>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusUnixFileDescriptor>
#include <QDesktopServices>
#include <QDir>
#include <QEventLoop>
#include <QFileDialog>
#include <QFileInfo>
#include <QLocale>
#include <QMessageBox>
#include <QMimeDatabase>
#include <QProgressDialog>
#include <QStandardPaths>
#include <QTimer>
#include <QUrl>

#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace vindaro::platform {

namespace {

constexpr int kDbusTimeoutMs = 3000;
constexpr int kProgressDelayMs = 500;
constexpr int kProgressTickMs = 100;

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

QString grouped(qint64 value)
{
    return QLocale(QLocale::English).toString(value);
}

QString progressText(const QString& action, const QString& name, qint64 done, qint64 total)
{
    QString text = action + QStringLiteral(" %1 ...\n").arg(name);
    if (total < 0)
        return text + QStringLiteral("正在读取文件夹...");
    text += QStringLiteral("已完成 %1 / %2 字节").arg(grouped(done), grouped(total));
    if (total > 0)
        text += QStringLiteral(" (%1%)").arg(done * 100 / total);
    return text;
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

FileOpResult LinuxShell::transfer(const QString& sourcePath, const QString& folder, QWidget* owner, bool move)
{
    using Step = FileOpResult::Step;
    const QString source = withoutTrailingSlash(sourcePath);
    struct stat sourceStat;
    if (source.isEmpty() || !lexists(source, &sourceStat))
        return FileOpResult::failed(Step::Check, ENOENT, sourcePath);
    if (!QFileInfo(folder).isDir())
        return FileOpResult::failed(Step::Check, ENOTDIR, folder);
    const QString target = QDir(folder).absoluteFilePath(QFileInfo(source).fileName());
    const bool sourceIsFolder = S_ISDIR(sourceStat.st_mode);

    // Into its own folder, or a folder into itself: there is nothing sensible to do.
    const QString canonicalSource = QFileInfo(source).canonicalFilePath();
    const QString canonicalFolder = QFileInfo(folder).canonicalFilePath();
    if (QFileInfo(QFileInfo(source).absolutePath()).canonicalFilePath() == canonicalFolder)
        return FileOpResult::failed(
            Step::Check, EINVAL, folder, QStringLiteral("目标文件夹就是文件所在的文件夹"));
    if (sourceIsFolder
        && (canonicalFolder == canonicalSource
            || canonicalFolder.startsWith(canonicalSource + QLatin1Char('/'))))
        return FileOpResult::failed(Step::Check, EINVAL, folder, QStringLiteral("目标文件夹在源文件夹之内"));

    struct stat targetStat;
    const bool targetExists = lexists(target, &targetStat);
    if (targetExists) {
        // A file never replaces a folder nor a folder a file.
        if (S_ISDIR(targetStat.st_mode) != sourceIsFolder)
            return FileOpResult::failed(Step::WriteTarget, sourceIsFolder ? ENOTDIR : EISDIR, target);
        if (!askReplace(target, owner))
            return FileOpResult::cancelled();
    }

    // The work runs on a worker; this thread only shows its progress and listens for Cancel, which
    // abandons a worker stuck in a read at once.
    FileTransfer job(source, target, move, targetExists);
    const QString action = move ? QStringLiteral("正在移动") : QStringLiteral("正在复制");
    const QString name = QFileInfo(source).fileName();
    QProgressDialog progress(progressText(action, name, 0, -1), QStringLiteral("取消"), 0, 1000, owner);
    progress.setWindowTitle(move ? QStringLiteral("移动") : QStringLiteral("复制"));
    progress.setWindowModality(Qt::WindowModal);
    progress.setMinimumDuration(kProgressDelayMs);
    progress.setAutoClose(false);
    progress.setAutoReset(false);
    QEventLoop loop;
    QObject::connect(&job, &FileTransfer::finished, &loop, &QEventLoop::quit);
    QObject::connect(&progress, &QProgressDialog::canceled, &loop, &QEventLoop::quit);
    QObject::connect(&progress, &QDialog::rejected, &loop, &QEventLoop::quit); // Esc hides it: cancel too
    QTimer tick;
    tick.setInterval(kProgressTickMs);
    QObject::connect(&tick, &QTimer::timeout, &progress, [&] {
        const qint64 done = job.doneBytes();
        const qint64 total = job.totalBytes();
        progress.setLabelText(progressText(action, name, done, total));
        const int value = total > 0 ? int(qMin<qint64>(done * 1000 / total, 1000)) : 0; // a file may grow
        // Setting an unchanged value would restart the dialog's delay before it shows.
        if (value != progress.value())
            progress.setValue(value);
    });
    job.start();
    tick.start();
    if (!job.isFinished())
        loop.exec();
    tick.stop();
    if (!job.isFinished())
        job.cancel();
    return job.result();
}

FileOpResult LinuxShell::copyInto(const QString& source, const QString& folder, QWidget* owner)
{
    return transfer(source, folder, owner, false);
}

FileOpResult LinuxShell::moveInto(const QString& source, const QString& folder, QWidget* owner)
{
    return transfer(source, folder, owner, true);
}

FileOpResult LinuxShell::moveToTrash(const QString& path)
{
    using Step = FileOpResult::Step;
    if (!lexists(path))
        return FileOpResult::failed(Step::Trash, ENOENT, path);
    // Without the data folder, Qt reports success yet files the item under ./files of the current folder.
    const QString data = QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation);
    if (data.isEmpty() || !QDir().mkpath(data))
        return FileOpResult::failed(
            Step::Trash, 0, path, QStringLiteral("无法建立回收站所在的文件夹：") + data);
    QFile file(withoutTrailingSlash(path));
    if (file.moveToTrash())
        return {};
    // Qt answers with the system's words only; the common case on a removable disk deserves plainer ones.
    if (file.errorString() == qt_error_string(EXDEV))
        return FileOpResult::failed(
            Step::Trash, EXDEV, path, QStringLiteral("这个磁盘上没有可用的回收站，文件不能跨磁盘移入回收站"));
    return FileOpResult::failed(Step::Trash, 0, path, file.errorString());
}

FileOpResult LinuxShell::deletePermanently(const QString& path)
{
    if (withoutTrailingSlash(path).isEmpty())
        return FileOpResult::failed(FileOpResult::Step::Delete, ENOENT, path);
    return removePermanently(path);
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

bool LinuxShell::hasDefaultApplication(const QString& path)
{
    MimeAssociations associations(MimeAssociations::foldersFromEnvironment());
    return !associations.defaultApplicationForFile(path).isEmpty();
}

bool LinuxShell::open(const QString& path)
{
    return QDesktopServices::openUrl(QUrl::fromLocalFile(path));
}

// True when the desktop portal took the file: it shows its own chooser.
bool LinuxShell::askPortal(const QString& path)
{
    QDBusConnection bus = QDBusConnection::sessionBus();
    if (!bus.isConnected())
        return false;
    const int fd = ::open(native(path).constData(), O_PATH | O_CLOEXEC);
    if (fd < 0)
        return false;
    QDBusMessage call = QDBusMessage::createMethodCall(QStringLiteral("org.freedesktop.portal.Desktop"),
        QStringLiteral("/org/freedesktop/portal/desktop"), QStringLiteral("org.freedesktop.portal.OpenURI"),
        QStringLiteral("OpenFile"));
    QVariantMap options;
    options.insert(QStringLiteral("ask"), true);
    call << QString() << QVariant::fromValue(QDBusUnixFileDescriptor(fd)) << options;
    const QDBusMessage reply = bus.call(call, QDBus::Block, kDbusTimeoutMs);
    ::close(fd);
    return reply.type() == QDBusMessage::ReplyMessage;
}

bool LinuxShell::openWith(const QString& path)
{
    if (askPortal(path))
        return true;
    if (m_chooseProgram)
        return m_chooseProgram(path);
    MimeAssociations associations(MimeAssociations::foldersFromEnvironment());
    OpenWithDialog dialog(
        path, associations.applicationsForFile(path), startDetached, QApplication::activeWindow());
    return dialog.exec() == QDialog::Accepted;
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
