#pragma once

#include "RescueMap.h"

#include <QString>

#include <mutex>

namespace vindaro::copy {

// Rescue maps kept between runs, one per destination path.
class RescueMapStore
{
public:
    virtual ~RescueMapStore() = default;
    // True, with `map` (and `status` when asked) filled, when a map is kept for the destination.
    virtual bool load(const QString& destination, RescueMap& map, MapfileStatus* status = nullptr) = 0;
    virtual bool save(
        const QString& destination, const RescueMap& map, std::optional<MapfileStatus> status = std::nullopt)
        = 0;
    virtual void remove(const QString& destination) = 0;
};

// Rescue maps as GNU ddrescue mapfiles in the user's state folder, beside the resume records: one file per
// destination, so a map can also be handed to ddrescue as it is.
//
// Promises:
// - The key is the destination's absolute, cleaned path, as for resume records; the file is named after a
//   hash of the key and names the destination in a comment.
// - Every save replaces the file through QSaveFile: a crash or a full disk leaves the previous map whole,
//   and the save answers false with errorString() set.
// - A kept file that is damaged or not a mapfile reads as "no map"; a read never changes it.
// - Saves of different destinations touch different files, so two stores (two windows, two runs) work side
//   by side; one store may be shared by the window and its copy's worker thread.
class FileRescueMapStore final : public RescueMapStore
{
public:
    // creator: the program and version that maps name as their writer ("Vindaro 2.0.0").
    // folder empty: defaultFolder().
    explicit FileRescueMapStore(QString creator, QString folder = {});

    // $XDG_STATE_HOME/vindaro/maps, or ~/.local/state/vindaro/maps without it.
    static QString defaultFolder();
    QString folder() const { return m_folder; }
    // The file that keeps the map of `destination`.
    QString pathFor(const QString& destination) const;

    bool load(const QString& destination, RescueMap& map, MapfileStatus* status = nullptr) override;
    bool save(const QString& destination, const RescueMap& map,
        std::optional<MapfileStatus> status = std::nullopt) override;
    // Quietly does nothing when no map is kept.
    void remove(const QString& destination) override;

    // Why the last save failed, in the program's words; empty after a success.
    QString errorString() const;

private:
    QString m_creator;
    QString m_folder;
    mutable std::mutex m_mutex; // guards m_errorString and orders saves and removes of one destination
    QString m_errorString;
};

} // namespace vindaro::copy
