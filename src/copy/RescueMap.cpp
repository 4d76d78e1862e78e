#include "RescueMap.h"

#include "RescueMessages.h"

#include <QFile>
#include <QSaveFile>

#include <cstdio>
#include <cstring>
#include <iterator>
#include <limits>

namespace vindaro::copy {

std::optional<RescueState> rescueStateFromChar(char c)
{
    for (const RescueState state : kRescueStates) {
        if (char(state) == c)
            return state;
    }
    return std::nullopt;
}

RescueMap::RescueMap(qint64 size, RescueState initial)
    : m_size(size > 0 ? size : 0)
{
    if (m_size > 0) {
        m_starts.emplace(0, initial);
        m_bytes[index(initial)] = m_size;
    }
}

int RescueMap::index(RescueState state)
{
    switch (state) {
    case RescueState::Copied:
        return 0;
    case RescueState::Untried:
        return 1;
    case RescueState::NonTrimmed:
        return 2;
    case RescueState::NonScraped:
        return 3;
    case RescueState::Bad:
        return 4;
    }
    return 1;
}

qint64 RescueMap::endOf(Starts::const_iterator it) const
{
    const auto next = std::next(it);
    return next == m_starts.end() ? m_size : next->first;
}

void RescueMap::split(qint64 offset)
{
    if (offset <= 0 || offset >= m_size)
        return;
    auto it = m_starts.upper_bound(offset); // the range after the one that holds offset
    const auto holder = std::prev(it);
    if (holder->first != offset)
        m_starts.emplace_hint(it, offset, holder->second);
}

void RescueMap::joinWithPrevious(Starts::iterator it)
{
    if (it == m_starts.begin() || it == m_starts.end())
        return;
    if (std::prev(it)->second == it->second)
        m_starts.erase(it);
}

void RescueMap::mark(qint64 offset, qint64 length, RescueState state)
{
    if (length <= 0 || m_size == 0)
        return;
    if (offset < 0) {
        if (length <= -offset)
            return;
        length += offset;
        offset = 0;
    }
    if (offset >= m_size)
        return;
    const qint64 end = length > m_size - offset ? m_size : offset + length; // no overflow near 2^63

    // One lookup, then a walk over the ranges the mark covers: a start at `offset`, the covered ranges'
    // bytes taken from their states, a start at `end` for the rest of the last one.
    auto next = m_starts.upper_bound(offset);
    auto first = std::prev(next);
    if (first->first != offset)
        first = m_starts.emplace_hint(next, offset, first->second);
    auto it = first;
    RescueState lastState = first->second;
    qint64 lastEnd = offset;
    for (; it != m_starts.end() && it->first < end; ++it) {
        lastEnd = endOf(it);
        lastState = it->second;
        m_bytes[index(lastState)] -= (lastEnd < end ? lastEnd : end) - it->first;
    }
    if (lastEnd > end)
        it = m_starts.emplace_hint(it, end, lastState);
    m_starts.erase(std::next(first), it);
    first->second = state;
    m_bytes[index(state)] += end - offset;

    joinWithPrevious(std::next(first));
    joinWithPrevious(first);
}

void RescueMap::resize(qint64 newSize, RescueState grown)
{
    newSize = newSize > 0 ? newSize : 0;
    if (newSize < m_size) {
        split(newSize);
        for (auto it = m_starts.lower_bound(newSize); it != m_starts.end();) {
            m_bytes[index(it->second)] -= endOf(it) - it->first;
            it = m_starts.erase(it);
        }
        m_size = newSize;
    } else if (newSize > m_size) {
        const qint64 oldSize = m_size;
        m_size = newSize;
        const auto it = m_starts.emplace_hint(m_starts.end(), oldSize, grown);
        m_bytes[index(grown)] += newSize - oldSize;
        joinWithPrevious(it);
    }
}

RescueState RescueMap::stateAt(qint64 offset) const
{
    return rangeAt(offset).state;
}

RescueRange RescueMap::rangeAt(qint64 offset) const
{
    Q_ASSERT(offset >= 0 && offset < m_size);
    auto it = m_starts.upper_bound(offset);
    if (it == m_starts.begin())
        return {}; // only for an offset outside the map
    --it;
    return {it->first, endOf(it) - it->first, it->second};
}

std::optional<RescueRange> RescueMap::nextRange(RescueState state, qint64 from) const
{
    from = from > 0 ? from : 0;
    if (from >= m_size)
        return std::nullopt;
    for (auto it = std::prev(m_starts.upper_bound(from)); it != m_starts.end(); ++it) {
        if (it->second == state) {
            const qint64 begin = it->first > from ? it->first : from;
            return RescueRange{begin, endOf(it) - begin, state};
        }
    }
    return std::nullopt;
}

std::vector<RescueRange> RescueMap::ranges() const
{
    std::vector<RescueRange> all;
    all.reserve(m_starts.size());
    for (auto it = m_starts.begin(); it != m_starts.end(); ++it)
        all.push_back({it->first, endOf(it) - it->first, it->second});
    return all;
}

std::vector<RescueRange> RescueMap::ranges(qint64 offset, qint64 length) const
{
    std::vector<RescueRange> cut;
    if (offset < 0) {
        length += offset;
        offset = 0;
    }
    if (length <= 0 || offset >= m_size)
        return cut;
    const qint64 end = length > m_size - offset ? m_size : offset + length;
    for (auto it = std::prev(m_starts.upper_bound(offset)); it != m_starts.end() && it->first < end; ++it) {
        const qint64 begin = it->first > offset ? it->first : offset;
        const qint64 rangeEnd = endOf(it) < end ? endOf(it) : end;
        cut.push_back({begin, rangeEnd - begin, it->second});
    }
    return cut;
}

// ---- GNU ddrescue mapfiles -------------------------------------------------------------------------
//
// The text, one item a line:
//   # comments: '#' at the start of a line or after a blank runs to the end of the line
//   0x00120000     ?               1          status line: current position, phase, pass (pass optional)
//   0x00000000  0x00120000  +                 blocks: position, size, status; contiguous from 0
// Numbers are read as C reads an integer literal, as ddrescue reads them: "0x" hex, a leading "0" octal,
// else decimal.

namespace {

const char kPhases[] = "?*/-FG+";

bool isBlank(char c)
{
    return c == ' ' || c == '\t' || c == '\r' || c == '\v' || c == '\f';
}

// The line split at blanks, up to a comment.
std::vector<QByteArray> fieldsOf(const char* begin, const char* end)
{
    std::vector<QByteArray> fields;
    const char* p = begin;
    while (p < end) {
        while (p < end && isBlank(*p))
            ++p;
        if (p == end || *p == '#')
            break;
        const char* start = p;
        while (p < end && !isBlank(*p))
            ++p;
        fields.emplace_back(start, int(p - start));
    }
    return fields;
}

// A comment's text on one line, whatever the path or command line it quotes holds.
QByteArray oneLine(const QString& text)
{
    QByteArray bytes = text.toUtf8();
    bytes.replace('\n', ' ').replace('\r', ' ');
    return bytes;
}

bool isPhase(char c)
{
    return c != 0 && std::strchr(kPhases, c) != nullptr;
}

// A non-negative integer as C writes it; false for anything else or a value past qint64.
bool parseNumber(const QByteArray& text, qint64& value)
{
    int base = 10;
    int at = 0;
    if (text.size() > 2 && text[0] == '0' && (text[1] == 'x' || text[1] == 'X')) {
        base = 16;
        at = 2;
    } else if (text.size() > 1 && text[0] == '0') {
        base = 8;
        at = 1;
    }
    if (at >= text.size())
        return false;
    quint64 n = 0;
    constexpr quint64 kMax = quint64(std::numeric_limits<qint64>::max());
    for (; at < text.size(); ++at) {
        const char c = text[at];
        int digit = 0;
        if (c >= '0' && c <= '9')
            digit = c - '0';
        else if (c >= 'a' && c <= 'f')
            digit = c - 'a' + 10;
        else if (c >= 'A' && c <= 'F')
            digit = c - 'A' + 10;
        else
            return false;
        if (digit >= base || n > (kMax - quint64(digit)) / quint64(base))
            return false;
        n = n * quint64(base) + quint64(digit);
    }
    value = qint64(n);
    return true;
}

bool parsePass(const QByteArray& text, int& pass)
{
    bool ok = false;
    pass = text.toInt(&ok, 10);
    return ok && pass > 0 && text[0] != '+';
}

MapfileResult failure(MapfileError error, int line, qint64 offset = 0, qint64 figure = 0)
{
    MapfileResult result;
    result.error = error;
    result.line = line;
    result.offset = offset;
    result.figure = figure;
    return result;
}

} // namespace

MapfileResult parseMapfile(const QByteArray& text, qint64 sourceSize)
{
    MapfileResult result;
    bool haveStatus = false;
    std::vector<RescueRange> blocks;
    qint64 end = 0; // where the blocks read so far end
    int lineNumber = 0;
    const char* p = text.constData();
    const char* const textEnd = p + text.size();
    while (p < textEnd) {
        ++lineNumber;
        const char* lineEnd = static_cast<const char*>(std::memchr(p, '\n', size_t(textEnd - p)));
        if (!lineEnd)
            lineEnd = textEnd;
        const std::vector<QByteArray> fields = fieldsOf(p, lineEnd);
        p = lineEnd + 1;
        if (fields.empty())
            continue;

        if (!haveStatus) {
            qint64 position = 0;
            if (fields.size() < 2 || fields.size() > 3 || !parseNumber(fields[0], position)
                || fields[1].size() != 1 || !isPhase(fields[1][0])
                || (fields.size() == 3 && !parsePass(fields[2], result.status.pass)))
                return failure(MapfileError::BadStatusLine, lineNumber);
            result.status.currentOffset = position;
            result.status.phase = fields[1][0];
            haveStatus = true;
            continue;
        }

        qint64 position = 0;
        qint64 size = 0;
        if (fields.size() != 3 || !parseNumber(fields[0], position) || !parseNumber(fields[1], size)
            || fields[2].size() != 1)
            return failure(MapfileError::BadBlockLine, lineNumber);
        const std::optional<RescueState> state = rescueStateFromChar(fields[2][0]);
        if (!state)
            return failure(MapfileError::BadBlockStatus, lineNumber);
        if (size == 0)
            return failure(MapfileError::EmptyBlock, lineNumber, position);
        if (size > std::numeric_limits<qint64>::max() - position)
            return failure(MapfileError::TooBig, lineNumber, position);
        if (blocks.empty() && position != 0)
            return failure(MapfileError::NotFromZero, lineNumber, position);
        if (!blocks.empty()) {
            if (position < blocks.back().offset)
                return failure(MapfileError::Unsorted, lineNumber, end, position);
            if (position < end)
                return failure(MapfileError::Overlap, lineNumber, end, position);
            if (position > end)
                return failure(MapfileError::Gap, lineNumber, end, position);
        }
        blocks.push_back({position, size, *state});
        end = position + size;
    }
    if (!haveStatus)
        return failure(MapfileError::NoStatusLine, 0);
    if (blocks.empty())
        end = sourceSize >= 0 ? sourceSize : 0; // no blocks: all untried
    if (sourceSize >= 0 && end < sourceSize)
        return failure(MapfileError::Shorter, 0, end, sourceSize);
    if (sourceSize >= 0 && end > sourceSize)
        return failure(MapfileError::Longer, 0, end, sourceSize);

    result.map = RescueMap(end, RescueState::Untried);
    for (const RescueRange& block : blocks) {
        if (block.state != RescueState::Untried)
            result.map.mark(block.offset, block.length, block.state);
    }
    return result;
}

MapfileResult readMapfile(const QString& path, qint64 sourceSize)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        MapfileResult result = failure(MapfileError::Unreadable, 0);
        result.detail = file.errorString();
        return result;
    }
    if (file.size() > kMaxMapfileBytes)
        return failure(MapfileError::TooLarge, 0, file.size());
    const QByteArray text = file.readAll();
    if (file.error() != QFileDevice::NoError) {
        MapfileResult result = failure(MapfileError::Unreadable, 0);
        result.detail = file.errorString();
        return result;
    }
    return parseMapfile(text, sourceSize);
}

