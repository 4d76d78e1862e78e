#pragma once

#include "platform/Volumes.h"

#include <QHash>
#include <QSet>

namespace vindaro::testing {

// A drive table set up by the test: volumes, their space and identity, and which are not ready.
class FakeVolumes final : public platform::Volumes
{
public:
    QList<platform::Volume> volumes;
    QHash<QString, platform::VolumeSpace> spaces; // by mount point; missing: the query fails
    QHash<QString, platform::VolumeIdentity> identities; // by mount point
    QSet<QString> notReady; // mount points with no readable medium
    QHash<QString, QString> labelsSet; // what setLabel was asked to do
    bool labelSettable = true;

    void add(const QString& mountPoint, int kind, const QString& device = {}, const QString& fsType = {})
    {
        volumes.append(platform::Volume{mountPoint, device, fsType, kind});
    }

    QList<platform::Volume> list() override { return volumes; }
    std::optional<platform::VolumeSpace> space(const QString& mountPoint) override
    {
        auto it = spaces.constFind(mountPoint);
        if (it == spaces.constEnd())
            return std::nullopt;
        return *it;
    }
    std::optional<platform::VolumeIdentity> identity(const QString& mountPoint) override
    {
        auto it = identities.constFind(mountPoint);
        if (it == identities.constEnd())
            return std::nullopt;
        return *it;
    }
    bool isReady(const QString& mountPoint) override { return !notReady.contains(mountPoint); }
    bool setLabel(const QString& mountPoint, const QString& label) override
    {
        labelsSet.insert(mountPoint, label);
        return labelSettable;
    }
};

} // namespace vindaro::testing
