#include "ResourceTexts.h"

#include "LocalText.h"
#include "ResourceBytes.h"

#include <QStringEncoder>

namespace vindaro::info::resources {

namespace {

const QString kLineEnd = QStringLiteral("\r\n");

struct TypeText
{
    int type;
    const char* text;
};
constexpr TypeText kTypeTexts[] = {
    {1, "Hardware-dependent cursor resource"},
    {2, "Bitmap resource"},
    {3, "Hardware-dependent icon resource"},
    {4, "Menu resource"},
    {5, "Dialog box"},
    {6, "String-table entry"},
    {7, "Font directory resource"},
    {8, "Font resource"},
    {9, "Accelerator table"},
    {10, "Application-defined resource (raw data)"},
    {11, "Message-table entry"},
    {12, "Hardware-independent cursor resource"},
    {14, "Hardware-independent icon resource"},
    {16, "Version resource"},
    {17, "Header file that contains menu and dialog box #define statements"},
    {19, "Plug and play resource"},
    {20, "VXD"},
    {21, "Animated cursor"},
    {22, "Animated icon"},
    {23, "HTML document"},
};

struct KeyName
{
    int key;
    const char* name;
};
constexpr KeyName kKeyNames[] = {
    {3, "CANCEL"},
    {8, "BACKSPACE"},
    {9, "TAB"},
    {12, "CLEAR"},
    {13, "ENTER"},
    {16, "SHIFT"},
    {17, "CTRL"},
    {18, "MENU"},
    {19, "PAUSE"},
    {20, "CAPS LOCK"},
    {27, "ESC"},
    {32, "SPACEBAR"},
    {33, "PAGE UP"},
    {34, "PAGE DOWN"},
    {35, "END"},
    {36, "HOME"},
    {37, "LEFT ARROW"},
    {38, "UP ARROW"},
    {39, "RIGHT ARROW"},
    {40, "DOWN ARROW"},
    {41, "SELECT"},
    {42, "PRINT SCREEN"},
    {43, "EXECUTE"},
    {44, "SNAPSHOT"},
    {45, "INS"},
    {46, "DEL"},
    {47, "HELP"},
    {144, "NUM LOCK"},
};

// A listing longer than this is cut: the text box refuses anything past 1,024,000 code-page bytes anyway,
// and a hostile message table whose blocks all point at the same entries would otherwise grow with the
// square of its size.
constexpr qsizetype kListingCharLimit = 4 * 1024 * 1024;

// Text of a string or message as its line shows it: cut at the first NUL, each LF made CR LF, then each
// CR CR LF made CR LF (a CR LF in the resource thus stays one line end).
QString lineText(QString text)
{
    const qsizetype nul = text.indexOf(QChar(0));
    if (nul >= 0)
        text.truncate(nul);
    text.replace(QStringLiteral("\n"), QStringLiteral("\r\n"));
    text.replace(QStringLiteral("\r\r\n"), QStringLiteral("\r\n"));
    return text;
}

// Menu templates. Both begin with a version word and the offset of the first item counted from the end of
// the offset word.
// Classic (version 0) item: WORD flags; WORD id unless MF_POPUP; UTF-16 text with its NUL. A popup's items
// follow it at once; MF_END marks the last item of a level.
// Extended (version 1, header ends with a DWORD help id) item: DWORD type, DWORD state, DWORD id,
// WORD resInfo (0x01 popup, 0x80 last), UTF-16 text with its NUL, padding to a DWORD; a popup then has a
// DWORD help id before its items.
constexpr quint16 kMfChecked = 0x0008;
constexpr quint16 kMfPopup = 0x0010;
constexpr quint16 kMfEnd = 0x0080;
constexpr quint32 kMftSeparator = 0x0800;
constexpr quint32 kMfsChecked = 0x0008;
constexpr quint16 kMenuExPopup = 0x01;
constexpr quint16 kMenuExLast = 0x80;
// Deeper menus than this are taken for a hostile template (the recursion is capped, not the bytes).
constexpr int kMaxMenuDepth = 32;
constexpr qsizetype kMaxMenuText = 256;

struct MenuItem
{
    bool separator = false;
    bool checked = false;
    quint32 commandId = 0;
    QString text;
};

void appendMenuLine(QString& listing, int depth, const MenuItem& item)
{
    listing += QString(depth * 5, QLatin1Char('.'));
    if (item.separator) {
        listing += QStringLiteral("[MENU SEPARATOR]");
    } else {
        listing += item.text.left(kMaxMenuText);
        if (item.checked)
            listing += QStringLiteral(" (checked)");
        listing += QStringLiteral(" (cmdID = %1)").arg(item.commandId);
    }
    listing += kLineEnd;
}

bool walkClassicMenu(ResourceBytes& in, int depth, QString& listing)
{
    if (depth > kMaxMenuDepth)
        return false;
    while (true) {
        const auto flags = in.u16();
        if (!flags)
            return false;
        MenuItem item;
        const bool popup = (*flags & kMfPopup) != 0;
        if (!popup) {
            const auto id = in.u16();
            if (!id)
                return false;
            item.commandId = *id;
        }
        const auto text = in.utf16z();
        if (!text)
            return false;
        item.text = *text;
        item.checked = (*flags & kMfChecked) != 0;
        // What the resource compiler writes for SEPARATOR: no flags, no id, no text (or MF_SEPARATOR itself).
        item.separator = !popup
            && (((*flags & ~kMfEnd) == 0 && item.commandId == 0 && item.text.isEmpty())
                || (*flags & kMftSeparator) != 0);
        appendMenuLine(listing, depth, item);
        if (popup && !walkClassicMenu(in, depth + 1, listing))
            return false;
        if ((*flags & kMfEnd) != 0)
            return true;
    }
}

bool walkExtendedMenu(ResourceBytes& in, int depth, QString& listing)
{
    if (depth > kMaxMenuDepth)
        return false;
    while (true) {
        const auto type = in.u32();
        const auto state = in.u32();
        const auto id = in.u32();
        const auto resInfo = in.u16();
        if (!type || !state || !id || !resInfo)
            return false;
        const auto text = in.utf16z();
        if (!text || !in.alignToDword())
            return false;
        MenuItem item;
        item.separator = (*type & kMftSeparator) != 0;
        item.checked = (*state & kMfsChecked) != 0;
        item.commandId = *id;
        item.text = *text;
        appendMenuLine(listing, depth, item);
        if ((*resInfo & kMenuExPopup) != 0) {
            if (!in.u32()) // the popup's help id
                return false;
            if (!walkExtendedMenu(in, depth + 1, listing))
                return false;
        }
        if ((*resInfo & kMenuExLast) != 0)
            return true;
    }
}

} // namespace

QString resourceTypeText(int type)
{
    for (const TypeText& entry : kTypeTexts) {
        if (entry.type == type)
            return QString::fromLatin1(entry.text);
    }
    return QStringLiteral("User-defined custom resource");
}

std::optional<QString> menuListing(const QByteArray& menuResource)
{
    ResourceBytes in(menuResource);
    const auto version = in.u16();
    const auto offset = in.u16();
    if (!version || !offset || *version > 1)
        return std::nullopt;
    if (!in.skip(*offset))
        return std::nullopt;
    QString listing;
    if (in.atEnd())
        return listing; // a menu without items
    const bool walked = *version == 0 ? walkClassicMenu(in, 0, listing) : walkExtendedMenu(in, 0, listing);
    if (!walked)
        return std::nullopt;
    return listing;
}

std::optional<QString> stringTableListing(const QByteArray& stringTable, int tableNumber)
{
    if (stringTable.isEmpty() || tableNumber < 1)
        return std::nullopt;
    ResourceBytes in(stringTable);
    QString listing;
    const qint64 firstNumber = (static_cast<qint64>(tableNumber) - 1) * 16;
    // Sixteen counted strings; a table cut short between two strings still lists the ones it has.
    for (int i = 0; i < 16 && !in.atEnd(); ++i) {
        const auto length = in.u16();
        if (!length || !in.has(static_cast<qsizetype>(*length) * 2))
            return std::nullopt;
        if (*length == 0)
            continue;
        QString text(*length, Qt::Uninitialized);
        for (int c = 0; c < *length; ++c)
            text[c] = QChar(*in.u16());
        listing += QString::number(firstNumber + i) + QStringLiteral(": ") + lineText(text) + kLineEnd;
    }
    return listing;
}

QString acceleratorKeyName(int virtualKey)
{
    if ((virtualKey >= '0' && virtualKey <= '9') || (virtualKey >= 'A' && virtualKey <= 'Z'))
        return QString(QChar(virtualKey));
    if (virtualKey >= 112 && virtualKey <= 127)
        return QStringLiteral("F%1").arg(virtualKey - 111);
    for (const KeyName& entry : kKeyNames) {
        if (entry.key == virtualKey)
            return QString::fromLatin1(entry.name);
    }
    return QStringLiteral("Virtual Key %1").arg(virtualKey);
}

// Entries of 8 bytes: WORD flags (0x04 Shift, 0x08 Ctrl, 0x10 Alt, 0x80 last entry), WORD key, WORD command,
// WORD padding. A table without the last-entry flag ends with its bytes; a tail shorter than an entry is
// ignored.
std::optional<QString> acceleratorListing(const QByteArray& acceleratorTable)
{
    if (acceleratorTable.size() < 8)
        return std::nullopt;
    ResourceBytes in(acceleratorTable);
    QString listing;
    while (in.has(8)) {
        const quint16 flags = *in.u16();
        const quint16 key = *in.u16();
        const quint16 command = *in.u16();
        in.skip(2);
        if (flags & 0x04)
            listing += QStringLiteral("Shift+");
        if (flags & 0x08)
            listing += QStringLiteral("Ctrl+");
        if (flags & 0x10)
            listing += QStringLiteral("Alt+");
        listing += acceleratorKeyName(key) + QStringLiteral(" (cmdID = %1)").arg(command) + kLineEnd;
        if (flags & 0x80)
            break;
    }
    return listing;
}

// DWORD block count; blocks of DWORD lowest id, DWORD highest id, DWORD offset of the first entry; entries of
// WORD length (header included), WORD flags (1: UTF-16, else ANSI), text.
std::optional<QString> messageTableListing(const QByteArray& messageTable)
{
    ResourceBytes in(messageTable);
    const auto blockCount = in.u32();
    if (!blockCount || static_cast<quint64>(*blockCount) * 12 > static_cast<quint64>(in.left()))
        return std::nullopt;
    QString listing;
    for (quint32 block = 0; block < *blockCount; ++block) {
        in.seek(4 + static_cast<qsizetype>(block) * 12);
        const quint32 lowest = *in.u32();
        const quint32 highest = *in.u32();
        const quint32 entriesOffset = *in.u32();
        ResourceBytes entry(messageTable);
        if (!entry.seek(entriesOffset))
            return std::nullopt;
        for (quint64 number = lowest; number <= highest; ++number) {
            const qsizetype entryStart = entry.offset();
            const auto length = entry.u16();
            const auto flags = entry.u16();
            if (!length || !flags)
                return std::nullopt;
            // A zero length never advances, so every later number of the block would repeat it: nothing more.
            if (*length == 0)
                break;
            if (*length < 4 || !entry.seek(entryStart) || !entry.has(*length))
                return std::nullopt;
            const QByteArray textBytes = messageTable.mid(entryStart + 4, *length - 4);
            QString text;
            if (*flags == 1) {
                text.resize(textBytes.size() / 2);
                for (qsizetype c = 0; c < text.size(); ++c)
                    text[c] = QChar(static_cast<quint16>(static_cast<quint8>(textBytes[2 * c])
                        | (static_cast<quint8>(textBytes[2 * c + 1]) << 8)));
            } else {
                const qsizetype nul = textBytes.indexOf('\0');
                text = decodeLocalText(nul >= 0 ? textBytes.first(nul) : textBytes);
            }
            listing += QString::number(number) + QStringLiteral(": ") + lineText(text);
            if (listing.size() > kListingCharLimit)
                return listing;
            entry.seek(entryStart + *length);
        }
    }
    return listing;
}

// Each line: offset (8 hex digits), " | ", 16 × "XX ", "| ", 16 characters, CR LF: 79 characters with the
// line end. The last line is padded with blanks in both columns to the same width, so the character column
// stays aligned. Bytes below 32 and from 127 on show as "." (a lone byte from 0x80 on is half a character in
// the double-byte code pages our users have, and one ASCII character per byte keeps the line's width).
QString hexDump(const QByteArray& bytes)
{
    constexpr qsizetype kMaxDumpBytes = 13264; // 829 lines of 79 characters stay below 65,535
    if (bytes.size() > kMaxDumpBytes)
        return {};
    static const char kHex[] = "0123456789ABCDEF";
    QString dump;
    dump.reserve((bytes.size() + 15) / 16 * 79);
    for (qsizetype lineStart = 0; lineStart < bytes.size(); lineStart += 16) {
        dump += QStringLiteral("%1 | ").arg(lineStart, 8, 16, QLatin1Char('0')).toUpper();
        QString characters;
        for (qsizetype at = lineStart; at < lineStart + 16; ++at) {
            if (at < bytes.size()) {
                const auto b = static_cast<quint8>(bytes[at]);
                dump += QLatin1Char(kHex[b >> 4]);
                dump += QLatin1Char(kHex[b & 0xF]);
                dump += QLatin1Char(' ');
                characters += b < 32 || b >= 127 ? QLatin1Char('.') : QLatin1Char(static_cast<char>(b));
            } else {
                dump += QStringLiteral("   ");
                characters += QLatin1Char(' ');
            }
        }
        dump += QStringLiteral("| ") + characters + kLineEnd;
    }
    return dump;
}

TextAppend textToAppend(const QString& text)
{
    constexpr qint64 kRaisedLimit = 1024000;
    constexpr qint64 kDefaultLimit = 65535;
    // Length in the system code page's bytes, as the text box counts it.
    QStringEncoder encoder(tagCodePage().constData());
    const qint64 length = encoder.isValid() ? QByteArray(encoder.encode(text)).size() : text.toUtf8().size();
    TextAppend append;
    if (length > kRaisedLimit) {
        append.text = QStringLiteral("Length of current text is:") + QString::number(length) + kLineEnd
            + QStringLiteral("This text is too long") + kLineEnd
            + QStringLiteral("Save it as file and view with notepad ") + kLineEnd;
        return append;
    }
    append.text = text;
    if (length >= kDefaultLimit)
        append.limit = static_cast<int>(kRaisedLimit);
    return append;
}

} // namespace vindaro::info::resources
