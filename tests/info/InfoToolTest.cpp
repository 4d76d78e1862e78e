// The command-line tool, run as a user would: one good file of each kind and a missing one, and a Video
// CD image made at test time.
#include "fakes/VcdImage.h"

#include <QFile>
#include <QProcess>
#include <QRegularExpression>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace {

void writeFile(const QString& path, const QByteArray& bytes)
{
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(bytes);
}

TEST(InfoTool, PrintsSummariesAndFailsForMissingFiles)
{
    QTemporaryDir dir;
    const QString mp3 = dir.filePath(QStringLiteral("歌.MP3"));
    const QString swf = dir.filePath(QStringLiteral("m.swf"));
    const QString zip = dir.filePath(QStringLiteral("a.zip"));
    const QString missing = dir.filePath(QStringLiteral("gone.mp3"));
    // Reserved sampling frequency, padded: the tool reads the header twice as the window does, so the frame
    // size is 2 (0, plus the padding byte in each run) and 418,000 bytes make 209,000 frames.
    const QString reserved = dir.filePath(QStringLiteral("r.mp3"));
    writeFile(reserved, QByteArray("\xFF\xFB\x9E\x64", 4) + QByteArray(418000 - 4, '\0'));
    QByteArray tag = QByteArray("TAG") + QByteArray("Song").leftJustified(30, '\0') + QByteArray(95, '\0');
    tag[127] = 17;
    writeFile(mp3, QByteArray("\xFF\xFB\x90\x64", 4) + QByteArray(4180000 - 132, '\0') + tag);
    // N = 15: Xmax 11000, Ymax 8000 twips; 12 fps; 120 frames.
    writeFile(swf, QByteArray::fromHex("46575306000000007800055f00000fa000000c78004302112233"));
    writeFile(zip,
        QByteArray::fromHex("504b03041400000000000060212e0000000000000000000000000500"
                            "0000646f63732f504b0102"));

    QProcess tool;
    tool.start(QStringLiteral(VINDARO_INFO_TOOL), {mp3, swf, zip, missing, reserved});
    ASSERT_TRUE(tool.waitForFinished(30000));
    const QString out = QString::fromUtf8(tool.readAllStandardOutput());
    const QString err = QString::fromUtf8(tool.readAllStandardError());
    EXPECT_EQ(tool.exitCode(), 1);
    EXPECT_TRUE(out.contains(QStringLiteral("[ID3v1信息]--------------------------------\n曲名：Song\n")))
        << out.toStdString();
    EXPECT_TRUE(out.contains(QStringLiteral("流派：Rock\n")));
    EXPECT_TRUE(out.contains(QStringLiteral("\n长度：261秒\n标头创建于：0字节\n128kbit/s  10000帧\n")));
    EXPECT_TRUE(out.contains(QStringLiteral("\n长度：26秒\n标头创建于：0字节\n128kbit/s  209000帧\n0Hz  ")))
        << out.toStdString();
    EXPECT_TRUE(out.contains(QStringLiteral("长    度：10秒\n宽 × 高：550×400像素\n"))) << out.toStdString();
    EXPECT_TRUE(out.contains(QStringLiteral("[01][文件夹]docs/\t\t2003-01-01 12:00:00\n")));
    EXPECT_TRUE(out.contains(QStringLiteral("文件夹数：1 个\n文 件 数：0 个\n总计大小：0 KB\n")));
    EXPECT_FALSE(out.contains(QLatin1Char('\r')));
    EXPECT_TRUE(err.contains(QStringLiteral("无法读取文件“%1”").arg(missing))) << err.toStdString();

    QProcess help;
    help.start(QStringLiteral(VINDARO_INFO_TOOL), {QStringLiteral("--help")});
    ASSERT_TRUE(help.waitForFinished(30000));
    EXPECT_EQ(help.exitCode(), 0);
    EXPECT_TRUE(QString::fromUtf8(help.readAllStandardOutput()).startsWith(QStringLiteral("用法：")));

    QProcess version;
    version.start(QStringLiteral(VINDARO_INFO_TOOL), {QStringLiteral("--version")});
    ASSERT_TRUE(version.waitForFinished(30000));
    EXPECT_EQ(version.exitCode(), 0);
    EXPECT_TRUE(QRegularExpression(QStringLiteral("^vindaro-info \\d+\\.\\d+\\.\\d+\n$"))
                    .match(QString::fromUtf8(version.readAllStandardOutput()))
                    .hasMatch());

    QProcess good;
    good.start(QStringLiteral(VINDARO_INFO_TOOL), {zip});
    ASSERT_TRUE(good.waitForFinished(30000));
    EXPECT_EQ(good.exitCode(), 0);
}

TEST(InfoTool, ListsADiscsTracksAndFilesWithTheirTrueSizes)
{
    QTemporaryDir dir;
    const vindaro::testing::VcdImage image = vindaro::testing::VcdImage::make(dir.path());
    ASSERT_TRUE(image.made()) << image.error.toStdString();
    QProcess tool;
    tool.start(QStringLiteral(VINDARO_INFO_TOOL), {image.cue});
    ASSERT_TRUE(tool.waitForFinished(30000));
    const QString out = QString::fromUtf8(tool.readAllStandardOutput());
    EXPECT_EQ(tool.exitCode(), 0) << tool.readAllStandardError().toStdString();
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
