// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Capture/CaptureResult.h"
#include "Recording/Failure.h"
#include "Recording/RecordingRecord.h"
#include "Support/Clock.h"

#include <expected>
#include <filesystem>
#include <optional>
#include <vector>

namespace vantrell {

/// Makes captures of recordings that a crash, a power cut or a full disk cut off. Stateless; everything
/// blocks on the disk: worker threads.
///
/// A recording that is being made, in whatever process, is left alone.
class RecordingRecovery {
public:
    /// What there is to recover in `folder`: journals of recordings, and movies that belong to none of them.
    /// Removes what killed joins left.
    static std::vector<std::filesystem::path> abandoned(const std::filesystem::path &folder);

    /// Files in `folder` without which something could not be recovered, or that a recording is still using.
    static std::vector<std::filesystem::path> needed(const std::filesystem::path &folder);

    /// What a recording consists of, as far as it was recorded and nobody has taken it over yet.
    struct Recovered {
        std::optional<CaptureResult> screen;
        std::optional<CaptureResult> camera;
    };

    /// Finishes the movies of one of them, joins them and packages the result as usual, named with
    /// " (recovered)". Neither layer when nothing was recorded: it is then forgotten. After a failure (a full
    /// disk, a movie that some process is still writing: EWOULDBLOCK), or a kill, it can be tried again;
    /// segments that are damaged are left where they are, and the rest is recovered.
    static std::expected<Recovered, Failure> recover(const std::filesystem::path &what, Clock::WallTime now);

    /// The layer's movie is about to be moved: should the program end before `forget`, it is looked for in
    /// its new place too.
    static void noteMove(const std::filesystem::path &what, const std::filesystem::path &newPlace,
                         RecordingLayer layer = RecordingLayer::screen);

    /// The layer's capture has been taken over: it is not offered again. With the last one the journal goes.
    /// False when the disk does not let it.
    static bool forget(const std::filesystem::path &what, RecordingLayer layer = RecordingLayer::screen);
    /// Nothing of it is wanted.
    static void forgetWhole(const std::filesystem::path &what);
};

} // namespace vantrell
