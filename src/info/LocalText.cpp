#include "LocalText.h"

#include <langinfo.h>

#include <QStringDecoder>
#include <QStringEncoder>

namespace vindaro::info {

namespace {

inline uchar byteAt(QByteArrayView bytes, qsizetype at)
{
    return static_cast<uchar>(bytes[at]);
}

inline bool isContinuation(uchar b)
{
    return (b & 0xC0) == 0x80;
}

// Length of the UTF-8 sequence at `at`: 1-4 for a valid one, 0 for an invalid byte, -1 for a sequence that
// is valid so far but cut by the end of the bytes.
int utf8Length(QByteArrayView bytes, qsizetype at)
{
    const uchar b0 = byteAt(bytes, at);
    if (b0 < 0x80)
        return 1;
    int length = 0;
    uint minimum = 0;
    uint codePoint = 0;
    if (b0 >= 0xC2 && b0 <= 0xDF) {
        length = 2;
        minimum = 0x80;
        codePoint = b0 & 0x1Fu;
    } else if (b0 >= 0xE0 && b0 <= 0xEF) {
        length = 3;
        minimum = 0x800;
        codePoint = b0 & 0x0Fu;
    } else if (b0 >= 0xF0 && b0 <= 0xF4) {
        length = 4;
        minimum = 0x10000;
        codePoint = b0 & 0x07u;
    } else {
        return 0;
    }
    for (int i = 1; i < length; ++i) {
        if (at + i >= bytes.size())
            return -1;
        const uchar b = byteAt(bytes, at + i);
        if (!isContinuation(b))
            return 0;
        codePoint = (codePoint << 6) | (b & 0x3Fu);
        // Reject overlong forms, surrogates and values past U+10FFFF as early as they show.
        if (i == 1) {
            if ((length == 3 && b0 == 0xE0 && b < 0xA0) || (length == 3 && b0 == 0xED && b >= 0xA0)
                || (length == 4 && b0 == 0xF0 && b < 0x90) || (length == 4 && b0 == 0xF4 && b >= 0x90))
                return 0;
        }
    }
    if (codePoint < minimum)
        return 0;
    return length;
}

int gb18030Length(QByteArrayView bytes, qsizetype at)
{
    const uchar b0 = byteAt(bytes, at);
    if (b0 < 0x80)
        return 1;
    if (b0 == 0x80 || b0 == 0xFF)
        return 0;
    const qsizetype left = bytes.size() - at;
    if (left >= 2) {
        const uchar b1 = byteAt(bytes, at + 1);
        if ((b1 >= 0x40 && b1 <= 0x7E) || (b1 >= 0x80 && b1 <= 0xFE))
            return 2;
        if (left >= 4 && b1 >= 0x30 && b1 <= 0x39) {
            const uchar b2 = byteAt(bytes, at + 2);
            const uchar b3 = byteAt(bytes, at + 3);
            if (b2 >= 0x81 && b2 <= 0xFE && b3 >= 0x30 && b3 <= 0x39)
                return 4;
        }
    }
    return 0;
}

} // namespace

TextEncoding detectEncoding(QByteArrayView bytes, bool allowCutTail)
{
    for (qsizetype at = 0; at < bytes.size();) {
        const int length = utf8Length(bytes, at);
        if (length > 0) {
            at += length;
            continue;
        }
        if (length < 0 && allowCutTail)
            return TextEncoding::Utf8;
        return TextEncoding::Gb18030;
    }
    return TextEncoding::Utf8;
}

CharSpan charAt(QByteArrayView bytes, qsizetype at, TextEncoding encoding)
{
    CharSpan span;
    if (at < 0 || at >= bytes.size())
        return span;
    const int length = encoding == TextEncoding::Utf8 ? utf8Length(bytes, at) : gb18030Length(bytes, at);
    if (length <= 1)
        return span; // ASCII or an invalid byte
    span.length = length;
    span.multiByte = true;
    // C1 control characters (U+0080 to U+009F) are two-byte in UTF-8 but are not text.
    if (encoding == TextEncoding::Utf8 && length == 2 && byteAt(bytes, at) == 0xC2
        && byteAt(bytes, at + 1) < 0xA0)
        span.multiByte = false;
    return span;
}

QString decodeAs(QByteArrayView bytes, TextEncoding encoding)
{
    if (encoding == TextEncoding::Utf8) {
        // Drop one incomplete character at the end, as a writer cutting at the field's width leaves it.
        qsizetype end = bytes.size();
        for (qsizetype at = 0; at < bytes.size();) {
            const int length = utf8Length(bytes, at);
            if (length < 0) {
                end = at;
                break;
            }
            at += length > 0 ? length : 1;
        }
        return QString::fromUtf8(bytes.first(end));
    }
    QStringDecoder decoder(tagCodePage().constData());
    if (!decoder.isValid())
        return QString::fromLatin1(bytes); // not reached with an ICU-enabled Qt
    return decoder.decode(bytes);
}

QString decodeLocalText(QByteArrayView bytes)
{
    return decodeAs(bytes, detectEncoding(bytes));
}

QByteArray padField(QByteArrayView bytes, qsizetype width, TextEncoding encoding)
{
    qsizetype end = 0;
    while (end < bytes.size()) {
        const CharSpan span = charAt(bytes, end, encoding);
        if (end + span.length > width)
            break;
        end += span.length;
    }
    QByteArray field = bytes.first(end).toByteArray();
    field.append(width - field.size(), ' ');
    return field;
}

QByteArray tagCodePageFor(const QByteArray& localeCodeset)
{
    // Double-byte pages whose lead bytes (0x81 to 0xFE) and trail bytes follow the GB pattern, so fields
    // are cut between whole characters by the same rule.
    static const char* const kOwnPages[] = {"BIG5", "BIG5-HKSCS", "BIG5HKSCS", "EUC-KR", "CP949", "UHC"};
    const QByteArray name = localeCodeset.trimmed().toUpper();
    for (const char* page : kOwnPages) {
        if (name == page && QStringEncoder(page).isValid())
            return name;
    }
    return QByteArrayLiteral("GB18030");
}

QByteArray tagCodePage()
{
    static const QByteArray page = tagCodePageFor(QByteArray(nl_langinfo(CODESET)));
    return page;
}

QByteArray encodeField(const QString& text, qsizetype width, const QByteArray& codePage)
{
    QStringEncoder encoder(codePage.constData());
    const QByteArray bytes = encoder.isValid() ? QByteArray(encoder.encode(text)) : text.toUtf8();
    return padField(bytes, width, encoder.isValid() ? TextEncoding::Gb18030 : TextEncoding::Utf8);
}

} // namespace vindaro::info
