#pragma once

#include <QObject>
#include <QStringList>

#include <atomic>
#include <memory>

namespace vindaro::files {

// Walks a folder for the add-folder command, off the UI thread, and hands the matching files back in
// batches so the list grows under the scan while the window stays usable.
//
// The walk is FolderWalker's (order, links, loops, unreadable folders), capped at kMaxDepth levels, with
// NameRule::forFolderScan(), the rule of matchesScanPattern().
//
// found() and finished() arrive on the thread that owns the scanner. After cancel() or destruction no
// further signal arrives; the walk then stops at its next entry, on its own thread.
class FolderScanner : public QObject
{
    Q_OBJECT

public:
    static constexpr int kMaxDepth = 256;

    explicit FolderScanner(QObject* parent = nullptr);
    ~FolderScanner() override;

    // Starts a walk; false (and nothing happens) while one is running.
    bool start(const QString& folder, const QString& pattern, bool includeSubfolders);
    void cancel();
    bool isRunning() const { return m_running; }

    // The same walk on the calling thread. `onBatch` receives the paths in order, at most `batchSize` at a
    // time; the walk stops early when `cancelled` becomes true. Folders are joined with a closing "/".
    static void walk(const QString& folder, const QString& pattern, bool includeSubfolders,
        const std::atomic<bool>& cancelled, qsizetype batchSize,
        const std::function<void(const QStringList&)>& onBatch);

signals:
    void found(const QStringList& paths);
    void finished(bool cancelled);

private:
    std::shared_ptr<std::atomic<bool>> m_cancel; // shared with the walk's thread
    bool m_running = false;
};

} // namespace vindaro::files
