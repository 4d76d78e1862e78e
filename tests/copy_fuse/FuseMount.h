#pragma once

#include <QDir>
#include <QFileInfo>
#include <QProcess>
#include <QTest>

#include <functional>

// A FUSE file system of the test's own, mounted for the life of the object. `ready` tells when the mount
// answers; mounted() is false (and why() says why) where FUSE cannot be mounted.
class FuseMount
{
public:
    FuseMount(const QString& program, const QString& mountPoint, const QStringList& arguments,
        const std::function<bool()>& ready)
        : m_mountPoint(mountPoint)
    {
        QDir().mkpath(mountPoint);
        m_fs.start(program, QStringList{mountPoint} + arguments);
        m_mounted = m_fs.waitForStarted(10000)
            && QTest::qWaitFor([&] { return m_fs.state() != QProcess::Running || ready(); }, 10000)
            && m_fs.state() == QProcess::Running;
    }
    ~FuseMount() { unmount(); }
    void unmount()
    {
        if (m_fs.state() == QProcess::Running) {
            // Lazily: a file the kernel has not released yet must not keep the mount (and the test) waiting.
            QProcess::execute(
                QStringLiteral("fusermount3"), {QStringLiteral("-u"), QStringLiteral("-z"), m_mountPoint});
            if (!m_fs.waitForFinished(10000)) {
                m_fs.kill();
                m_fs.waitForFinished(10000);
            }
        }
    }
    bool mounted() const { return m_mounted; }
    QString why() { return QString::fromLocal8Bit(m_fs.readAllStandardError()); }
    QString path(const QString& name) const { return m_mountPoint + QLatin1Char('/') + name; }

private:
    QString m_mountPoint;
    QProcess m_fs;
    bool m_mounted = false;
};
