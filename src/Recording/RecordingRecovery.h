// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Capture/CaptureResult.h"
#include "Recording/Failure.h"
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

    /// Finishes the movies of one of them, joins them and packages the result as usual, named with
    /// " (recovered)". None when nothing was recorded: it is then forgotten. After a failure (a full disk, a
    /// movie that some process is still writing: EWOULDBLOCK), or a kill, it
    /// can be tried again; segments that are damaged are left where they are, and the rest is recovered.
    static std::expected<std::optional<CaptureResult>, Failure> recover(const std::filesystem::path &what,
                                                                        Clock::WallTime now);

    /// The movie of `what` is about to be moved: should the program end before `forget`, it is looked for in
    /// its new place too.
    static void noteMove(const std::filesystem::path &what, const std::filesystem::path &newPlace);

    /// The recovered capture has been taken over: it is not offered again.
    static void forget(const std::filesystem::path &what);
};

} // namespace vantrell
