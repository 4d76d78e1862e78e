#pragma once

#include <QByteArray>
#include <QDateTime>
#include <QString>
#include <QStringList>
#include <QtGlobal>

#include <array>
#include <map>
#include <optional>
#include <vector>

namespace vindaro::copy {

// What is known of one stretch of a source. The values are the status characters of GNU ddrescue's
// mapfiles, so a map goes to and comes from that tool unchanged.
enum class RescueState : char
{
    Copied = '+', // read and written
    Untried = '?', // skipped: never read
    NonTrimmed = '*', // a read of several sectors failed here: its sectors are still to be tried one by one
    NonScraped = '/', // only in maps from ddrescue: trimmed, the inner sectors not yet tried one by one
    Bad = '-', // a read of one sector failed
};
inline constexpr std::array<RescueState, 5> kRescueStates = {RescueState::Copied, RescueState::Untried,
    RescueState::NonTrimmed, RescueState::NonScraped, RescueState::Bad};

// The state for a status character, or nothing for any other character.
std::optional<RescueState> rescueStateFromChar(char c);

// [offset, offset + length) of a source, 0-based, in one state.
struct RescueRange
{
    qint64 offset = 0;
    qint64 length = 0;
    RescueState state = RescueState::Untried;

    qint64 end() const { return offset + length; }
    friend bool operator==(const RescueRange& a, const RescueRange& b)
    {
        return a.offset == b.offset && a.length == b.length && a.state == b.state;
    }
};

// The state of every byte of one copy's source, as source offsets (a plain copy writes each byte at the
// same offset of its destination).
//
// Promises:
// - The ranges are contiguous, cover [0, size()) and never have two neighbours in the same state: after
//   any call, ranges() is the shortest exact description of the bytes' states.
// - mark() costs O(log n) plus the ranges it swallows; stateAt() and rangeAt() O(log n); the byte count
//   of a state O(1). Sizes and offsets are 64-bit.
class RescueMap
{
public:
    // A map of `size` bytes, all in `initial`.
    explicit RescueMap(qint64 size = 0, RescueState initial = RescueState::Untried);

    qint64 size() const { return m_size; }
    // Sets [offset, offset + length) to `state`; the part outside [0, size()) is ignored.
    void mark(qint64 offset, qint64 length, RescueState state);
    // A source that grew or shrank: bytes past the old end come in `grown`; bytes past the new end go.
    void resize(qint64 newSize, RescueState grown = RescueState::Untried);

    // The state of the byte at `offset`, which must lie in [0, size()).
    RescueState stateAt(qint64 offset) const;
    // The whole range that holds `offset` (in [0, size())).
    RescueRange rangeAt(qint64 offset) const;
    // The first range in `state` that holds a byte at or after `from`, cut to begin no earlier than
    // `from`; nothing when there is none. Walks the ranges from `from`: a walk over the whole map visits
    // each range once.
    std::optional<RescueRange> nextRange(RescueState state, qint64 from) const;

    // Every range in order.
    std::vector<RescueRange> ranges() const;
    // The ranges that touch [offset, offset + length), cut to it.
    std::vector<RescueRange> ranges(qint64 offset, qint64 length) const;
    int rangeCount() const { return int(m_starts.size()); }

    qint64 bytes(RescueState state) const { return m_bytes[index(state)]; }
    // Every byte copied (an empty map is complete).
    bool isComplete() const { return bytes(RescueState::Copied) == m_size; }

    friend bool operator==(const RescueMap& a, const RescueMap& b)
    {
        return a.m_size == b.m_size && a.m_starts == b.m_starts;
    }
    friend bool operator!=(const RescueMap& a, const RescueMap& b) { return !(a == b); }

private:
    using Starts = std::map<qint64, RescueState>;
    static int index(RescueState state);
    qint64 endOf(Starts::const_iterator it) const;
    // Makes `offset` (in (0, size())) the start of a range, splitting the range that holds it.
    void split(qint64 offset);
    // Joins the range starting at `it` to the one before it when both are in the same state.
    void joinWithPrevious(Starts::iterator it);

