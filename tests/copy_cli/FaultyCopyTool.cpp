// vindaro-copy over a file layer with injected faults, for the end-to-end tests only:
//   VINDARO_TEST_BAD_RANGES="offset:length,..."  reads touching these 0-based ranges fail with EIO
//   VINDARO_TEST_HANG_AT_READ=N                  the Nth read prints "HANG" on stderr and waits for a signal
//   VINDARO_TEST_HANG_FOREVER=1                  ...and never returns, whatever signals come
#include "copy/cli/CopyTool.h"
#include "platform/linux/LocalFileLayer.h"

#include <QCoreApplication>

#include <cerrno>
#include <cstdio>
#include <unistd.h>

using namespace vindaro;

namespace {

struct Range
{
    qint64 offset;
    qint64 length;
};

class FaultyFile final : public platform::RandomAccessFile
{
public:
    FaultyFile(std::unique_ptr<platform::RandomAccessFile> inner, const QList<Range>& bad, int& reads,
        int hangAt, bool hangsForever)
        : m_inner(std::move(inner))
        , m_bad(bad)
        , m_reads(reads)
        , m_hangAt(hangAt)
        , m_forever(hangsForever)
    {
    }
    platform::IoResult readAt(qint64 offset, char* data, qint64 maxBytes) override
    {
        if (++m_reads == m_hangAt) {
            std::fputs("HANG\n", stderr);
            std::fflush(stderr);
            do
                ::pause(); // a read stuck on a bad sector, until the user presses Ctrl-C
            while (m_forever);
        }
        for (const Range& r : m_bad) {
            if (offset < r.offset + r.length && r.offset < offset + maxBytes)
                return platform::IoResult::failure(EIO, QStringLiteral("Input/output error"));
        }
        return m_inner->readAt(offset, data, maxBytes);
    }
    platform::IoResult writeAt(qint64 offset, const char* data, qint64 bytes) override
    {
        return m_inner->writeAt(offset, data, bytes);
    }
    platform::IoResult sync() override { return m_inner->sync(); }
    platform::IoResult close() override { return m_inner->close(); }

private:
    std::unique_ptr<platform::RandomAccessFile> m_inner;
    const QList<Range>& m_bad;
    int& m_reads;
    int m_hangAt;
    bool m_forever;
};

class FaultyLayer final : public platform::LocalFileLayer
{
public:
    QList<Range> bad;
    int reads = 0;
    int hangAt = -1;
    bool hangForever = false;
    std::unique_ptr<platform::RandomAccessFile> openForReading(
        const QString& path, platform::IoResult& result) override
    {
        auto inner = LocalFileLayer::openForReading(path, result);
        if (!inner)
            return inner;
        return std::make_unique<FaultyFile>(std::move(inner), bad, reads, hangAt, hangForever);
    }
};

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    FaultyLayer files;
    for (const QString& item :
        qEnvironmentVariable("VINDARO_TEST_BAD_RANGES").split(QLatin1Char(','), Qt::SkipEmptyParts)) {
        const QStringList parts = item.split(QLatin1Char(':'));
        if (parts.size() == 2)
            files.bad.append(Range{parts[0].toLongLong(), parts[1].toLongLong()});
    }
    if (qEnvironmentVariableIsSet("VINDARO_TEST_HANG_AT_READ"))
        files.hangAt = qEnvironmentVariableIntValue("VINDARO_TEST_HANG_AT_READ");
    files.hangForever = qEnvironmentVariableIsSet("VINDARO_TEST_HANG_FOREVER");
    return copy::runCopyTool(app.arguments().mid(1), files);
}
