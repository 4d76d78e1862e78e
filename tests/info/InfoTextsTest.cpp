// Every text of the file information: the summaries of the readers, the property window's and the resource
// browser's texts, checked once against a golden file; the other tests check facts, not wording. After a
// deliberate change of a text, run with VINDARO_UPDATE_GOLDEN=1 to write the file anew and review its diff.
#include "FlashInformation.h"
#include "GoldenText.h"
#include "InfoSamples.h"
#include "InfoText.h"
#include "MP3Information.h"
#include "Mp3ID3v1TAG.h"
#include "PropertyTexts.h"
#include "ResourceBrowserModel.h"
#include "ZipInformation.h"
#include "resources/ResourcePictures.h"
#include "resources/ResourceTexts.h"

#include <QBuffer>
#include <QStringEncoder>

#include <gtest/gtest.h>

using namespace vindaro::info;
using namespace vindaro::testing;

namespace {

// A buffer over `bytes`, open for reading.
std::unique_ptr<QBuffer> reading(const QByteArray& bytes)
{
    auto buffer = std::make_unique<QBuffer>();
    buffer->setData(bytes);
    buffer->open(QIODevice::ReadOnly);
    return buffer;
}

TEST(InfoTexts, EveryTextIsTheGoldenOne)
{
    GoldenText golden;
    MP3Information mpeg;
    mpeg.getMpegInfo(*reading(mpegStream(kMpegHeader, 0, 4180000)));
    golden.add(QStringLiteral("mpeg block"), mpegTextBlock(mpeg));
    MP3Information none;
    none.getMpegInfo(*reading(QByteArray(300, 'a')));
    golden.add(QStringLiteral("mpeg block without a header"), mpegTextBlock(none));

    Id3Fields fields;
    fields.title = Id3Fields::field("Song", 30);
    fields.album = Id3Fields::field(QStringEncoder("GB18030").encode(QStringLiteral("专辑")), 30, ' ');
    fields.year = "2003";
    fields.comment = Id3Fields::field("Ripped by X", 29);
    fields.track = 7;
    fields.genre = 17;
    for (const Id3Fields& f : {fields, Id3Fields()}) {
        Mp3ID3v1TAG tag;
        EXPECT_TRUE(tag.getId3(*reading(f.tag())));
        golden.add(QStringLiteral("id3v1 block"), id3v1TextBlock(tag));
    }
    const QStringList genres = Mp3ID3v1TAG::getGenreList();
    for (qsizetype i = 0; i < genres.size(); ++i)
        golden.add(QStringLiteral("genre %1").arg(i), genres.at(i));

    FlashInformation flash;
    EXPECT_TRUE(flash.getFlashInformation(*reading(flashMovie("FWS", 15, 11000, 8000, 0, 12, 120))));
    golden.add(QStringLiteral("flash block"), flashTextBlock(flash));

    ZipInformation zip;
    zip.readZip(*reading(zipArchive({ZipEntry{"docs/"}, ZipEntry{"docs/a.txt", 1000, 250}})),
        [&golden](const ZipRow& r) {
            golden.add(QStringLiteral("zip row"),
                QStringList{r.text, r.size, r.modified, r.ratio, r.compressedSize, r.crc, r.toolTip}.join(
                    '|'));
            return true;
        });
    golden.add(QStringLiteral("zip summary"), zip.getFileQuantitySize().join(QLatin1Char('|')));
    golden.add(QStringLiteral("zip columns"), ZipInformation::columnCaptions().join(QLatin1Char('|')));
    for (const auto& [date, time] : {std::pair<quint16, quint16>{0x2E21, 0x6000}, {0, 0}, {0xFFFF, 0xFFFF}})
        golden.add(QStringLiteral("dos date"), ZipInformation::dosDateTime(date, time));

    // The property window: the general page's size line, the drive page's long and short forms.
    for (const qint64 bytes : {0LL, 1023LL, 1024LL, 1536LL, 1024000LL, 1024001LL, 2048000LL, 1048576LL,
             1073741823LL, 5368709120LL, 3298534883328LL})
        golden.add(QStringLiteral("size %1").arg(bytes),
            fileLengthText(bytes) + QLatin1Char('|') + spaceLongText(bytes) + QLatin1Char('|')
                + spaceShortText(bytes));
    for (const auto& [part, total] : {std::pair<qint64, qint64>{1, 4}, {1, 3}, {2, 3}, {0, 0}, {7, 7}})
        golden.add(QStringLiteral("percent %1/%2").arg(part).arg(total), percentText(part, total));
    golden.add(QStringLiteral("drive name"),
        driveNameText(QStringLiteral("/media/cd"), QStringLiteral("1A2B"), 1, 3, 4));
    golden.add(
        QStringLiteral("drive tab"), driveTabCaption(QStringLiteral("本地磁盘"), QStringLiteral("/home")));

    // The resource browser.
    for (int type = 0; type <= 24; ++type)
        golden.add(QStringLiteral("resource type %1").arg(type), resources::resourceTypeText(type));
    golden.add(QStringLiteral("resource type 240"), resources::resourceTypeText(240));
    for (int key = 0; key < 256; ++key)
        golden.add(QStringLiteral("key %1").arg(key), resources::acceleratorKeyName(key));
    for (const char* type : {"1", "2", "12", "14", "png", "WMF", "EMF", "6", "AVI"})
        golden.add(QStringLiteral("image type %1").arg(QLatin1String(type)),
            resources::imageTypeText(QString::fromLatin1(type)));
    golden.add(QStringLiteral("resource header"),
        resourceHeaderText(QStringLiteral("Bitmap resource"), QStringLiteral("#7"), 17));
    golden.add(QStringLiteral("picture lines"),
        resourcePictureLines(QStringLiteral("Menu resource"), QStringLiteral("#2"), 0)
            .join(QLatin1Char('|')));
    golden.add(QStringLiteral("load error"), QString::fromLatin1(kLoadError));
    const char* const contents[] = {"picture", "text", "all string tables", "bytes"};
    for (const auto& [type, name] : {std::pair{"1", "#1"}, {"12", "#1"}, {"2", "#1"}, {"14", "#1"},
             {"4", "#1"}, {"16", "#1"}, {"6", "#1"}, {"6", ""}, {"23", "#1"}, {"avi", "#1"}, {"GIF", "LOGO"},
             {"10", "#1"}, {"10", ""}, {"", ""}}) {
        const auto plan = exportPlanFor(QString::fromLatin1(type), QString::fromLatin1(name));
        golden.add(QStringLiteral("export %1 %2").arg(QLatin1String(type), QLatin1String(name)),
            plan ? qtFilterString(plan->filters) + QStringLiteral(" -> ")
                    + QLatin1String(contents[static_cast<int>(plan->content)])
                 : QStringLiteral("no resource selected"));
    }
    golden.add(
        QStringLiteral("text too long"), resources::textToAppend(QString(1024001, QLatin1Char('a'))).text);
    golden.check(QStringLiteral(VINDARO_GOLDEN_DIR "/info_texts.txt"));
}

} // namespace
