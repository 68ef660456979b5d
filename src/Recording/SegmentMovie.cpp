// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Recording/SegmentMovie.h"

#include "Media/Movie/MovieJournal.h"
#include "Media/Movie/MovieReader.h"
#include "Media/Movie/MovieRecovery.h"
#include "Support/Log.h"

#include <cerrno>

namespace vantrell {

namespace {

/// What the system refuses now it may allow later; a damaged file stays damaged.
bool mayPass(const PlatformError &error) {
    return error.domain == "posix";
}

} // namespace

std::expected<double, PlatformError> durationOfMovie(const std::filesystem::path &movie) {
    if (std::filesystem::exists(MovieJournal::pathFor(movie)))
        if (const auto recovered = recoverMovie(movie); !recovered) {
            const PlatformError &error = recovered.error();
            qCCritical(logCapture, "segment not recovered: %s", error.message.c_str());
            if (error.code == EWOULDBLOCK && mayPass(error))
                return std::unexpected(
                    PlatformError{"posix", EWOULDBLOCK, "The recording is still being saved"});
            if (mayPass(error))
                return std::unexpected(error);
            return 0;
        }
    if (!std::filesystem::exists(movie))
        return 0;
    const auto facts = readMovieFacts(movie);
    if (facts)
        return facts->durationMs;
    qCCritical(logCapture, "segment not readable: %s", facts.error().message.c_str());
    return 0;
}

} // namespace vantrell
