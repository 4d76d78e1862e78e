#pragma once

#include <QByteArray>
#include <QString>
#include <QtGlobal>

#include <optional>

namespace vindaro::info::resources {

// A bounds-checked little-endian cursor over one resource's bytes. Every read answers nothing past the end
// and then leaves the cursor where it was, so a parser stops at the first short read.
class ResourceBytes
{
public:
    explicit ResourceBytes(const QByteArray& bytes, qsizetype offset = 0)
        : m_bytes(bytes)
        , m_offset(offset)
    {
    }

    qsizetype offset() const { return m_offset; }
    qsizetype size() const { return m_bytes.size(); }
    qsizetype left() const { return m_offset >= 0 && m_offset <= size() ? size() - m_offset : 0; }
    bool atEnd() const { return left() == 0; }
    bool has(qsizetype count) const { return count >= 0 && left() >= count; }

    bool seek(qsizetype offset)
    {
        if (offset < 0 || offset > size())
            return false;
        m_offset = offset;
        return true;
    }
    bool skip(qsizetype count) { return has(count) && seek(m_offset + count); }
    // To the next multiple of four counted from the start of the resource, as templates align their items.
    bool alignToDword() { return skip((4 - (m_offset & 3)) & 3); }

    std::optional<quint8> u8()
    {
        if (!has(1))
            return std::nullopt;
        return static_cast<quint8>(m_bytes[m_offset++]);
    }
    std::optional<quint16> u16()
    {
        if (!has(2))
            return std::nullopt;
        const quint16 value = static_cast<quint16>(byteAt(m_offset) | (byteAt(m_offset + 1) << 8));
        m_offset += 2;
        return value;
    }
    std::optional<qint16> s16()
    {
        const auto value = u16();
        if (!value)
            return std::nullopt;
        return static_cast<qint16>(*value);
    }
    std::optional<quint32> u32()
    {
        if (!has(4))
            return std::nullopt;
        const quint32 value = byteAt(m_offset) | (byteAt(m_offset + 1) << 8) | (byteAt(m_offset + 2) << 16)
            | (byteAt(m_offset + 3) << 24);
        m_offset += 4;
        return value;
    }
    std::optional<qint32> s32()
    {
        const auto value = u32();
        if (!value)
            return std::nullopt;
        return static_cast<qint32>(*value);
    }

    // UTF-16 characters up to and past a NUL; nothing when the bytes end before the NUL.
    std::optional<QString> utf16z()
    {
        QString text;
        const qsizetype start = m_offset;
        while (true) {
            const auto unit = u16();
            if (!unit) {
                m_offset = start;
                return std::nullopt;
            }
            if (*unit == 0)
                return text;
            text.append(QChar(*unit));
        }
    }

private:
    quint32 byteAt(qsizetype at) const { return static_cast<quint8>(m_bytes[at]); }

    const QByteArray& m_bytes;
    qsizetype m_offset = 0;
};

} // namespace vindaro::info::resources
