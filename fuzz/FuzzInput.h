#pragma once

#include <QBuffer>
#include <QByteArray>

#include <cstddef>
#include <cstdint>

// The fuzzer's bytes as a read-only random-access device.
class FuzzInput
{
public:
    FuzzInput(const uint8_t* data, size_t size)
        : m_bytes(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size))
        , m_buffer(&m_bytes)
    {
        m_buffer.open(QIODevice::ReadOnly);
    }
    QBuffer& device() { return m_buffer; }
    const QByteArray& bytes() const { return m_bytes; }

private:
    QByteArray m_bytes;
    QBuffer m_buffer;
};
