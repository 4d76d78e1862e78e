// vindaro-info on EXE and DLL files, run as a script would: the tree, sizes and version text.
#include "PeBuilder.h"

#include <QFile>
#include <QProcess>
#include <QTemporaryDir>

#include <gtest/gtest.h>

using vindaro::testing::PeBuilder;

TEST(InfoToolModule, PrintsTreeSizesAndVersionText)
{
    QTemporaryDir dir;
    ASSERT_TRUE(dir.isValid());
    const QString dll = dir.filePath(QStringLiteral("库.DLL"));
    const QString exe = dir.filePath(QStringLiteral("plain.exe"));
    const QString notModule = dir.filePath(QStringLiteral("text.exe"));
    PeBuilder pe(true);
    pe.add(14, 1, 0x0804, QByteArray(20, 'i'))
        .add(99, 2, 0x0804, "x")
        .add("AVI", "INTRO", 0x0804, QByteArray(1234, 'a'))
        .add(16, 1, 0x0804, PeBuilder::versionResource({{"ProductName", "Vindaro"}, {"FileVersion", "1.0"}}));
    for (const auto& [path, bytes] : {std::pair{dll, pe.build()}, std::pair{exe, PeBuilder().build()},
             std::pair{notModule, QByteArray("MZ but nothing else")}}) {
        QFile file(path);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(bytes);
    }

    QProcess tool;
    tool.start(QStringLiteral(VINDARO_INFO_TOOL), {dll, exe, notModule});
    ASSERT_TRUE(tool.waitForFinished(30000));
    const QString out = QString::fromUtf8(tool.readAllStandardOutput());
    EXPECT_EQ(tool.exitCode(), 1);
    EXPECT_TRUE(out.contains(QStringLiteral("资源：\n"
                                            "AVI\tAVI\n\tINTRO\t1234 字节\n"
                                            "#14\tHardware-independent icon resource\n\t1\t20 字节\n"
                                            "#16\tVersion resource\n\t1\t")))
        << out.toStdString();
    EXPECT_TRUE(out.contains(QStringLiteral("#99\tUser-defined custom resource\n\t2\t1 字节\n")));
    EXPECT_TRUE(out.contains(QStringLiteral("版本信息：\nFileVersion:\n\t1.0\nProductName:\n\tVindaro\n")));
    EXPECT_TRUE(out.contains(QStringLiteral("（没有资源）\n版本信息：\n（没有版本信息）\n")));
    EXPECT_TRUE(QString::fromUtf8(tool.readAllStandardError()).contains(notModule));
}
