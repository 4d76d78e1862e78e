#include "DiscFileLayer.h"

#include <cerrno>

namespace vindaro::disc {

using platform::IoResult;

namespace {

constexpr qint64 kPlainMemoMilliseconds = 1000;

} // namespace

DiscFileLayer::DiscFileLayer(platform::FileLayer& plain, platform::Volumes& volumes)
    : m_plain(plain)
    , m_volumes(volumes)
{
}

DiscFileLayer::Target DiscFileLayer::resolve(const QString& path)
{
    Target target;
    if (const std::optional<DiscFileName> name = parseDiscFileName(path)) {
        target.disc = name->disc;
        target.kind = Target::Kind::Failed;
        const std::unique_ptr<Disc> disc = Disc::open(name->disc, target.failure);
        if (!disc)
            return target;
        const std::optional<DiscEntry> entry = disc->find(name->path, target.failure);
        if (!entry)
            return target;
        if (entry->folder) {
            target.failure = DiscFailure{
                EISDIR, QStringLiteral("光盘“%1”上的“%2”是文件夹，不是文件。").arg(name->disc, name->path)};
            return target;
        }
        target.kind = Target::Kind::OnDisc;
        target.entry = *entry;
        return target;
    }
    {
        const QMutexLocker lock(&m_mutex);
        if (path == m_lastPlain && m_lastPlainAge.isValid()
            && m_lastPlainAge.elapsed() < kPlainMemoMilliseconds)
            return target;
    }
    const MountedDiscFiles::Lookup found = MountedDiscFiles::shared().lookup(m_volumes, path);
    switch (found.kind) {
    case MountedDiscFiles::Kind::Plain: {
        const QMutexLocker lock(&m_mutex);
        m_lastPlain = path;
        m_lastPlainAge.start();
        break;
    }
    case MountedDiscFiles::Kind::Form2:
        target.kind = Target::Kind::OnDisc;
        target.disc = found.device;
        target.entry = found.entry;
        break;
    case MountedDiscFiles::Kind::Unreadable:
        target.kind = Target::Kind::Failed;
        target.disc = found.device;
        target.failure = found.failure;
        break;
    }
    return target;
}

IoResult DiscFileLayer::failed(const DiscFailure& failure)
{
    {
        const QMutexLocker lock(&m_mutex);
        if (failure.message != m_lastFailure) {
            m_lastFailure = failure.message;
            if (m_log)
                m_log(failure.message);
        }
    }
    return IoResult::failure(failure.error ? failure.error : EIO, failure.message);
}

QString DiscFileLayer::problemWith(const QString& path)
{
    const Target target = resolve(path);
    return target.kind == Target::Kind::Failed ? target.failure.message : QString();
}

std::unique_ptr<platform::RandomAccessFile> DiscFileLayer::openForReading(
    const QString& path, IoResult& result)
{
    const Target target = resolve(path);
    switch (target.kind) {
    case Target::Kind::Plain:
        return m_plain.openForReading(path, result);
    case Target::Kind::Failed:
        result = failed(target.failure);
        return nullptr;
    case Target::Kind::OnDisc:
        break;
    }
    // A handle of the file's own: the drive's door stays locked while it is open, and nothing another
    // look-up does to a handle touches the reads.
    DiscFailure failure;
    std::unique_ptr<Disc> disc = Disc::open(target.disc, failure);
    if (!disc) {
        result = failed(failure);
        return nullptr;
    }
    {
        const QMutexLocker lock(&m_mutex);
        m_lastFailure.clear();
    }
    result = IoResult();
    return std::make_unique<DiscFile>(std::move(disc), target.entry, m_log);
}

std::unique_ptr<platform::RandomAccessFile> DiscFileLayer::openForUpdate(
    const QString& path, IoResult& result)
{
    if (parseDiscFileName(path)) {
        result = IoResult::failure(EROFS);
        return nullptr;
    }
    return m_plain.openForUpdate(path, result);
}

qint64 DiscFileLayer::length(const QString& path, IoResult& result)
{
    const Target target = resolve(path);
    switch (target.kind) {
    case Target::Kind::Plain:
        return m_plain.length(path, result);
    case Target::Kind::Failed:
        result = failed(target.failure);
        return -1;
    case Target::Kind::OnDisc:
        break;
    }
    result = IoResult();
    return target.entry.length();
}

IoResult DiscFileLayer::copyWhole(const QString& source, const QString& destination)
{
    const Target target = resolve(source);
    if (target.kind == Target::Kind::Plain)
        return m_plain.copyWhole(source, destination);
    IoResult result;
    auto in = openForReading(source, result);
    if (!in)
        return result;
    auto out = m_plain.openForUpdate(destination, result);
    if (!out)
        return result;
    result = m_plain.truncate(destination); // replaces the destination, as the plain copy does
    if (!result.ok())
        return result;
    QByteArray buffer(1 << 20, Qt::Uninitialized);
    for (qint64 offset = 0;;) {
        const IoResult r = in->readAt(offset, buffer.data(), buffer.size());
        if (!r.ok())
            return r;
        if (r.bytes == 0)
            break;
        const IoResult w = out->writeAt(offset, buffer.constData(), r.bytes);
        if (!w.ok())
            return w;
        offset += r.bytes;
    }
    return out->close();
}

IoResult DiscFileLayer::truncate(const QString& path)
{
    return m_plain.truncate(path);
}

IoResult DiscFileLayer::remove(const QString& path)
{
    return m_plain.remove(path);
}

bool DiscFileLayer::exists(const QString& path)
{
    if (parseDiscFileName(path))
        return resolve(path).kind == Target::Kind::OnDisc;
    return m_plain.exists(path);
}

IoResult DiscFileLayer::makeFolders(const QString& path)
{
    return m_plain.makeFolders(path);
}

IoResult DiscFileLayer::syncFileSystem(const QString& path)
{
    return m_plain.syncFileSystem(path);
}

} // namespace vindaro::disc
