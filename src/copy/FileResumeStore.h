#pragma once

#include "ResumeRecord.h"

#include <QDateTime>
#include <QString>

#include <functional>

namespace vindaro::copy {

// Resume records kept in one JSON file in the user's state folder, one record per destination.
//
// Promises:
// - The key is the destination's absolute, cleaned path ("/a/./b.dat" and "/a/b.dat" are one record);
//   symbolic links are not resolved, so a record survives its destination being missing for a while.
// - Every save rewrites the file through QSaveFile: a crash or a full disk leaves the previous store
//   whole, and the save answers false.
// - A store file that is truncated, not JSON, or of another format reads as "no records"; it is never
//   touched by a read. The next successful save first copies it aside to "<store>.bad" (replacing an
//   older .bad) and then starts a fresh store, so a damaged file can still be looked at.
// - Single records that do not make sense (a missing field, a negative or fractional position, a figure
//   that does not fit) read as absent; the other records still count.
// - Records live until remove() or until they are kMaxAgeDays old: an older record reads as absent and
//   is dropped at the next save. A copy left for half a year is not worth continuing blind.
// - Every call reads the file afresh, so two stores on the same file (two windows, two runs) see each
//   other's records; the last writer wins for its own key only.
class FileResumeStore final : public ResumeStore
{
public:
    static constexpr int kMaxAgeDays = 180;
    static constexpr qint64 kMaxStoreBytes = 16 * 1024 * 1024; // a larger file is treated as damaged

    // storePath empty: defaultStorePath(). now: the clock used to stamp and expire records (tests pin it).
    explicit FileResumeStore(QString storePath = {}, std::function<QDateTime()> now = {});

    // $XDG_STATE_HOME/vindaro/resume.json, or ~/.local/state/vindaro/resume.json without it.
    static QString defaultStorePath();
    // The key under which a destination is kept: absolute (against the current folder) and cleaned.
    static QString keyFor(const QString& destination);

    QString storePath() const { return m_storePath; }
    QString damagedCopyPath() const { return m_storePath + QStringLiteral(".bad"); }

    bool load(const QString& destination, ResumeRecord& record) override;
    // False when the store could not be written (no folder, no room); the previous store is then intact.
    bool save(const QString& destination, const ResumeRecord& record) override;
    // Quietly does nothing when there is no such record or the store cannot be written.
    void remove(const QString& destination) override;

    // Why the last save or remove failed, in the program's words; empty after a success.
    QString errorString() const { return m_errorString; }

private:
    QString m_storePath;
    std::function<QDateTime()> m_now;
    QString m_errorString;
};

} // namespace vindaro::copy
