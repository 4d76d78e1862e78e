#pragma once
// Real files read and written whole, for the copy tests that touch them.
#include <QDir>
#include <QFile>
#include <QFileInfo>

namespace vindaro::testing {

// Empty when the file cannot be read.
inline QByteArray readWholeFile(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

// Makes the folder it needs.
inline bool writeWholeFile(const QString& path, const QByteArray& bytes)
{
    QFile file(path);
    return QDir().mkpath(QFileInfo(path).path()) && file.open(QIODevice::WriteOnly)
        && file.write(bytes) == bytes.size();
}

} // namespace vindaro::testing
