#include "LogFile.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSaveFile>
#include <QStandardPaths>

namespace vindaro::oplog {

QString defaultLogFilePath()
{
    QString data = QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation);
    if (data.isEmpty())
        data = QDir::homePath() + QStringLiteral("/.local/share");
    return QDir::cleanPath(data + QStringLiteral("/vindaro/OperationNotes.log"));
}

QString readLogFile(const QString& path, qint64 maxBytes)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return QString();
    const qint64 size = file.size();
    bool cut = false;
    if (maxBytes > 0 && size > maxBytes) {
        // Only the lines that start inside the tail: from the byte before it, up to the first line end,
        // is left out (nothing more when the tail starts a line).
        cut = file.seek(size - maxBytes - 1);
    }
    QByteArray bytes = file.readAll();
    if (cut) {
        const qsizetype firstEnd = bytes.indexOf('\n');
        bytes = firstEnd < 0 ? QByteArray() : bytes.mid(firstEnd + 1);
    }
    QString result;
    result.reserve(bytes.size() + bytes.size() / 16);
    qsizetype start = 0;
    while (start < bytes.size()) {
        qsizetype end = bytes.indexOf('\n', start);
        const qsizetype next = end < 0 ? bytes.size() : end + 1;
        if (end < 0)
            end = bytes.size();
        qsizetype lineEnd = end;
        if (lineEnd > start && bytes.at(lineEnd - 1) == '\r')
            --lineEnd;
        result += QString::fromUtf8(bytes.constData() + start, lineEnd - start);
        result += QLatin1String("\r\n");
        start = next;
    }
    return result;
}

bool appendToLogFile(const QString& path, const QString& text)
{
    QDir().mkpath(QFileInfo(path).absolutePath());
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Append))
        return false;
    const QByteArray bytes = text.toUtf8();
    const bool written = file.write(bytes) == bytes.size();
    return file.flush() && written;
}

bool emptyLogFile(const QString& path)
{
    QDir().mkpath(QFileInfo(path).absolutePath());
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly))
        return false;
    file.write("\r\n", 2);
    return file.commit();
}

} // namespace vindaro::oplog
