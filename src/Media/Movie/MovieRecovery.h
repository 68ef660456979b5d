// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Media/Movie/MovieWriter.h"
#include "Support/PlatformError.h"

#include <expected>
#include <filesystem>
#include <vector>

namespace vantrell {

/// The movies in `folder` that a writer left unfinished and that no living process is writing, oldest name
/// first. Blocks on the disk.
std::vector<std::filesystem::path> unfinishedMovies(const std::filesystem::path &folder);

/// Makes an unfinished movie an ordinary one, in place, from its journal: all chunks that are whole, the last
/// picture held for as long as the recording is known to have gone on. Interrupted anywhere, or failed, it
/// leaves the files so that it can be tried again. Blocks; reads what the last seconds wrote.
///
/// A movie in which no sample is whole is removed, with its journal: the summary then has no duration and no
/// bytes. EWOULDBLOCK: a writer still holds it. ENOENT: there is no journal.
std::expected<MovieSummary, PlatformError> recoverMovie(const std::filesystem::path &movie);

} // namespace vantrell
