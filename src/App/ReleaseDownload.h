// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "App/ReleaseFeed.h"
#include "App/UpdateError.h"
#include "Http/HttpClient.h"
#include "Support/Clock.h"
#include "Support/Task.h"

#include <expected>
#include <filesystem>
#include <stop_token>
#include <string>

namespace vantrell {

/// Brings a release to `file`, which is there afterwards only when its size and hash are those of the list.
/// Comes in pieces, so that memory stays small and a line that breaks costs one piece: each is asked for up
/// to four times. `address` is the release's, absolute. Main thread.
Task<std::expected<void, UpdateError>> downloadRelease(HttpClient &http, Clock &clock, Release release,
                                                       std::string address, std::filesystem::path file,
                                                       std::stop_token stop);

/// The file is that of the release. Blocks on the disk; thread-safe.
std::expected<void, UpdateError> verifyRelease(const Release &release, const std::filesystem::path &file);

} // namespace vantrell
