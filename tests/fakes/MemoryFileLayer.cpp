#include "MemoryFileLayer.h"

#include <QMutexLocker>

#include <cerrno>
#include <cstring>

namespace vindaro::testing {

using platform::IoResult;

QByteArray positionBytes(qint64 length)
{
    QByteArray data(length, Qt::Uninitialized);
    for (qint64 i = 0; i < length; ++i)
        data[i] = patternByte(i);
    return data;
}

class MemoryFile final : public platform::RandomAccessFile
{
public:
    MemoryFile(MemoryFileLayer& layer, QString path, bool writable)
        : m_layer(layer)
        , m_path(std::move(path))
        , m_writable(writable)
    {
    }
    ~MemoryFile() override
    {
        if (!m_closed)
            m_layer.closed();
    }
    bool readsAheadWell() const override { return !m_writable && m_layer.m_readsAhead; }
    IoResult readAt(qint64 offset, char* data, qint64 maxBytes) override
    {
        return m_layer.read(m_path, offset, data, maxBytes);
    }
    IoResult writeAt(qint64 offset, const char* data, qint64 count) override
    {
        if (!m_writable)
            return IoResult::failure(EBADF, QStringLiteral("Bad file descriptor"));
        return m_layer.write(m_path, offset, data, count);
    }
    // As copy_file_range: either side's failure ends it with EIO, and the caller cannot tell which.
    IoResult copyTo(platform::RandomAccessFile& destination, qint64 offset, qint64 destinationOffset,
        qint64 bytes) override
    {
        auto* to = dynamic_cast<MemoryFile*>(&destination);
        if (!m_layer.m_copiesInside || !to)
            return IoResult::failure(ENOTSUP);
        QByteArray buffer(std::min<qint64>(bytes, 1 << 20), Qt::Uninitialized);
        IoResult result;
        while (result.bytes < bytes) {
            const qint64 n = std::min<qint64>(buffer.size(), bytes - result.bytes);
            const IoResult in = readAt(offset + result.bytes, buffer.data(), n);
            const IoResult out = in.ok() && in.bytes == n
                ? to->writeAt(destinationOffset + result.bytes, buffer.data(), n)
                : in;
            if (!in.ok() || in.bytes < n || !out.ok()) {
                const qint64 done = result.bytes;
                result = IoResult::failure(EIO);
                result.bytes = done;
                return result;
            }
            result.bytes += n;
        }
        ++m_layer.m_insideCopies;
        return result;
    }
    IoResult sync() override
    {
        if (!m_writable)
            return IoResult();
        return m_layer.sync(m_path);
    }
    IoResult close() override
    {
        if (m_closed)
            return IoResult();
        m_closed = true;
        m_layer.closed();
        return m_writable ? m_layer.close(m_path) : IoResult();
    }

private:
    bool m_closed = false;
    MemoryFileLayer& m_layer;
    QString m_path;
    bool m_writable;
};

void MemoryFileLayer::reset()
{
    QMutexLocker lock(&m_mutex);
    m_files.clear();
    m_folders.clear();
    m_readHook = nullptr;
    m_readCount = 0;
    m_open = 0;
    m_maxOpen = 0;
    m_largestRead = 0;
    m_insideCopies = 0;
}

void MemoryFileLayer::put(const QString& path, const QByteArray& bytes)
{
    QMutexLocker lock(&m_mutex);
    Entry& e = m_files[path];
    e.bytes = bytes;
    e.generatedLength = -1;
}

void MemoryFileLayer::putGenerated(const QString& path, qint64 length)
{
    QMutexLocker lock(&m_mutex);
    Entry& e = m_files[path];
    e.bytes.clear();
    e.generatedLength = length;
}

qint64 MemoryFileLayer::patternMismatches(const QString& path) const
{
    QMutexLocker lock(&m_mutex);
    return m_files.value(path).mismatches;
}

QByteArray MemoryFileLayer::bytes(const QString& path) const
{
    QMutexLocker lock(&m_mutex);
    return m_files.value(path).bytes;
}

bool MemoryFileLayer::contains(const QString& path) const
{
    QMutexLocker lock(&m_mutex);
    return m_files.contains(path);
}

MemoryFileLayer::Faults& MemoryFileLayer::faults(const QString& path)
{
    QMutexLocker lock(&m_mutex);
    return m_files[path].faults;
}

void MemoryFileLayer::setReadHook(std::function<void(const QString&, qint64, qint64)> hook)
{
    QMutexLocker lock(&m_mutex);
    m_readHook = std::move(hook);
}

int MemoryFileLayer::readCount() const
{
    QMutexLocker lock(&m_mutex);
    return m_readCount;
}

int MemoryFileLayer::openFiles() const
{
    QMutexLocker lock(&m_mutex);
    return m_open;
}

int MemoryFileLayer::maxOpenFiles() const
{
    QMutexLocker lock(&m_mutex);
    return m_maxOpen;
}

qint64 MemoryFileLayer::largestRead() const
{
    QMutexLocker lock(&m_mutex);
    return m_largestRead;
}

QList<qint64> MemoryFileLayer::readOffsets(const QString& path) const
{
    QMutexLocker lock(&m_mutex);
    return m_files.value(path).readOffsets;
}

std::unique_ptr<platform::RandomAccessFile> MemoryFileLayer::openForReading(
    const QString& path, IoResult& result)
{
    QMutexLocker lock(&m_mutex);
    auto it = m_files.find(path);
    if (it == m_files.end()) {
        result = IoResult::failure(ENOENT, QStringLiteral("No such file or directory"));
        return nullptr;
    }
    if (it->faults.openReadErrno != 0) {
        result = IoResult::failure(it->faults.openReadErrno);
        return nullptr;
    }
    result = IoResult();
    m_maxOpen = std::max(m_maxOpen, ++m_open);
    return std::make_unique<MemoryFile>(*this, path, false);
}

std::unique_ptr<platform::RandomAccessFile> MemoryFileLayer::openForUpdate(
    const QString& path, IoResult& result)
{
    QMutexLocker lock(&m_mutex);
    Entry& e = m_files[path]; // created when missing, kept when present
    if (e.faults.openUpdateErrno != 0) {
        result = IoResult::failure(e.faults.openUpdateErrno);
        return nullptr;
    }
    result = IoResult();
    m_maxOpen = std::max(m_maxOpen, ++m_open);
    return std::make_unique<MemoryFile>(*this, path, true);
}

qint64 MemoryFileLayer::length(const QString& path, IoResult& result)
{
    QMutexLocker lock(&m_mutex);
    auto it = m_files.find(path);
    if (it == m_files.end()) {
        result = IoResult::failure(ENOENT, QStringLiteral("No such file or directory"));
        return -1;
    }
    if (it->faults.lengthErrno != 0) {
        result = IoResult::failure(it->faults.lengthErrno);
        return -1;
    }
    result = IoResult();
    return it->generatedLength >= 0 ? it->generatedLength : it->bytes.size();
}

IoResult MemoryFileLayer::copyWhole(const QString& source, const QString& destination)
{
    QMutexLocker lock(&m_mutex);
    auto it = m_files.find(source);
    if (it == m_files.end())
        return IoResult::failure(ENOENT);
    const QByteArray data = it->bytes;
    m_files[destination].bytes = data;
    return IoResult();
}

IoResult MemoryFileLayer::truncate(const QString& path)
{
    QMutexLocker lock(&m_mutex);
    auto it = m_files.find(path);
    if (it == m_files.end())
        return IoResult::failure(ENOENT);
    it->bytes.clear();
    return IoResult();
}

IoResult MemoryFileLayer::remove(const QString& path)
{
    QMutexLocker lock(&m_mutex);
    if (m_files.remove(path) == 0)
        return IoResult::failure(ENOENT);
    return IoResult();
}

bool MemoryFileLayer::exists(const QString& path)
{
    QMutexLocker lock(&m_mutex);
    return m_files.contains(path);
}

IoResult MemoryFileLayer::makeFolders(const QString& path)
{
    QMutexLocker lock(&m_mutex);
    if (!m_folders.contains(path))
        m_folders.append(path);
    return IoResult();
}

IoResult MemoryFileLayer::syncFileSystem(const QString& path)
{
    QMutexLocker lock(&m_mutex);
    fileSystemsSynced.append(path);
    return syncFileSystemErrno ? IoResult::failure(syncFileSystemErrno, QStringLiteral("Input/output error"))
                               : IoResult();
}

QStringList MemoryFileLayer::foldersMade() const
{
    QMutexLocker lock(&m_mutex);
    return m_folders;
}

IoResult MemoryFileLayer::read(const QString& path, qint64 offset, char* data, qint64 maxBytes)
{
    std::function<void(const QString&, qint64, qint64)> hook;
    {
        QMutexLocker lock(&m_mutex);
        hook = m_readHook;
    }
    if (hook)
        hook(path, offset, maxBytes); // outside the lock: a test may block here
    QMutexLocker lock(&m_mutex);
    ++m_readCount;
    m_largestRead = std::max(m_largestRead, maxBytes);
    Entry& e = m_files[path];
    e.readOffsets.append(offset);
    for (const ByteRange& bad : e.faults.badReads) {
        if (bad.touches(offset, maxBytes))
            return IoResult::failure(e.faults.readErrno, e.faults.readText);
    }
    IoResult result;
    const qint64 size = e.generatedLength >= 0 ? e.generatedLength : e.bytes.size();
    const qint64 available = std::max<qint64>(0, std::min(maxBytes, size - offset));
    if (e.generatedLength >= 0) {
        for (qint64 i = 0; i < available; ++i)
            data[i] = patternByte(offset + i);
    } else if (available > 0)
        std::memcpy(data, e.bytes.constData() + offset, size_t(available));
    result.bytes = available;
    return result;
}

IoResult MemoryFileLayer::write(const QString& path, qint64 offset, const char* data, qint64 count)
{
    QMutexLocker lock(&m_mutex);
    Entry& e = m_files[path];
    qint64 allowed = count;
    if (e.faults.writeLimit >= 0)
        allowed = std::max<qint64>(0, std::min(count, e.faults.writeLimit - offset));
    if (e.generatedLength >= 0) {
        // A generated destination keeps no bytes: it checks them against the pattern and keeps its length.
        for (qint64 i = 0; i < allowed; ++i)
            e.mismatches += data[i] != patternByte(offset + i) ? 1 : 0;
        e.generatedLength = std::max(e.generatedLength, offset + allowed);
    } else {
        if (e.bytes.size() < offset + allowed)
            e.bytes.resize(offset + allowed, '\0');
        std::memcpy(e.bytes.data() + offset, data, size_t(allowed));
    }
    IoResult result;
    if (allowed < count) {
        result = IoResult::failure(e.faults.writeErrno, e.faults.writeText);
    }
    result.bytes = allowed;
    return result;
}

int MemoryFileLayer::syncCount(const QString& path) const
{
    QMutexLocker lock(&m_mutex);
    return m_files.value(path).syncs;
}

IoResult MemoryFileLayer::sync(const QString& path)
{
    QMutexLocker lock(&m_mutex);
    Entry& e = m_files[path];
    if (e.faults.syncErrno != 0)
        return IoResult::failure(e.faults.syncErrno, e.faults.writeText);
    ++e.syncs;
    return IoResult();
}

IoResult MemoryFileLayer::close(const QString& path)
{
    QMutexLocker lock(&m_mutex);
    const Faults& f = m_files[path].faults;
    if (f.closeErrno != 0)
        return IoResult::failure(f.closeErrno, f.writeText);
    return IoResult();
}

void MemoryFileLayer::closed()
{
    QMutexLocker lock(&m_mutex);
    --m_open;
}

} // namespace vindaro::testing
