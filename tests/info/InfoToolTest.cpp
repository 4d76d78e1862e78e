// The command-line tool, run as a user would: one good file of each kind, a missing one and one that is no
// module, and a Video CD image made at test time.
#include "InfoSamples.h"
#include "fakes/VcdImage.h"
#include "info_pe/PeBuilder.h"

#include <QProcess>
#include <QRegularExpression>
#include <QTemporaryDir>

#include <gtest/gtest.h>

using namespace vindaro::testing;

namespace {

// The tool's exit code and standard output; its error output goes to `err`.
std::pair<int, QString> runTool(const QStringList& arguments, QString* err = nullptr)
{
    QProcess tool;
    tool.start(QStringLiteral(VINDARO_INFO_TOOL), arguments);
    EXPECT_TRUE(tool.waitForFinished(30000));
    if (err)
        *err = QString::fromUtf8(tool.readAllStandardError());
    return {tool.exitCode(), QString::fromUtf8(tool.readAllStandardOutput())};
}

TEST(InfoTool, PrintsSummariesAndFailsForMissingFiles)
{
    QTemporaryDir dir;
    const QString mp3 = dir.filePath(QStringLiteral("歌.MP3"));
    const QString swf = dir.filePath(QStringLiteral("m.swf"));
    const QString zip = dir.filePath(QStringLiteral("a.zip"));
    const QString dll = dir.filePath(QStringLiteral("库.DLL"));
    const QString exe = dir.filePath(QStringLiteral("plain.exe"));
    const QString notModule = dir.filePath(QStringLiteral("text.exe"));
    const QString missing = dir.filePath(QStringLiteral("gone.mp3"));
    // Reserved sampling frequency, padded: the tool reads the header twice as the window does, so the frame
    // size is 2 (0, plus the padding byte in each run) and 418,000 bytes make 209,000 frames.
    const QString reserved = dir.filePath(QStringLiteral("r.mp3"));
    ASSERT_TRUE(writeFile(reserved, mpegStream(QByteArray("\xFF\xFB\x9E\x64", 4), 0, 418000)));
    Id3Fields tag;
    tag.title = Id3Fields::field("Song", 30);
    tag.genre = 17;
    ASSERT_TRUE(writeFile(mp3, mpegStream(kMpegHeader, 0, 4180000 - 128) + tag.tag()));
    ASSERT_TRUE(writeFile(swf, flashMovie("FWS", 15, 11000, 8000, 0, 12, 120)));
    ASSERT_TRUE(writeFile(zip, zipArchive({ZipEntry{"docs/"}})));
    PeBuilder pe(true);
    pe.add(14, 1, 0x0804, QByteArray(20, 'i'))
        .add(99, 2, 0x0804, "x")
        .add("AVI", "INTRO", 0x0804, QByteArray(1234, 'a'))
        .add(16, 1, 0x0804, PeBuilder::versionResource({{"ProductName", "Vindaro"}, {"FileVersion", "1.0"}}));
    ASSERT_TRUE(writeFile(dll, pe.build()));
    ASSERT_TRUE(writeFile(exe, PeBuilder().build()));
    ASSERT_TRUE(writeFile(notModule, "MZ but nothing else"));

    QString err;
    const auto [code, out] = runTool({mp3, swf, zip, missing, reserved, dll, exe, notModule}, &err);
    EXPECT_EQ(code, 1);
    // The summaries as the window shows them, with plain line ends.
    for (const char* part : {"[ID3v1信息]--------------------------------\n曲名：Song\n", "流派：Rock\n",
             "\n长度：261秒\n标头创建于：0字节\n128kbit/s  10000帧\n",
             "\n长度：26秒\n标头创建于：0字节\n128kbit/s  209000帧\n0Hz  ",
             "长    度：10秒\n宽 × 高：550×400像素\n", "[01][文件夹]docs/\t\t2003-01-01 12:00:00\n",
             "文件夹数：1 个\n文 件 数：0 个\n总计大小：0 KB\n",
             // a module: its tree, sizes and version text
             "资源：\nAVI\tAVI\n\tINTRO\t1234 字节\n#14\tHardware-independent icon resource\n\t1\t20 字节\n"
             "#16\tVersion resource\n\t1\t",
             "#99\tUser-defined custom resource\n\t2\t1 字节\n",
             "版本信息：\nFileVersion:\n\t1.0\nProductName:\n\tVindaro\n",
             "（没有资源）\n版本信息：\n（没有版本信息）\n"})
        EXPECT_TRUE(out.contains(QString::fromUtf8(part))) << part << "\n" << out.toStdString();
    EXPECT_FALSE(out.contains(QLatin1Char('\r')));
    EXPECT_TRUE(err.contains(QStringLiteral("无法读取文件“%1”").arg(missing))) << err.toStdString();
    EXPECT_TRUE(err.contains(notModule)) << err.toStdString();

    EXPECT_EQ(runTool({zip}).first, 0);
    const auto [helpCode, help] = runTool({QStringLiteral("--help")});
    EXPECT_EQ(helpCode, 0);
    EXPECT_TRUE(help.startsWith(QStringLiteral("用法：")));
    const auto [versionCode, version] = runTool({QStringLiteral("--version")});
    EXPECT_EQ(versionCode, 0);
    EXPECT_TRUE(
        QRegularExpression(QStringLiteral("^vindaro-info \\d+\\.\\d+\\.\\d+\n$")).match(version).hasMatch());
}

TEST(InfoTool, ListsADiscsTracksAndFilesWithTheirTrueSizes)
{
    QTemporaryDir dir;
    const VcdImage image = VcdImage::make(dir.path());
    ASSERT_TRUE(image.made()) << image.error.toStdString();
    QString err;
    const auto [code, out] = runTool({image.cue}, &err);
    EXPECT_EQ(code, 0) << err.toStdString();
    EXPECT_TRUE(out.contains(QRegularExpression(QStringLiteral("\n1\t0\t\\d+\t数据（Mode 2 XA）\n"))))
        << out.toStdString();
    // The track: 2,324 bytes a sector, where the directory records 2,048 each.
    const QRegularExpressionMatch track = QRegularExpression(
        QStringLiteral("/MPEGAV/AVSEQ01.DAT\tMode 2 Form 2\t([0-9,]+)\t([0-9,]+)\t\\d+\t(\\d+)\n"))
                                              .match(out);
    ASSERT_TRUE(track.hasMatch()) << out.toStdString();
    const qint64 sectors = track.captured(3).toLongLong();
    EXPECT_GT(sectors, 0);
    EXPECT_EQ(track.captured(1).remove(QLatin1Char(',')).toLongLong(), sectors * 2324);
    EXPECT_EQ(track.captured(2).remove(QLatin1Char(',')).toLongLong(), sectors * 2048);
    EXPECT_TRUE(out.contains(QStringLiteral("/README.TXT\tMode 2 Form 1\t10,000\t10,000\t")));
    EXPECT_TRUE(out.contains(QStringLiteral("/MPEGAV/\t文件夹\n")));
}

} // namespace
