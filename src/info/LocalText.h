#pragma once

#include <QByteArray>
#include <QByteArrayView>
#include <QString>

// Text in tags and archive names is bytes of the user's code page. Our users write Chinese text in the
// GB18030 family (GBK is a subset) or, on newer systems, UTF-8; these helpers tell the two apart and never
// split a character.
namespace vindaro::info {

enum class TextEncoding
{
    Utf8,
    Gb18030,
};

// Utf8 when the bytes are valid UTF-8 (pure ASCII included), else Gb18030. With `allowCutTail` a field that
// is valid UTF-8 except for one character cut off by its end (what a writer that cuts at the width leaves)
// still counts as UTF-8.
TextEncoding detectEncoding(QByteArrayView bytes, bool allowCutTail = false);

// Length in bytes of the character at `at` (1 to 4), and whether it is a complete multi-byte character of
// the encoding. An invalid byte is a one-byte character that is not `multiByte`.
struct CharSpan
{
    int length = 1;
    bool multiByte = false;
};
CharSpan charAt(QByteArrayView bytes, qsizetype at, TextEncoding encoding);

// Decodes with the given encoding; an incomplete UTF-8 character at the end is dropped.
QString decodeAs(QByteArrayView bytes, TextEncoding encoding);
// detectEncoding() then decodeAs().
QString decodeLocalText(QByteArrayView bytes);

// The code page of tag text that is not UTF-8, from the codeset of the user's locale: a double-byte code
// page outside the GB family (Big5 in Taiwan and Hong Kong, EUC-KR, CP949) is the user's own; anything else
// (UTF-8, plain ASCII, the GB family, single-byte pages) means GB18030, because the players our users feed
// tags to read ID3v1 text in the Chinese code page, and a UTF-8 locale says nothing about what they read.
QByteArray tagCodePageFor(const QByteArray& localeCodeset);
// tagCodePageFor() of the running program's locale (nl_langinfo(CODESET)).
QByteArray tagCodePage();

// Bytes of `text` in `codePage` (default: tagCodePage()), cut after the last whole character that fits
// `width` bytes and padded with blanks to it: a double-byte (or four-byte) character that would straddle the
// end is dropped, never halved. UTF-8 tags are still read, whatever is written.
QByteArray encodeField(const QString& text, qsizetype width, const QByteArray& codePage = tagCodePage());

// Pads or cuts `bytes` to `width` with blanks, keeping whole characters (used to store cleaned fields).
QByteArray padField(QByteArrayView bytes, qsizetype width, TextEncoding encoding);

} // namespace vindaro::info
