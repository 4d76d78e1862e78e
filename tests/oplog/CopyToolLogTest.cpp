#include <QFile>
#include <QProcess>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace {

// vindaro-copy prints its entries as before and appends them, stamped, to the same OperationNotes.log as
// the window, in the user's data folder; a second run follows the first's empty line.
TEST(CopyToolLog, EntriesGoToTheOperationLogFile)
{
    QTemporaryDir dir;
    const QString source = dir.filePath(QStringLiteral("source.dat"));
    {
        QFile file(source);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(QByteArray(100000, 'v'));
    }
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    env.insert(QStringLiteral("XDG_DATA_HOME"), dir.filePath(QStringLiteral("data")));
    QStringList printed;
    for (const char* name : {"first.dat", "second.dat"}) {
        QProcess tool;
        tool.setProcessEnvironment(env);
        tool.start(QStringLiteral(VINDARO_COPY_TOOL),
            {QStringLiteral("-q"), source, dir.filePath(QString::fromLatin1(name))});
        ASSERT_TRUE(tool.waitForFinished(60000));
        ASSERT_EQ(tool.exitCode(), 0) << tool.readAllStandardError().toStdString();
        const QString out = QString::fromUtf8(tool.readAllStandardOutput());
        EXPECT_TRUE(out.startsWith(source + QLatin1Char('\n'))) << out.toStdString();
        printed << out;
    }
    QFile log(dir.filePath(QStringLiteral("data/vindaro/OperationNotes.log")));
    ASSERT_TRUE(log.open(QIODevice::ReadOnly));
    const QStringList runs = QString::fromUtf8(log.readAll()).split(QStringLiteral("\r\n\r\n"));
    ASSERT_EQ(runs.size(), 3) << runs.join(QStringLiteral("|")).toStdString();
    EXPECT_TRUE(runs[2].isEmpty());
    for (int i = 0; i < 2; ++i) {
        EXPECT_TRUE(runs[i].startsWith(QLatin1Char('['))) << runs[i].toStdString();
        // The same text as printed, with CR LF line ends after its stamp.
        const QString entry = runs[i].mid(runs[i].indexOf(QStringLiteral("] ")) + 2);
        EXPECT_EQ(entry, printed[i].chopped(1).replace(QLatin1Char('\n'), QStringLiteral("\r\n")));
    }
}

} // namespace
