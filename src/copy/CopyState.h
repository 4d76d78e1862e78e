#pragma once

#include "ProgressMeter.h"

#include <QtGlobal>

#include <atomic>

namespace vindaro::copy {

// The state of the one copy that can run at a time. The block loop runs on a worker thread while the
// window's buttons, sliders and timer act on the same fields, so every field is atomic; positions are
// 1-based (position 1 is the first byte, its offset is 0).
struct CopyState
{
    std::atomic<qint64> blockBytes{0}; // bytes advanced per block
    std::atomic<qint64> sourceLength{0}; // taken at every (re)entry of the block loop
    std::atomic<qint64> position{1}; // next position to read (and, in a copy, to write)
    std::atomic<qint64> mergePosition{1}; // next position to write during a merge
    std::atomic<int> readBlocks{10}; // value of the read slider, 1..100
    std::atomic<int> skipBlocks{10}; // value of the skip slider, 1..30
    std::atomic<int> elapsedSeconds{0}; // counted by the one-second tick
    std::atomic<bool> stopRequested{false}; // the loop leaves at its next round (pause and cancel)
    std::atomic<bool> cancelRequested{false}; // leaving is a cancellation
    std::atomic<bool> copyRunning{false}; // not while paused or idle; exit is refused while true
    // A cancel the host holds over the engine's own switches (Ctrl-C during the preparation, a batch's
    // cancel): every start and end of a file asks for the stop again. Set by the host, cleared by it.
    std::atomic<bool> cancelHeld{false};

    // Set by the engine as it goes, read by whoever must save a record while the loop is stuck in a read:
    // every write before these positions has returned success (a skipped stretch counts as done).
    std::atomic<qint64> writtenPosition{1};
    std::atomic<qint64> writtenMergePosition{1};
    std::atomic<bool> merging{false}; // the copy in hand is a merge
    // The program is ending without waiting for the loop: it must not write another byte.
    std::atomic<bool> abandoned{false};

    // A refine pass reads what the copy skipped: its figures for the window.
    std::atomic<bool> refining{false};
    std::atomic<qint64> refineUntriedBytes{0};
    std::atomic<qint64> refineBadBytes{0};
    std::atomic<qint64> refineFailedReads{0};

    // The figures of the copy as shown, ticked once a second by the host; the finish entry names them.
    ProgressMeter meter{*this};
};

} // namespace vindaro::copy
