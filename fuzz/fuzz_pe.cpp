// The PE reader and the version text on arbitrary bytes: headers, the whole tree, every resource's bytes,
// the browser's lookup of every leaf, and the version parser both on the module's version resources and on
// the raw input.
#include "pe/PeImage.h"
#include "pe/VersionInfo.h"

#include <QByteArray>

#include <cstddef>
#include <cstdint>

using namespace vindaro::info::pe;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const QByteArray bytes(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size));
    const PeImage image = PeImage::fromBytes(bytes);
    const QList<ResourceEntry> leaves = image.resources();
    if (!image.isValid() && (!leaves.isEmpty() || !image.sections().isEmpty()))
        __builtin_trap();
    qsizetype names = 0;
    for (const ResourceId& type : image.resourceTypes())
        names += image.resourceNames(type).size();
    if (names > 4194304) // every name is one of the directory entries the walk reads
        __builtin_trap();
    for (const ResourceEntry& entry : leaves) {
        const QByteArray resource = image.data(entry);
        // all the bytes or none, and never more than the module holds
        if (!resource.isEmpty()
            && (resource.size() != qsizetype(entry.size) || resource.size() > bytes.size()))
            __builtin_trap();
        // the browser names every leaf so that the lookup finds one ("#N" for integer names; a name that
        // itself reads "#N" means the integer N there, as on the platform)
        const QString typeText = entry.type.text();
        const QString nameText
            = entry.name.isInteger ? QStringLiteral("#%1").arg(entry.name.number) : entry.name.name;
        if (!nameText.startsWith(QLatin1Char('#')) || entry.name.isInteger) {
            if (!image.find(typeText, nameText))
                __builtin_trap();
        }
        if (entry.type.isInteger && entry.type.number == 16) {
            const QString text = versionText(resource);
            if (text != text.trimmed())
                __builtin_trap();
            (void)versionLanguageTag(resource);
        }
    }
    (void)moduleVersionText(image);
    const QString tag = versionLanguageTag(bytes);
    if (!tag.isEmpty() && tag.size() != 8)
        __builtin_trap();
    (void)versionText(bytes);
    return 0;
}
