// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Recording/MovieStitcher.h"

#include "Capture/CaptureStorage.h"
#include "Media/Movie/MovieJoin.h"
#include "Media/Movie/PosterFrame.h"
#include "Support/BlockingWork.h"
#include "Support/Log.h"

namespace vantrell {

namespace {

Failure joinFailure(const MovieJoinError &error) {
    if (std::holds_alternative<NothingToJoin>(error))
        return CaptureError::encodeFailed;
    if (std::holds_alternative<Cancelled>(error))
        return Cancelled{};
    return std::get<PlatformError>(error);
}

} // namespace

Task<std::expected<std::filesystem::path, Failure>>
MovieStitcher::stitch(std::vector<std::filesystem::path> sources, std::stop_token stop) {
    const std::filesystem::path output = CaptureStorage::newFileURL("mov");
    // The worker gets the token too: a join that nobody waits for stops and removes what it wrote.
    const auto joined =
        co_await runBlocking([sources, output, stop] { return joinMovies(sources, output, stop); }, stop);
    if (!joined) {
        const Failure failure = joinFailure(joined.error());
        if (!std::holds_alternative<Cancelled>(failure))
            qCCritical(logCapture, "join failed: %s", description(failure).c_str());
        co_return std::unexpected(failure);
    }
    co_return output;
}

Task<std::optional<QImage>> MovieStitcher::posterFrame(std::filesystem::path movie, std::stop_token stop) {
    const auto poster = co_await runBlocking([movie] { return decodePosterFrame(movie); }, stop);
    if (!poster)
        co_return std::nullopt;
    co_return std::optional<QImage>(*poster);
}

} // namespace vantrell
