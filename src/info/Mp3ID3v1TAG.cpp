#include "Mp3ID3v1TAG.h"

#include "DeviceReader.h"
#include "LocalText.h"

#include <QFile>
#include <QFileInfo>
#include <QLocale>

#include <cmath>

namespace vindaro::info {

namespace {

constexpr qsizetype kTitle = 0;
constexpr qsizetype kArtist = 30;
constexpr qsizetype kAlbum = 60;
constexpr qsizetype kYear = 90;
constexpr qsizetype kComment = 94;
constexpr qsizetype kTrack = 123;
constexpr qsizetype kGenre = 124;

// Kept exactly as our users have always seen it, spelling included.
const char kGenres[]
    = "Blues|Classic Rock|Country|Dance|Disco|Funk|Grunge|Hip-Hop|Jazz|Metal|New "
      "Age|Oldies|Other|Pop|R&B|Rap|"
      "Reggae|Rock|Techno|Industrial|Alternative|Ska|Death Metal|Pranks|Soundtrack|Euro-Techno|Ambient|"
      "Trip Hop|Vocal|Jazz+Funk|Fusion|Trance|Classical|Instrumental|Acid|House|Game|Sound Clip|Gospel|Noise|"
      "Alt. Rock|Bass|Soul|Punk|Space|Meditative|Instrumental Pop|Instrumental Rock|Ethnic|Gothic|Darkwave|"
      "Techno-Industrial|Electronic|Pop-Folk|Eurodance|Dream|Southern Rock|Comedy|Cult|Gangsta Rap|Top 40|"
      "Christian Rap|Pop/Punk|Jungle|Native American|Cabaret|New Wave|Phychedelic|Rave|Showtunes|Trailer|"
      "Lo-Fi|Tribal|Acid Punk|Acid Jazz|Polka|Retro|Musical|Rock & Roll|Hard Rock|Folk|Folk/Rock|"
      "National Folk|Swing|Fast-Fusion|Bebob|Latin|Revival|Celtic|Blue Grass|Avantegarde|Gothic Rock|"
      "Progressive Rock|Psychedelic Rock|Symphonic Rock|Slow Rock|Big Band|Chorus|Easy Listening|Acoustic|"
      "Humour|Speech|Chanson|Opera|Chamber Music|Sonata|Symphony|Booty Bass|Primus|Porn Groove|Satire|"
      "Slow Jam|Club|Tango|Samba|Folklore|Ballad|power Ballad|Rhythmic Soul|Freestyle|Duet|Punk Rock|"
      "Drum Solo|A Capella|Euro-House|Dance Hall|Goa|Drum & Bass|Club-House|Hardcore|Terror|indie|Brit Pop|"
      "Negerpunk|Polsk Punk|Beat|Christian Gangsta Rap|Heavy Metal|Black Metal|Crossover|"
      "Comteporary Christian|Christian Rock|Merengue|Salsa|Trash Metal|Anime|JPop|Synth Pop";

bool isSignificant(QByteArrayView bytes, qsizetype at, const CharSpan& span)
{
    if (span.multiByte)
        return true;
    const auto b = static_cast<uchar>(bytes[at]);
    return span.length == 1 && b >= 33 && b <= 126;
}

// A whole number from 0 to 255, rounded halves to even, or -1.
int byteValue(const QString& text)
{
    bool ok = false;
    const double value = QLocale::c().toDouble(text.trimmed(), &ok);
    if (!ok || !std::isfinite(value))
        return -1;
    double whole = std::floor(value);
    const double fraction = value - whole;
    if (fraction > 0.5 || (fraction == 0.5 && std::fmod(whole, 2.0) != 0.0))
        whole += 1.0;
    if (whole < 0.0 || whole > 255.0)
        return -1;
    return static_cast<int>(whole);
}

} // namespace

Mp3ID3v1TAG::Mp3ID3v1TAG()
    : m_record(kRecordBytes, '\0')
{
}

bool Mp3ID3v1TAG::getId3(const QString& path)
{
    QFile file(path);
    if (QFileInfo(path).isDir() || !file.open(QIODevice::ReadOnly))
        return false;
    return getId3(file);
}

bool Mp3ID3v1TAG::getId3(QIODevice& device)
{
    DeviceReader reader(device);
    const qint64 length = reader.size();
    if (length < kTagBytes)
        return false;
    if (reader.readAt(length - kTagBytes, 3) != "TAG")
        return false; // the marker is case-sensitive: "tag" is not a tag
    const QByteArray record = reader.readAt(length - kRecordBytes, kRecordBytes);
    if (record.size() != kRecordBytes)
        return false; // the file shrank under us; keep what we had
    m_record = record;
    return true;
}

bool Mp3ID3v1TAG::saveId3(const QString& path)
{
    QFile file(path);
    if (!QFileInfo(path).isFile() || !file.open(QIODevice::ReadWrite | QIODevice::ExistingOnly))
        return false;
    const bool saved = saveId3(file);
    return file.flush() && saved;
}

bool Mp3ID3v1TAG::saveId3(QIODevice& device)
{
    const qint64 length = device.size();
    bool hasTag = false;
    if (length >= kTagBytes && device.seek(length - kTagBytes)) {
        char marker[3];
        hasTag = device.read(marker, 3) == 3 && QByteArrayView(marker, 3) == "TAG";
    }
    if (hasTag)
        return device.seek(length - kRecordBytes) && device.write(m_record) == kRecordBytes;
    return device.seek(length) && device.write("TAG", 3) == 3 && device.write(m_record) == kRecordBytes;
}

QString Mp3ID3v1TAG::trimmedField(Field field)
{
    const QByteArrayView bytes = QByteArrayView(m_record).sliced(field.offset, field.width);
    const TextEncoding encoding = detectEncoding(bytes, true);
    // Keep from the first significant character to the end of the last one: printable ASCII other than
    // the blank, or a multi-byte character of the code page. Blanks between them stay.
    qsizetype first = -1;
    qsizetype end = 0;
    for (qsizetype at = 0; at < bytes.size();) {
        const CharSpan span = charAt(bytes, at, encoding);
        if (isSignificant(bytes, at, span)) {
            if (first < 0)
                first = at;
            end = at + span.length;
        }
        at += span.length;
    }
    // A copy: `bytes` looks into m_record, which is rewritten next.
    const QByteArray kept = first < 0 ? QByteArray() : bytes.sliced(first, end - first).toByteArray();
    m_record.replace(field.offset, field.width, padField(kept, field.width, encoding));
    return decodeAs(kept, encoding);
}

void Mp3ID3v1TAG::setField(Field field, const QString& text)
{
    m_record.replace(field.offset, field.width, encodeField(text, field.width));
}

QString Mp3ID3v1TAG::title()
{
    return trimmedField({kTitle, 30});
}

QString Mp3ID3v1TAG::artist()
{
    const QString text = trimmedField({kArtist, 30});
    return text.isEmpty() ? QStringLiteral("未知艺术家") : text;
}

QString Mp3ID3v1TAG::album()
{
    return trimmedField({kAlbum, 30});
}

QString Mp3ID3v1TAG::year()
{
    return trimmedField({kYear, 4});
}

QString Mp3ID3v1TAG::comments()
{
    // NUL, blank and byte 255 go wherever they stand ("Ripped by X" reads "RippedbyX"). None of them can
    // be the second byte of a GB18030 or UTF-8 character, so removing them never splits one.
    QByteArray cleaned;
    for (char c : QByteArrayView(m_record).sliced(kComment, 29)) {
        if (c != '\0' && c != ' ' && c != '\xFF')
            cleaned.append(c);
    }
    const TextEncoding encoding = detectEncoding(cleaned, true);
    m_record.replace(kComment, 29, padField(cleaned, 29, encoding));
    return decodeAs(cleaned, encoding);
}

QString Mp3ID3v1TAG::track() const
{
    const auto value = static_cast<uchar>(m_record[kTrack]);
    // 32 is a blank left by writers whose comment takes all 30 bytes.
    return value == 0 || value == 32 ? QString() : QString::number(value);
}

QString Mp3ID3v1TAG::genre() const
{
    const auto value = static_cast<uchar>(m_record[kGenre]);
    const QStringList genres = getGenreList();
    return value < genres.size() ? genres.at(value) : QStringLiteral("None");
}

void Mp3ID3v1TAG::setTitle(const QString& text)
{
    setField({kTitle, 30}, text);
}

void Mp3ID3v1TAG::setArtist(const QString& text)
{
    setField({kArtist, 30}, text);
}

void Mp3ID3v1TAG::setAlbum(const QString& text)
{
    setField({kAlbum, 30}, text);
}

void Mp3ID3v1TAG::setYear(const QString& text)
{
    setField({kYear, 4}, text);
}

void Mp3ID3v1TAG::setComments(const QString& text)
{
    setField({kComment, 29}, text);
}

bool Mp3ID3v1TAG::setTrack(const QString& text)
{
    const int value = byteValue(text);
    if (value < 0)
        return false;
    m_record[kTrack] = static_cast<char>(value);
    return true;
}

bool Mp3ID3v1TAG::setGenre(const QString& text)
{
    const int value = byteValue(text);
    if (value < 0)
        return false;
    m_record[kGenre] = static_cast<char>(value);
    return true;
}

QStringList Mp3ID3v1TAG::getGenreList()
{
    static const QStringList genres = QString::fromLatin1(kGenres).split(QLatin1Char('|'));
    return genres;
}

} // namespace vindaro::info
