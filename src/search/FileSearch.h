#pragma once

#include "SearchRules.h"

#include <QObject>
#include <QStringList>

#include <memory>

class QTimer;

namespace vindaro::search {

class SearchResults;

// One search at a time of the search window: its state (searching, stop requested, exact-name mode,
// found count), the status line, and the walk, which runs on a thread of its own.
//
// Order as the user sees it: the list is emptied, then the files found arrive in walk order while the
// status line follows the path being examined (both taken over every kPollMillis, and at most
// kAppendBudgetMillis of appending per turn of the event loop, so the window keeps answering however fast
// the walk finds); at the end the count is shown and the list refreshed, or, with nothing found, emptied
// and given the "not found" text.
//
// A stop takes effect at once: the count of what the list received is shown and the search is over,
// while the walk's thread notices the request at its next entry and ends on its own. What it found after
// the stop is dropped. A new search may start at once; the stopped walk can no longer reach the list.
class FileSearch : public QObject
{
    Q_OBJECT

public:
    static constexpr int kMessageMillis = 2000; // how long the missing-input message stands
    static constexpr int kPollMillis = 40;
    static constexpr int kAppendBudgetMillis = 15;

    explicit FileSearch(SearchResults& results, QObject* parent = nullptr);
    ~FileSearch() override;

    // The search of `pattern` below `scope`. With either text empty only the message shows, for
    // kMessageMillis, and false is returned; nothing else changes.
    bool StartSearch(const QString& scope, const QString& pattern, const SearchOptions& options);
    // The stop button: ends the running search now (nothing without one).
    void requestStop();

    bool isSearching() const { return m_searching; }
    bool isExactNameMode() const { return m_exactName; }
    int foundCount() const { return m_found; }
    QString statusText() const { return m_status; }
    // Entries the latest walk has examined so far (files and folders).
    qint64 examinedCount() const;
    // How long the latest walk took on its thread, in nanoseconds; 0 until it has ended.
    qint64 walkNanoseconds() const;

signals:
    void statusTextChanged(const QString& text);
    // True when a search starts; false when it has ended, normally or by a stop.
    void searchingChanged(bool searching);
    void finished(int foundCount, bool stopped);

private:
    struct Shared;
    void setStatus(const QString& text);
    void takeOver();
    void finish(bool stopped);

    SearchResults& m_results;
    std::shared_ptr<Shared> m_shared; // the latest walk's, shared with its thread
    bool m_searching = false;
    bool m_exactName = false;
    int m_found = 0;
    QString m_status;
    QStringList m_taken; // found paths taken from the walk, not yet in the list
    qsizetype m_takenFrom = 0; // the first of m_taken not yet handed to the list
    QTimer* m_poll = nullptr;
    QTimer* m_more = nullptr; // another turn of appending soon, after pending events
    QTimer* m_message = nullptr; // clears the missing-input message
};

} // namespace vindaro::search
