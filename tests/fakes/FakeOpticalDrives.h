#pragma once

#include "platform/OpticalDrives.h"

#include <QMutex>
#include <QMutexLocker>
#include <QSet>
#include <QStringList>

#include <condition_variable>
#include <mutex>

namespace vindaro::testing {

// A drive table set up by the test. Records every tray call as "open /dev/sr0" or "close /dev/sr1".
// Safe to use from the tray job's thread; holdTrays() makes tray calls wait until releaseTrays(), so a
// test can see the window stay free while a drive is slow.
class FakeOpticalDrives final : public platform::OpticalDrives
{
public:
    void add(const QString& device, const QString& mountPoint = {})
    {
        QMutexLocker hold(&m_mutex);
        m_drives.append(platform::OpticalDrive{device, mountPoint});
    }
    void setNotReady(const QString& device)
    {
        QMutexLocker hold(&m_mutex);
        m_notReady.insert(device);
    }
    void setTrayFails(const QString& device)
    {
        QMutexLocker hold(&m_mutex);
        m_trayFails.insert(device);
    }
    QStringList calls() const
    {
        QMutexLocker hold(&m_mutex);
        return m_calls;
    }

    void holdTrays()
    {
        std::lock_guard<std::mutex> hold(m_gateMutex);
        m_held = true;
    }
    void releaseTrays()
    {
        {
            std::lock_guard<std::mutex> hold(m_gateMutex);
            m_held = false;
        }
        m_gate.notify_all();
    }

    QList<platform::OpticalDrive> list() override
    {
        QMutexLocker hold(&m_mutex);
        return m_drives;
    }
    bool isReady(const platform::OpticalDrive& drive) override
    {
        QMutexLocker hold(&m_mutex);
        return !m_notReady.contains(drive.device);
    }
    bool openTray(const QString& device) override { return tray(QStringLiteral("open "), device); }
    bool closeTray(const QString& device) override { return tray(QStringLiteral("close "), device); }

private:
    bool tray(const QString& verb, const QString& device)
    {
        {
            std::unique_lock<std::mutex> hold(m_gateMutex);
            m_gate.wait(hold, [this] { return !m_held; });
        }
        QMutexLocker hold(&m_mutex);
        m_calls.append(verb + device);
        bool known = false;
        for (const platform::OpticalDrive& drive : m_drives)
            known = known || drive.device == device;
        return known && !m_trayFails.contains(device);
    }

    mutable QMutex m_mutex;
    QList<platform::OpticalDrive> m_drives; // guarded by m_mutex
    QSet<QString> m_notReady; // devices; guarded by m_mutex
    QSet<QString> m_trayFails; // devices whose tray does not move; guarded by m_mutex
    QStringList m_calls; // guarded by m_mutex

    std::mutex m_gateMutex;
    std::condition_variable m_gate;
    bool m_held = false; // guarded by m_gateMutex
};

} // namespace vindaro::testing