char mapfilePhase(const RescueMap& map)
{
    if (map.bytes(RescueState::Untried) > 0)
        return '?';
    if (map.bytes(RescueState::NonTrimmed) > 0)
        return '*';
    if (map.bytes(RescueState::NonScraped) > 0)
        return '/';
    return '+';
}

MapfileStatus mapfileStatusOf(const RescueMap& map)
{
    MapfileStatus status;
    status.phase = mapfilePhase(map);
    const std::optional<RescueState> worked = rescueStateFromChar(status.phase);
    if (status.phase != '+' && worked) {
        if (const auto range = map.nextRange(*worked, 0))
            status.currentOffset = range->offset;
    }
    return status;
}

QByteArray formatMapfile(
    const RescueMap& map, const MapfileHeader& header, std::optional<MapfileStatus> status)
{
    if (!status)
        status = mapfileStatusOf(map);

    QByteArray text;
    text.reserve(200 + map.rangeCount() * 28);
    text += "# Mapfile. Created by " + oneLine(header.creator) + '\n';
    if (!header.commandLine.isEmpty())
        text += "# Command line: " + oneLine(header.commandLine) + '\n';
    if (header.savedAt.isValid())
        text += "# Current time: " + header.savedAt.toLocalTime().toString(u"yyyy-MM-dd hh:mm:ss").toUtf8()
            + '\n';
    for (const QString& note : header.notes)
        text += "# " + oneLine(note) + '\n';
    text += "# current_pos  current_status  current_pass\n";
    char line[96];
    std::snprintf(line, sizeof line, "0x%08llX     %c               %d\n",
        static_cast<unsigned long long>(status->currentOffset), status->phase, status->pass);
    text += line;
    text += "#      pos        size  status\n";
    for (const RescueRange& range : map.ranges()) {
        std::snprintf(line, sizeof line, "0x%08llX  0x%08llX  %c\n",
            static_cast<unsigned long long>(range.offset), static_cast<unsigned long long>(range.length),
            char(range.state));
        text += line;
    }
    return text;
}

bool writeMapfile(const QString& path, const RescueMap& map, const MapfileHeader& header,
    QString& errorString, std::optional<MapfileStatus> status)
{
    const QByteArray bytes = formatMapfile(map, header, status);
    // Unbuffered, so that a short write on a full disk shows in write()'s count and nothing truncated is
    // renamed into place.
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Unbuffered) || file.write(bytes) != bytes.size()
        || !file.commit()) {
        errorString = msg::mapfileWriteFailed(path, file.errorString());
        file.cancelWriting();
        return false;
    }
    errorString.clear();
    return true;
}

} // namespace vindaro::copy
