#pragma once

#include <QByteArray>
#include <QList>
#include <QString>
#include <QtGlobal>

#include <memory>
#include <optional>

namespace vindaro::info::pe {

// A resource type or name of a module: a 16-bit number or a text.
struct ResourceId
{
    bool isInteger = true;
    quint16 number = 0;
    QString name;

    static ResourceId fromNumber(quint16 number) { return {true, number, {}}; }
    static ResourceId fromName(QString text) { return {false, 0, std::move(text)}; }
    // The decimal number, or the name: how the resource tree shows it.
    QString text() const { return isInteger ? QString::number(number) : name; }

    friend bool operator==(const ResourceId& a, const ResourceId& b)
    {
        return a.isInteger == b.isInteger && (a.isInteger ? a.number == b.number : a.name == b.name);
    }
};

// One leaf of the resource directory.
struct ResourceEntry
{
    ResourceId type;
    ResourceId name;
    quint16 language = 0;
    quint32 dataRva = 0;
    quint32 size = 0;
    quint32 codePage = 0;
};

struct Section
{
    QString name;
    quint32 virtualAddress = 0;
    quint32 virtualSize = 0;
    quint32 rawOffset = 0;
    quint32 rawSize = 0;
};

// A Windows executable (EXE, DLL) read as data: DOS and PE headers (PE32 and PE32+), the section table
// and the resource directory tree. Every read is bounds-checked and the tree walk is capped, so a damaged
// or hostile file gives an image with what could be read, never a crash or a hang. Nothing is executed
// and no import is resolved.
class PeImage
{
public:
    PeImage();
    ~PeImage();
    PeImage(PeImage&&) noexcept;
    PeImage& operator=(PeImage&&) noexcept;

    // Reads the file's headers and resource directory; resource bytes are read on demand.
    static PeImage fromFile(const QString& path);
    // The same from bytes in memory (tests, the fuzzer).
    static PeImage fromBytes(const QByteArray& bytes);

    bool isValid() const; // DOS and PE headers were read
    bool is64() const; // PE32+
    QString path() const; // empty for an image from bytes
    QList<Section> sections() const;

    // The resource types in directory order.
    QList<ResourceId> resourceTypes() const;
    // The names of one type in directory order.
    QList<ResourceId> resourceNames(const ResourceId& type) const;
    // Every leaf, in directory order.
    QList<ResourceEntry> resources() const;

    // Finds a resource as the resource browser names it: `typeText` a decimal number is looked up as that
    // integer type, and when that finds nothing (or the text is no number) as a named type; `nameText`
    // "#N" is the integer name N, anything else a named one. The first language is taken.
    std::optional<ResourceEntry> find(const QString& typeText, const QString& nameText) const;
    std::optional<ResourceEntry> find(const ResourceId& type, const ResourceId& name) const;
    // Exactly `entry.size` bytes of the resource, or empty when they lie outside the file or the size is 0.
    QByteArray data(const ResourceEntry& entry) const;

private:
    struct Impl;
    std::unique_ptr<Impl> d;
};

} // namespace vindaro::info::pe
