// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "SyntheticMovie.h"

#include <random>

namespace vantrell::testing {

namespace {

constexpr const char *soundNames[] = {"", "Microphone", "System Audio"};

} // namespace

std::vector<std::uint8_t> SyntheticMovie::sample(int track, int number) {
    std::minstd_rand random(std::uint32_t(1 + track + number * trackCount));
    std::vector<std::uint8_t> data(track == 0 ? 200 + random() % 3000 : 50 + random() % 300);
    for (std::uint8_t &byte : data)
        byte = std::uint8_t(random() >> 8);
    return data;
}

std::vector<TrackId> SyntheticMovie::addTracks(MovieWriter &writer) {
    std::vector<TrackId> tracks;
    tracks.push_back(writer.addVideoTrack({.size = {640, 480}, .decoderConfiguration = {1, 2, 3}}));
    for (const int track : {1, 2})
        tracks.push_back(
            writer.addAudioTrack({.decoderConfiguration = {0x11, 0x90}, .name = soundNames[track]}));
    return tracks;
}

std::expected<void, PlatformError> SyntheticMovie::append(MovieWriter &writer, TrackId track, int number) {
    const std::vector<std::uint8_t> data = sample(track.index, number);
    const std::int64_t time =
        track.index == 0 ? std::int64_t(number) * pictureTicks : (std::int64_t(number) - 1) * packetTicks;
    return writer.append(track, {data, time, time, track.index != 0 || number % 60 == 0});
}

SyntheticMovie::Contents SyntheticMovie::read(const std::filesystem::path &path) {
    Contents contents;
    const auto file = DiskFile::openForReading(path);
    const auto index = file ? readMovieIndex(*file) : std::unexpected(file.error());
    if (!index) {
        contents.fault = index.error().message;
        return contents;
    }
    contents.durationMs = double(index->duration) * 1000 / index->timeScale;
    for (const MovieIndex::Track &track : index->tracks) {
        int number = 0;
        while (number < trackCount && track.description.name != soundNames[number])
            ++number;
        for (std::size_t i = 0; i < track.samples.size(); ++i) {
            std::vector<std::uint8_t> data(track.samples[i].size);
            const auto count = file->readAt(track.samples[i].offset, data);
            if (!count || data != sample(number, int(i)))
                contents.fault =
                    "track " + std::to_string(number) + " differs at sample " + std::to_string(i);
        }
        contents.counts[number] = int(track.samples.size());
    }
    return contents;
}

} // namespace vantrell::testing
