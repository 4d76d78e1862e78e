#include "FuseMount.h"

#include <QDir>
#include <QFile>
#include <QTest>

#include <sys/mount.h>

namespace vindaro::testing {

namespace {

constexpr int kWaitMs = 10000;
constexpr int kLazyWaitMs = 2000;

// The mount table writes blanks, tabs, newlines and backslashes of a path as octal escapes.
QByteArray mountTableSpelling(const QString& path)
{
    QByteArray out;
    for (const char c : QFile::encodeName(path)) {
        if (c == ' ' || c == '\t' || c == '\n' || c == '\\')
            out += QByteArrayLiteral("\\") + QByteArray::number(int(c), 8).rightJustified(3, '0');
        else
            out += c;
    }
    return out;
}

// fusermount3 with a bound: an unmount must not hang the test on a file system that does not answer.
bool fusermount(const QStringList& arguments)
{
    QProcess p;
    p.start(QStringLiteral("fusermount3"), arguments);
    if (!p.waitForFinished(kWaitMs)) {
        p.kill();
        p.waitForFinished(kWaitMs);
        return false;
    }
    return p.exitStatus() == QProcess::NormalExit && p.exitCode() == 0;
}

} // namespace

bool inMountTable(const QString& mountPoint)
{
    QFile table(QStringLiteral("/proc/self/mountinfo"));
    if (!table.open(QIODevice::ReadOnly))
        return false;
    const QByteArray wanted = mountTableSpelling(mountPoint);
    for (const QByteArray& line : table.readAll().split('\n')) {
        const QList<QByteArray> fields = line.split(' '); // id parent major:minor root MOUNTPOINT ...
        if (fields.size() > 4 && fields[4] == wanted)
            return true;
    }
    return false;
}

FuseMount::FuseMount(const QString& program, const QString& mountPoint, const QStringList& arguments)
    : m_mountPoint(mountPoint)
{
    QDir().mkpath(mountPoint);
    m_fs.start(program, QStringList{mountPoint} + arguments);
    m_mounted = m_fs.waitForStarted(kWaitMs)
        && QTest::qWaitFor(
            [&] { return m_fs.state() != QProcess::Running || inMountTable(m_mountPoint); }, kWaitMs)
        && m_fs.state() == QProcess::Running;
}

FuseMount::~FuseMount()
{
    unmount();
}

bool FuseMount::unavailable()
{
    const int setupFailed = 3, mountFailed = 4;
    return !m_mounted && m_fs.state() == QProcess::NotRunning && m_fs.exitStatus() == QProcess::NormalExit
        && (m_fs.exitCode() == setupFailed || m_fs.exitCode() == mountFailed);
}

std::string FuseMount::why()
{
    if (m_fs.state() == QProcess::Running && !m_mounted)
        return "no mount after " + std::to_string(kWaitMs) + " ms";
    std::string text = QString::fromLocal8Bit(m_fs.readAllStandardError()).toStdString();
    if (m_fs.state() == QProcess::NotRunning && m_fs.error() != QProcess::FailedToStart)
        text += " (exit code " + std::to_string(m_fs.exitCode()) + ")";
    return text;
}

void FuseMount::kill()
{
    m_fs.kill();
    m_fs.waitForFinished(kWaitMs);
}

bool FuseMount::unmount()
{
    if (m_fs.state() != QProcess::NotRunning) {
        // After a lazy unmount the program ends only once the last file on it is closed, which a failed test
        // may never do: it is killed after a short while.
        const bool plain = fusermount({QStringLiteral("-u"), m_mountPoint});
        if (!plain)
            fusermount({QStringLiteral("-u"), QStringLiteral("-z"), m_mountPoint});
        if (!m_fs.waitForFinished(plain ? kWaitMs : kLazyWaitMs))
            kill();
    }
    // A dead mount (its program killed or gone) only needs detaching.
    if (inMountTable(m_mountPoint) && !fusermount({QStringLiteral("-u"), QStringLiteral("-z"), m_mountPoint}))
        ::umount2(QFile::encodeName(m_mountPoint).constData(), MNT_DETACH);
    return !inMountTable(m_mountPoint);
}

} // namespace vindaro::testing