    qint64 m_size = 0;
    Starts m_starts; // the start of every range and its state; holds 0 whenever m_size > 0
    std::array<qint64, kRescueStates.size()> m_bytes{}; // bytes per state, in the order of kRescueStates
};

// ---- GNU ddrescue mapfiles -------------------------------------------------------------------------

// The status line of a mapfile: where the tool that wrote it was and in which phase ('?' copying, '*'
// trimming, '/' scraping, '-' retrying, 'F' filling, 'G' generating, '+' finished) and pass.
struct MapfileStatus
{
    qint64 currentOffset = 0;
    char phase = '?';
    int pass = 1;
};

// What a mapfile said when it was not taken. `line` is 1-based, 0 where no one line is to blame;
// `offset` and `figure` hold the positions the message names (see RescueMessages.h).
enum class MapfileError
{
    None,
    Unreadable, // the file could not be opened or read (`detail`: the system's words)
    TooLarge, // larger than kMaxMapfileBytes
    NoStatusLine, // nothing but comments and blank lines
    BadStatusLine, // the first line that is not a comment is not "position phase [pass]"
    BadBlockLine, // not "position size status", or a number that is not one
    BadBlockStatus, // a status other than + - / * ?
    EmptyBlock, // a block of 0 bytes
    NotFromZero, // the first block does not start at 0 (`offset`: where it starts)
    Gap, // a block starts after the previous one ends (`offset`: previous end, `figure`: its start)
    Overlap, // a block starts inside the previous one
    Unsorted, // a block starts before the previous one
    TooBig, // a block ends past the largest file size there is
    Shorter, // the map ends before the source does (`offset`: map end, `figure`: source size)
    Longer, // the map ends after the source does (likewise)
};

struct MapfileResult
{
    MapfileError error = MapfileError::None;
    int line = 0;
    qint64 offset = 0;
    qint64 figure = 0;
    QString detail;
    RescueMap map; // empty unless error is None
    MapfileStatus status;

    bool ok() const { return error == MapfileError::None; }
};

inline constexpr qint64 kMaxMapfileBytes = qint64(256) * 1024 * 1024;

// Reads a mapfile's text. `sourceSize` >= 0: the map must end exactly there; -1: the map's own end is
// its size. A map without blocks is all untried, as ddrescue reads it.
MapfileResult parseMapfile(const QByteArray& text, qint64 sourceSize);
// The same from a file (at most kMaxMapfileBytes): nothing is changed whatever the outcome.
MapfileResult readMapfile(const QString& path, qint64 sourceSize);

// What the comment header of an exported map says.
struct MapfileHeader
{
    QString creator; // "Vindaro 2.0.0": the program and its version
    QString commandLine; // may be empty
    QDateTime savedAt; // may be invalid: no time line
    QStringList notes; // further comment lines, each without its "# "
};
// The phase a map is in, as ddrescue would say it: copying while bytes are untried, then trimming,
// scraping, else finished.
char mapfilePhase(const RescueMap& map);
// The status line for a map when its writer says none: that phase, pass 1, at the first byte the phase
// works on (0 when finished).
MapfileStatus mapfileStatusOf(const RescueMap& map);
// The mapfile text of `map` as ddrescue writes it: the comment header, the status line (`status`, or
// mapfileStatusOf() without one) and every range in hex.
QByteArray formatMapfile(
    const RescueMap& map, const MapfileHeader& header, std::optional<MapfileStatus> status = {});
// Writes formatMapfile() to `path` through QSaveFile: on failure the file there stays as it was and
// `errorString` says why in the program's words.
bool writeMapfile(const QString& path, const RescueMap& map, const MapfileHeader& header,
    QString& errorString, std::optional<MapfileStatus> status = {});

} // namespace vindaro::copy
