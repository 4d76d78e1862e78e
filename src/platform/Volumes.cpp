#include "Volumes.h"

#include <QStringList>

namespace vindaro::platform {

namespace {

// "/a//b/../c/" -> "/a/c"; "/" stays "/".
QString cleanAbsolute(const QString& path)
{
    // Mount points from the kernel are clean already: spare them the split and join.
    if (!path.contains(QLatin1String("//")) && !path.contains(QLatin1String("/."))
        && (path.size() == 1 || !path.endsWith(QLatin1Char('/'))))
        return path;
    QStringList parts;
    for (const QString& part : path.split(QLatin1Char('/'), Qt::SkipEmptyParts)) {
        if (part == QLatin1String("."))
            continue;
        if (part == QLatin1String("..")) {
            if (!parts.isEmpty())
                parts.removeLast();
            continue;
        }
        parts.append(part);
    }
    return QLatin1Char('/') + parts.join(QLatin1Char('/'));
}

} // namespace

std::optional<Volume> volumeHolding(const QList<Volume>& volumes, const QString& path)
{
    if (!path.startsWith(QLatin1Char('/')))
        return std::nullopt;
    const QString clean = cleanAbsolute(path);
    const Volume* best = nullptr;
    qsizetype bestLength = -1;
    for (const Volume& v : volumes) {
        if (!v.mountPoint.startsWith(QLatin1Char('/')))
            continue;
        const QString mount = cleanAbsolute(v.mountPoint);
        const bool holds = mount.size() == 1 || clean == mount
            || (clean.startsWith(mount) && clean.at(mount.size()) == QLatin1Char('/'));
        // ">=": a later mount on the same point hides the earlier one.
        if (holds && mount.size() >= bestLength) {
            best = &v;
            bestLength = mount.size();
        }
    }
    if (!best)
        return std::nullopt;
    return *best;
}

} // namespace vindaro::platform
