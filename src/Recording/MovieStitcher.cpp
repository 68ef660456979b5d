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

std::expected<std::filesystem::path, Failure> MovieStitcher::join(std::span<const PlacedMovie> sources,
                                                                  std::stop_token stop) {
    const std::filesystem::path output = CaptureStorage::newFileURL("mov");
    const auto joined = joinMovies(sources, output, std::move(stop));
    if (joined)
        return output;
    const Failure failure = joinFailure(joined.error());
    if (!std::holds_alternative<Cancelled>(failure))
        qCCritical(logCapture, "join failed: %s", description(failure).c_str());
    return std::unexpected(failure);
}

Task<std::expected<std::filesystem::path, Failure>>
MovieStitcher::stitch(std::vector<std::filesystem::path> sources, std::stop_token stop) {
    std::vector<PlacedMovie> placed;
    for (std::filesystem::path &source : sources)
        placed.push_back({std::move(source), std::nullopt});
    // The worker gets the token too: a join that nobody waits for stops and removes what it wrote.
    co_return co_await runBlocking([placed, stop] { return join(placed, stop); }, stop);
}

Task<std::optional<QImage>> MovieStitcher::posterFrame(std::filesystem::path movie, std::stop_token stop) {
    const auto poster = co_await runBlocking([movie] { return decodePosterFrame(movie); }, stop);
    if (!poster)
        co_return std::nullopt;
    co_return std::optional<QImage>(*poster);
}

} // namespace vantrell
