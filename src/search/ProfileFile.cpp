#include "ProfileFile.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QList>
#include <QSaveFile>

#include <sys/stat.h>
#include <unistd.h>

namespace vindaro::search {

namespace {

// One line of the file as the parser sees it; `raw` is kept byte for byte.
struct Line
{
    enum class Kind
    {
        Other, // blank, comment, or text outside the format
        Section,
        Key
    };
    QByteArray raw; // without its line end
    Kind kind = Kind::Other;
    QString name; // the section's or the key's name, blanks trimmed
    QByteArray value; // a key's value, blanks trimmed
};

struct Parsed
{
    QList<Line> lines;
    QByteArray lineEnd = "\n";
    bool endsWithLineEnd = true;
};

Parsed parse(const QByteArray& content)
{
    Parsed parsed;
    const qsizetype firstBreak = content.indexOf('\n');
    if (firstBreak > 0 && content.at(firstBreak - 1) == '\r')
        parsed.lineEnd = "\r\n";
    parsed.endsWithLineEnd = content.isEmpty() || content.endsWith('\n');
    QList<QByteArray> rows = content.split('\n');
    if (content.isEmpty() || content.endsWith('\n'))
        rows.removeLast(); // the empty text after the last line end
    for (QByteArray& row : rows) {
        Line line;
        if (row.endsWith('\r'))
            row.chop(1);
        line.raw = row;
        const QByteArray text = row.trimmed();
        if (text.startsWith('[')) {
            const qsizetype close = text.indexOf(']');
            line.kind = Line::Kind::Section;
            line.name = QString::fromUtf8(text.mid(1, close < 0 ? -1 : close - 1)).trimmed();
        } else if (!text.startsWith(';')) {
            const qsizetype equals = text.indexOf('=');
            if (equals > 0) {
                line.kind = Line::Kind::Key;
                line.name = QString::fromUtf8(text.left(equals)).trimmed();
                line.value = text.mid(equals + 1).trimmed();
            }
        }
        parsed.lines.append(line);
    }
    return parsed;
}

bool sameName(const QString& a, const QString& b)
{
    return a.compare(b, Qt::CaseInsensitive) == 0;
}

// The first section called `section`: the index of its header and one past its last line; nothing when
// there is none.
std::optional<std::pair<qsizetype, qsizetype>> sectionSpan(const Parsed& parsed, const QString& section)
{
    const QString wanted = section.trimmed();
    for (qsizetype i = 0; i < parsed.lines.size(); ++i) {
        const Line& line = parsed.lines.at(i);
        if (line.kind != Line::Kind::Section || !sameName(line.name, wanted))
            continue;
        qsizetype end = i + 1;
        while (end < parsed.lines.size() && parsed.lines.at(end).kind != Line::Kind::Section)
            ++end;
        return std::make_pair(i, end);
    }
    return std::nullopt;
}

QString unquoted(const QByteArray& value)
{
    if (value.size() >= 2 && (value.front() == '"' || value.front() == '\'') && value.back() == value.front())
        return QString::fromUtf8(value.mid(1, value.size() - 2));
    return QString::fromUtf8(value);
}

QString cut(const QString& text)
{
    if (text.size() <= ProfileFile::kValueChars)
        return text;
    QString kept = text.left(ProfileFile::kValueChars);
    if (kept.back().isHighSurrogate())
        kept.chop(1); // never half a character
    return kept;
}

// Read-only as the program shows it: the caller's permission class lacks the write bit (root included,
// who could write it all the same), or writing is refused.
bool isReadOnly(const QString& path)
{
    const QByteArray native = QFile::encodeName(path);
    struct stat st;
    if (::stat(native.constData(), &st) != 0)
        return false;
    mode_t writeBit = S_IWOTH;
    if (st.st_uid == ::geteuid())
        writeBit = S_IWUSR;
    else if (st.st_gid == ::getegid())
        writeBit = S_IWGRP;
    return (st.st_mode & writeBit) == 0 || ::access(native.constData(), W_OK) != 0;
}

} // namespace

std::optional<QString> ProfileFile::find(
    const QByteArray& content, const QString& section, const QString& key)
{
    const Parsed parsed = parse(content);
    const auto span = sectionSpan(parsed, section);
    if (!span)
        return std::nullopt;
    const QString wanted = key.trimmed();
    for (qsizetype i = span->first + 1; i < span->second; ++i) {
        const Line& line = parsed.lines.at(i);
        if (line.kind == Line::Kind::Key && sameName(line.name, wanted))
            return unquoted(line.value);
    }
    return std::nullopt;
}

QByteArray ProfileFile::withValue(
    const QByteArray& content, const QString& section, const QString& key, const QString& value)
{
    Parsed parsed = parse(content);
    const QByteArray newValue = value.toUtf8();
    const auto span = sectionSpan(parsed, section);
    if (!span) {
        if (!parsed.lines.isEmpty())
            parsed.lines.append(Line{}); // a blank line before the new section
        parsed.lines.append(Line{'[' + section.trimmed().toUtf8() + ']', Line::Kind::Section, {}, {}});
        parsed.lines.append(Line{key.trimmed().toUtf8() + '=' + newValue, Line::Kind::Key, {}, {}});
    } else {
        const QString wanted = key.trimmed();
        qsizetype lastKey = span->first;
        bool replaced = false;
        for (qsizetype i = span->first + 1; i < span->second && !replaced; ++i) {
            Line& line = parsed.lines[i];
            if (line.kind != Line::Kind::Key)
                continue;
            lastKey = i;
            if (sameName(line.name, wanted)) {
                // The key keeps its spelling and indentation; only the value changes.
                const qsizetype equals = line.raw.indexOf('=');
                line.raw = line.raw.left(equals + 1) + newValue;
                replaced = true;
            }
        }
        if (!replaced)
            parsed.lines.insert(
                lastKey + 1, Line{key.trimmed().toUtf8() + '=' + newValue, Line::Kind::Key, {}, {}});
    }
    QByteArray out;
    for (qsizetype i = 0; i < parsed.lines.size(); ++i) {
        out += parsed.lines.at(i).raw;
        const bool last = i + 1 == parsed.lines.size();
        if (!last || parsed.endsWithLineEnd || !span)
            out += parsed.lineEnd;
    }
    return out;
}

QString ProfileFile::readString(
    const QString& path, const QString& section, const QString& key, const QString& defaultValue)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return cut(defaultValue);
    return cut(find(file.readAll(), section, key).value_or(defaultValue));
}

bool ProfileFile::writeString(
    const QString& path, const QString& section, const QString& key, const QString& value)
{
    if (value.contains(u'\n') || value.contains(u'\r') || key.trimmed().isEmpty() || key.contains(u'='))
        return false;
    QByteArray content;
    QFile existing(path);
    if (existing.exists()) {
        // A file the user made read-only stays as it is, though the folder would let us replace it.
        if (isReadOnly(path) || !existing.open(QIODevice::ReadOnly))
            return false; // never replace what could not be read
        content = existing.readAll();
        existing.close();
    } else if (!QDir().mkpath(QFileInfo(path).absolutePath())) {
        return false;
    }
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly))
        return false;
    file.write(withValue(content, section, key, value));
    return file.commit();
}

} // namespace vindaro::search
