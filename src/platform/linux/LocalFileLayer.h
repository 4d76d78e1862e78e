#pragma once

#include "../FileIo.h"

namespace vindaro::platform {

// Files on the local file system through POSIX calls, so every failure keeps its errno.
class LocalFileLayer : public FileLayer
{
public:
    std::unique_ptr<RandomAccessFile> openForReading(const QString& path, IoResult& result) override;
    std::unique_ptr<RandomAccessFile> openForUpdate(const QString& path, IoResult& result) override;
    qint64 length(const QString& path, IoResult& result) override;
    IoResult copyWhole(const QString& source, const QString& destination) override;
    IoResult truncate(const QString& path) override;
    IoResult remove(const QString& path) override;
    bool exists(const QString& path) override;
    IoResult makeFolders(const QString& path) override;
    IoResult syncFileSystem(const QString& path) override;
};

// The system's text for an errno value.
QString errnoText(int errnoValue);

} // namespace vindaro::platform
