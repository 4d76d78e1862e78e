#include "SearchRules.h"

#include "files/FileListTexts.h"
#include "files/FileTexts.h"

#include <QDir>

#include <sys/stat.h>
#include <unistd.h>

namespace vindaro::search {

namespace {

constexpr quint32 kFirstPersonId = 1000; // Debian's UID_MIN: accounts below it belong to the system
constexpr quint32 kNobodyId = 65534;

} // namespace

QString foundCountText(int count)
{
    return QStringLiteral("找到 %1 个文件").arg(count);
}

QString scopeFolder(const QString& scope)
{
    if (scope == QLatin1String("~") || scope.startsWith(QLatin1String("~/")))
        return files::withTrailingSlash(QDir::homePath() + scope.mid(1));
    return files::withTrailingSlash(scope);
}

bool isExactName(const QString& pattern)
{
    return !pattern.contains(u'*');
}

files::NameRule searchNameRule(const QString& pattern)
{
    if (isExactName(pattern))
        return files::NameRule::wholeName(pattern);
    if (pattern.trimmed() == QLatin1String("*.*"))
        return files::NameRule::every();
    if (files::lastThreeUpper(pattern).contains(u'*'))
        return files::NameRule::nothing();
    return files::NameRule::lastThree(pattern);
}

std::optional<SizeClass> sizeClassOf(const SearchOptions& options)
{
    if (options.size1)
        return kSizeClasses[0];
    if (options.size2)
        return kSizeClasses[1];
    if (options.size3)
        return kSizeClasses[2];
    return std::nullopt;
}

bool inSizeClass(qint64 bytes, const SizeClass& sizeClass)
{
    return bytes >= sizeClass.lowestBytes && bytes <= sizeClass.highestBytes;
}

int attributeMask(const SearchOptions& options)
{
    return (options.readOnly ? kReadOnly : 0) | (options.hidden ? kHidden : 0)
        | (options.system ? kSystem : 0) | (options.archive ? kArchive : 0)
        | (options.compressed ? kCompressed : 0);
}

int attributeWord(const files::WalkedFile& file, quint32 userId, const QList<quint32>& groupIds)
{
    int word = 0;
    mode_t writeBit = S_IWOTH;
    if (file.ownerId == userId)
        writeBit = S_IWUSR;
    else if (groupIds.contains(file.groupId))
        writeBit = S_IWGRP;
    if (file.readOnlyVolume || (file.mode & writeBit) == 0)
        word |= kReadOnly;
    if (file.hiddenName)
        word |= kHidden;
    if (file.ownerId < kFirstPersonId || file.ownerId == kNobodyId)
        word |= kSystem;
    if (S_ISREG(file.mode))
        word |= kArchive;
    if (file.attributes & STATX_ATTR_COMPRESSED)
        word |= kCompressed;
    return word;
}

files::FolderWalker::Options walkOptions(const QString& pattern, const SearchOptions& options)
{
    files::FolderWalker::Options walk;
    walk.names = searchNameRule(pattern);
    walk.includeSubfolders = options.includeSubfolders;
    if (isExactName(pattern))
        return walk;
    const std::optional<SizeClass> sizeClass = sizeClassOf(options);
    const int mask = attributeMask(options);
    if (!sizeClass && mask == 0)
        return walk; // no stat for any file: the listing's entry types suffice
    QList<quint32> groups{quint32(::getegid())};
    gid_t more[256];
    const int count = ::getgroups(256, more);
    for (int i = 0; i < count; ++i)
        groups.append(quint32(more[i]));
    const quint32 user = quint32(::geteuid());
    walk.keep = [sizeClass, mask, user, groups](const files::WalkedFile& file) {
        if (sizeClass && !inSizeClass(file.sizeBytes, *sizeClass))
            return false;
        return passesAttributes(attributeWord(file, user, groups), mask);
    };
    return walk;
}

} // namespace vindaro::search
