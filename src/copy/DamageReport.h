#pragma once

#include "RescueMap.h"
#include "platform/FileIo.h"

#include <QString>
#include <QStringList>
#include <QtGlobal>

#include <optional>
#include <vector>

namespace vindaro::copy {

// One copy as the report sees it: its files, the source's size and the map of what was copied.
struct DamageInput
{
    QString source;
    QString destination;
    qint64 sourceSize = 0;
    RescueMap map;
};

// One stretch of a source that is missing from its copy: neighbouring ranges that are not copied, whatever
// their states, make one hole.
struct DamageHole
{
    qint64 offset = 0;
    qint64 length = 0;
    qint64 badBytes = 0; // a read failed there (bad, non-trimmed and non-scraped ranges)
    qint64 skippedBytes = 0; // never read
    // The playing time just before and just after the hole, in whole seconds from the stream's first
    // readable pack (rounded down before, up after), for MPEG program streams whose clock could be read.
    // A hole at the start begins at 0; `to` is missing for a hole that runs to the end.
    std::optional<qint64> fromSecond;
    std::optional<qint64> toSecond;
    bool atEnd = false; // the hole runs to the end of the source

    qint64 end() const { return offset + length; }
};

struct DamagedFile
{
    QString source;
    QString destination;
    qint64 sourceSize = 0;
    qint64 badBytes = 0;
    qint64 skippedBytes = 0;
    bool timed = false; // a program stream whose clock was read: the holes carry playing times
    std::vector<DamageHole> holes;

    qint64 missingBytes() const { return badBytes + skippedBytes; }
};

// What a copy or a batch lost: the files with holes, in the order given, and the files a batch ended
// before reaching, so they can be started again.
struct DamageReport
{
    std::vector<DamagedFile> files;
    QStringList notReached;

    bool isEmpty() const { return files.empty() && notReached.isEmpty(); }
    qint64 missingBytes() const;
};

// Builds the report. Copies whose map is complete are left out. With `files`, the destination of each
// copy whose name is that of an MPEG program stream (.dat, .vob, .mpg, source or destination) is read
// for the playing times around its holes: only bytes that were copied, never the source.
DamageReport makeDamageReport(
    const std::vector<DamageInput>& copies, const QStringList& notReached, platform::FileLayer* files);

} // namespace vindaro::copy
