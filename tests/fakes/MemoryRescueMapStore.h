#pragma once

#include "copy/RescueMapStore.h"

#include <QHash>
#include <QMutex>

namespace vindaro::testing {

// Rescue maps kept in memory, one per destination path as given (no cleaning of paths), counting saves
// and able to fail them as a full disk does.
class MemoryRescueMapStore final : public copy::RescueMapStore
{
public:
    bool load(
        const QString& destination, copy::RescueMap& map, copy::MapfileStatus* status = nullptr) override
    {
        const QMutexLocker lock(&m_mutex);
        const auto it = m_maps.constFind(destination);
        if (it == m_maps.constEnd())
            return false;
        map = it->map;
        if (status)
            *status = it->status;
        return true;
    }
    bool save(const QString& destination, const copy::RescueMap& map,
        std::optional<copy::MapfileStatus> status = std::nullopt) override
    {
        const QMutexLocker lock(&m_mutex);
        ++m_saves;
        if (failSaves)
            return false;
        m_maps.insert(destination, Kept{map, status ? *status : copy::mapfileStatusOf(map)});
        return true;
    }
    void remove(const QString& destination) override
    {
        const QMutexLocker lock(&m_mutex);
        m_maps.remove(destination);
    }

    bool contains(const QString& destination) const
    {
        const QMutexLocker lock(&m_mutex);
        return m_maps.contains(destination);
    }
    int saves() const
    {
        const QMutexLocker lock(&m_mutex);
        return m_saves;
    }
    bool failSaves = false; // set before the copy starts

private:
    struct Kept
    {
        copy::RescueMap map;
        copy::MapfileStatus status;
    };
    mutable QMutex m_mutex;
    QHash<QString, Kept> m_maps;
    int m_saves = 0;
};

} // namespace vindaro::testing
