#include "InfoText.h"

#include "FlashInformation.h"
#include "MP3Information.h"
#include "Mp3ID3v1TAG.h"

namespace vindaro::info {

namespace {

const QString kNewLine = QStringLiteral("\r\n");

QString hyphens(qsizetype count)
{
    return QString(count, QLatin1Char('-'));
}

} // namespace

QString id3v1TextBlock(Mp3ID3v1TAG& tag)
{
    QString text;
    text += kNewLine + QStringLiteral("[ID3v1信息]") + hyphens(32);
    text += kNewLine + QStringLiteral("曲名：") + tag.title();
    text += kNewLine + QStringLiteral("艺人：") + tag.artist();
    text += kNewLine + QStringLiteral("专集：") + tag.album();
    text += kNewLine + QStringLiteral("年份：") + tag.year();
    text += kNewLine + QStringLiteral("流派：") + tag.genre();
    text += kNewLine + QStringLiteral("音轨序号：") + tag.track();
    text += kNewLine + QStringLiteral("备注：") + tag.comments();
    return text;
}

QString mpegTextBlock(const MP3Information& mpeg)
{
    // A file without any 0xFF byte has no header; say so instead of an offset.
    const QString header
        = mpeg.headerOffset() < 0 ? QStringLiteral("未找到") : mpeg.header() + QStringLiteral("字节");
    QString text = kNewLine;
    text += kNewLine + QStringLiteral("[MPEG信息]") + hyphens(33);
    text += kNewLine + QStringLiteral("长度：%1秒").arg(mpeg.seconds());
    text += kNewLine + QStringLiteral("标头创建于：") + header;
    text += kNewLine + QStringLiteral("%1kbit/s  %2帧").arg(mpeg.bitRate()).arg(mpeg.frames());
    text += kNewLine + QStringLiteral("%1Hz  ").arg(mpeg.frequency()) + mpeg.mode();
    text += kNewLine + mpeg.versionLayer();
    text += kNewLine + QStringLiteral("CRCs：") + mpeg.crcs();
    text += kNewLine + QStringLiteral("版权作品：") + mpeg.copyrighted();
    text += kNewLine + QStringLiteral("正本原件：") + mpeg.original();
    text += kNewLine + QStringLiteral("信号加重：") + mpeg.emphasis();
    text += kNewLine + hyphens(43);
    return text;
}

QString flashTextBlock(const FlashInformation& flash)
{
    QString text;
    text += kNewLine + QStringLiteral("帧    数：%1帧").arg(flash.frames());
    text += kNewLine + QStringLiteral("速    度：%1帧/秒").arg(flash.speed());
    text += kNewLine + QStringLiteral("版    本：Flash ") + flash.version();
    text += kNewLine + QStringLiteral("长    度：") + flash.secondsText() + QStringLiteral("秒");
    text += kNewLine + QStringLiteral("宽 × 高：%1×%2像素").arg(flash.width()).arg(flash.height());
    return text;
}

QString mp3Summary(const QString& path)
{
    QString text;
    Mp3ID3v1TAG tag;
    if (tag.getId3(path))
        text += id3v1TextBlock(tag);
    // Two runs, as the property window has always made them: setting the name reads the header once and
    // the window asks again. The second run starts from what the first left, which shows where a step
    // fails: a reserved sampling frequency keeps the frame size, and the padding byte is added again.
    MP3Information mpeg;
    mpeg.setFileName(path);
    mpeg.getMpegInfo();
    text += mpegTextBlock(mpeg);
    return text;
}

QString flashSummary(const QString& path)
{
    FlashInformation flash;
    return flash.getFlashInformation(path) ? flashTextBlock(flash) : QString();
}

} // namespace vindaro::info
