// A program with an operation log and nothing else, for the test of being killed by a signal:
//   pending_log_probe LOG_FILE
// Logs one entry, prints "READY" and waits in its event loop until a signal ends it.
#include "oplog/OperationLog.h"
#include "oplog/PendingLogOnSignal.h"

#include <QCoreApplication>

#include <cstdio>

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    if (argc != 2)
        return 64;
    vindaro::oplog::OperationLogOptions options;
    options.logFilePath = QString::fromLocal8Bit(argv[1]);
    vindaro::oplog::OperationLog log(options);
    vindaro::oplog::PendingLogOnSignal writer([&log] { log.writeRunningText(); });
    log.GetFileCopyLog(QStringLiteral("文件跳过：2,048字节"));
    // A change still in the queue when the signal comes is written too.
    log.changeQueue().addChanges({{vindaro::oplog::kCreate, QStringLiteral("/probe/new.dat"), {}}});
    std::puts(writer.isActive() ? "READY" : "NO HANDLER");
    std::fflush(stdout);
    return app.exec();
}
