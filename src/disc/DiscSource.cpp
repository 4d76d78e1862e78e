#include "DiscSource.h"

#include <QDir>
#include <QFile>

#include <sys/stat.h>

namespace vindaro::disc {

namespace {

enum class Node
{
    Missing,
    Folder,
    File,
    BlockDevice,
};

Node nodeOf(const QString& path)
{
    struct stat st
    {
    };
    if (path.isEmpty() || ::stat(QFile::encodeName(path).constData(), &st) != 0)
        return Node::Missing;
    if (S_ISDIR(st.st_mode))
        return Node::Folder;
    return S_ISBLK(st.st_mode) ? Node::BlockDevice : Node::File;
}

} // namespace

DiscKind discKindOf(const QString& path)
{
    switch (nodeOf(path)) {
    case Node::BlockDevice:
        return DiscKind::Drive;
    case Node::File:
        break;
    default:
        return DiscKind::None;
    }
    const QString ending = path.section(QLatin1Char('.'), -1).toLower();
    if (ending == QLatin1String("cue") || ending == QLatin1String("bin"))
        return DiscKind::CueImage;
    if (ending == QLatin1String("nrg") || ending == QLatin1String("toc"))
        return DiscKind::OtherImage;
    if (ending == QLatin1String("iso"))
        return DiscKind::IsoImage;
    return DiscKind::None;
}

std::optional<DiscFileName> parseDiscFileName(const QString& text)
{
    // Asked of every path a copy touches: a name without ":/" costs no look at the disk.
    if (!text.contains(QLatin1String(":/")) || nodeOf(text) != Node::Missing)
        return std::nullopt;
    for (qsizetype at = text.indexOf(QLatin1String(":/")); at > 0;
         at = text.indexOf(QLatin1String(":/"), at + 1)) {
        const QString disc = text.left(at);
        if (discKindOf(disc) != DiscKind::None)
            return DiscFileName{disc, QDir::cleanPath(text.mid(at + 1))};
    }
    return std::nullopt;
}

bool looksLikeVideoCdTrack(const QString& pathInDisc)
{
    const QString folder = pathInDisc.section(QLatin1Char('/'), 1, 1).toUpper();
    return folder == QLatin1String("MPEGAV") || folder == QLatin1String("MPEG2")
        || folder == QLatin1String("SEGMENT")
        || pathInDisc.endsWith(QLatin1String(".DAT"), Qt::CaseInsensitive);
}

} // namespace vindaro::disc
