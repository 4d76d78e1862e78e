#include "PatternHistory.h"

#include "ProfileFile.h"

#include <QSet>
#include <QStandardPaths>

namespace vindaro::search::PatternHistory {

QString keyFor(int index)
{
    return QString::number(index) + QStringLiteral("TYPE");
}

QString settingsFolder()
{
    const QString config = QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation);
    if (config.isEmpty())
        return {};
    return config + QStringLiteral("/vindaro/");
}

QString settingsFilePath()
{
    const QString folder = settingsFolder();
    return folder.isEmpty() ? QString() : folder + kFileName;
}

QStringList load(const QString& path)
{
    QStringList patterns;
    if (path.isEmpty())
        return patterns;
    for (int i = 0; i < kStoredPatterns; ++i) {
        const QString value = ProfileFile::readString(path, kSection, keyFor(i));
        if (value.isEmpty())
            break;
        patterns.append(value);
    }
    return patterns;
}

QStringList withoutDuplicates(const QStringList& patterns)
{
    QStringList kept;
    QSet<QString> seen;
    for (const QString& pattern : patterns) {
        if (!seen.contains(pattern)) {
            seen.insert(pattern);
            kept.append(pattern);
        }
    }
    return kept;
}

bool save(const QString& path, const QStringList& patterns)
{
    if (path.isEmpty())
        return false;
    const QStringList kept = withoutDuplicates(patterns);
    bool allWritten = true;
    for (int i = 0; i < kept.size() && i < kStoredPatterns; ++i) {
        // Each write stands alone, as the profile service's do: a failed one does not stop the next.
        if (!ProfileFile::writeString(path, kSection, keyFor(i), kept.at(i)))
            allWritten = false;
    }
    return allWritten;
}

} // namespace vindaro::search::PatternHistory
