// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Media/Picture/Nv12Frame.h"
#include "Support/BlockMap.h"

#include <condition_variable>
#include <deque>
#include <memory>
#include <mutex>
#include <optional>
#include <vector>

namespace vantrell {

/// A few persistent pictures that the capture thread fills and the encode thread reads, handed over without
/// copying: while the encoder keeps up, one and the same picture is updated in place; when it lags, the
/// capture goes on in another one, which first takes over what changed since it was the latest.
///
/// Pictures are made as they are needed: an encoder that keeps up needs one. Bounded: when all pictures wait
/// for the encoder, the capture thread waits, and what changes meanwhile is one change. Each method says
/// whose thread calls it.
class FrameExchange {
public:
    /// A picture and what it misses.
    struct Slot {
        explicit Slot(PixelSize picture) : frame(picture), stale(picture) { stale.markAll(); }
        Nv12Frame frame;
        /// Blocks that differ from the latest picture. Capture thread.
        BlockMap stale;
        bool isBusy = false;
    };

    /// A picture to encode.
    struct Job {
        Slot *slot = nullptr;
        /// Blocks that differ from the job before.
        BlockMap changed;
        double hostTime = 0;
        /// The picture of the job before, which has stood still.
        bool isRepeated = false;
    };

    FrameExchange(PixelSize picture, int mostPictures) : m_picture(picture), m_mostPictures(mostPictures) {}

    /// Capture thread: a picture that may be written; blocks until there is one. None after `abandon`.
    Slot *acquire();
    /// Capture thread: the same without waiting; null as well when all pictures wait for the encoder.
    Slot *tryAcquire();
    /// Capture thread: the latest picture; null before the first `submit`.
    Slot *latest() const { return m_latest; }
    /// Capture thread: hands an acquired picture over, which becomes the latest.
    void submit(Slot *slot, BlockMap changed, double hostTime);
    /// Capture thread: gives an acquired picture back; its `stale` blocks are right.
    void giveBack(Slot *slot);
    /// Capture thread: nothing more comes.
    void close();

    /// Encode thread: blocks until there is a job; none when all are done and the exchange is closed.
    std::optional<Job> next();
    /// Encode thread: as `next`, but when nothing has come until `deadline` (host time), the picture of the
    /// job before once more, unchanged. That job is done.
    std::optional<Job> next(double deadline, const Job &before);
    /// Encode thread: the job's picture may be written again.
    void done(const Job &job);
    /// Encode thread: nothing more is taken.
    void abandon();

private:
    Slot *freeSlot();

    const PixelSize m_picture;
    const int m_mostPictures;
    // The capture thread's, but for what is in a job.
    std::vector<std::unique_ptr<Slot>> m_slots;
    Slot *m_latest = nullptr;

    std::mutex m_mutex;
    std::condition_variable m_changed;
    std::deque<Job> m_jobs;
    bool m_closed = false;
    bool m_abandoned = false;
};

} // namespace vantrell
