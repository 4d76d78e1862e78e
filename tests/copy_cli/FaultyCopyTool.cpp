// vindaro-copy over a file layer with injected faults, for the end-to-end tests only:
//   VINDARO_TEST_BAD_RANGES="offset:length,..."  reads touching these 0-based ranges fail with EIO
//   VINDARO_TEST_HANG_AT_READ=N                  the Nth read prints "HANG" on stderr and waits for a signal
//                                                (SIGINT, SIGTERM and SIGHUP come only there)
//   VINDARO_TEST_HANG_FOREVER=1                  ...and never returns, whatever signals come
//   VINDARO_TEST_CHECKPOINT_MS=N                 the record and map are saved every N ms, not every 30 s
#include "copy/BlockCopier.h"
#include "copy/cli/CopyTool.h"
#include "platform/linux/LocalFileLayer.h"

#include <QCoreApplication>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <pthread.h>
#include <unistd.h>

using namespace vindaro;

namespace {

const sigset_t& heldSignals()
{
    static const sigset_t held = [] {
        sigset_t set;
        sigemptyset(&set);
        for (const int signal : {SIGINT, SIGTERM, SIGHUP})
            sigaddset(&set, signal);
        return set;
    }();
    return held;
}

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
            // A read stuck on a bad sector, until the user presses Ctrl-C. Every thread holds these signals
            // (see main), so the one that comes is taken here, however soon after "HANG", and handed to the
            // program's own handler as the kernel would have.
            std::fputs("HANG\n", stderr);
            std::fflush(stderr);
            do {
                int signal = 0;
                if (::sigwait(&heldSignals(), &signal) != 0)
                    break;
                struct sigaction current
                {
                };
                ::sigaction(signal, nullptr, &current);
                if (current.sa_handler == SIG_DFL || current.sa_handler == SIG_IGN)
                    ::_exit(128 + signal);
                current.sa_handler(signal);
            } while (m_forever);
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
    // Held by every thread from the start: they come only to a read that hangs (see readAt), which is
    // where the tests send them.
    pthread_sigmask(SIG_BLOCK, &heldSignals(), nullptr);
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
    if (qEnvironmentVariableIsSet("VINDARO_TEST_CHECKPOINT_MS"))
        copy::BlockCopier::setCheckpointInterval(qEnvironmentVariableIntValue("VINDARO_TEST_CHECKPOINT_MS"));
    return copy::runCopyTool(app.arguments().mid(1), files);
}
