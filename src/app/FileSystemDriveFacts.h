#pragma once

#include "copy/CopySession.h"
#include "files/FileSystem.h"

namespace vindaro::app {

// What copy preparation asks about drives, answered by the file-system service: the kind and readiness of
// a path's drive, the bytes free for the user there, and the drive's name in messages (its mount point).
class FileSystemDriveFacts final : public copy::DriveFacts
{
public:
    FileSystemDriveFacts(platform::Volumes& volumes, platform::Shell& shell);

    int driveType(const QString& path) override;
    double freeBytes(const QString& path) override;
    bool driveIsReady(const QString& path) override;
    QString driveName(const QString& path) override;
    bool isFloppy(const QString& path) override;

private:
    platform::Volumes& m_volumes;
    files::FileSystem m_files;
};

} // namespace vindaro::app
