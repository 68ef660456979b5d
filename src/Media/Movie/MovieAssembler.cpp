// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Media/Movie/MovieAssembler.h"

#include "Media/Movie/ByteWriter.h"

#include <algorithm>

namespace vantrell {

namespace {

constexpr std::uint64_t dataHeaderOffset = 20;
constexpr std::uint64_t dataHeaderBytes = 16;

/// The media data box in its 64-bit form, so that no size has to be guessed at the start.
std::vector<std::uint8_t> dataHeader(std::uint64_t payload) {
    ByteWriter out;
    out.u32(1);
    out.text("mdat");
    out.u64(dataHeaderBytes + payload);
    return out.take();
}

std::vector<std::uint8_t> fileHead() {
    ByteWriter out;
    out.box("ftyp", [&] {
        out.text("qt  ");
        out.u32(0x20050300);
        out.text("qt  ");
    });
    out.bytes(dataHeader(0));
    return out.take();
}

} // namespace

std::expected<MovieAssembler, PlatformError> MovieAssembler::begin(DiskFile file) {
    if (const auto written = file.writeAt(0, fileHead()); !written)
        return std::unexpected(written.error());
    return MovieAssembler(std::move(file));
}

MovieAssembler MovieAssembler::resume(DiskFile file) {
    return MovieAssembler(std::move(file));
}

std::uint32_t MovieAssembler::addTrack(TrackDescription description) {
    m_tracks.push_back({std::move(description), {}});
    return std::uint32_t(m_tracks.size() - 1);
}

std::expected<std::uint64_t, PlatformError> MovieAssembler::writeChunk(std::uint32_t track,
                                                                       std::span<const std::uint8_t> data,
                                                                       std::span<const SampleEntry> samples) {
    const std::uint64_t offset = m_end;
    if (const auto written = m_file.writeAt(offset, data); !written)
        return std::unexpected(written.error());
    adoptChunk(track, offset, data.size(), samples);
    return offset;
}

void MovieAssembler::adoptChunk(std::uint32_t track, std::uint64_t offset, std::uint64_t size,
                                std::span<const SampleEntry> samples, std::uint32_t description) {
    m_tracks[track].samples.addChunk(offset, description, samples);
    m_end = std::max(m_end, offset + size);
}

std::uint64_t MovieAssembler::headerBytes() const {
    std::vector<TrackLayout> layouts;
    for (const Track &track : m_tracks)
        layouts.push_back({&track.description, &track.samples, {}});
    return movieHeaderBytes(layouts) + 64 * m_tracks.size();
}

std::expected<MovieSummary, PlatformError>
MovieAssembler::finish(std::span<const std::optional<std::int64_t>> ends) {
    std::vector<std::vector<Edit>> edits;
    for (std::size_t i = 0; i < m_tracks.size(); ++i) {
        auto &[description, samples] = m_tracks[i];
        const std::optional<std::int64_t> wanted = i < ends.size() ? ends[i] : std::nullopt;
        std::int64_t end = 0;
        if (description.kind == TrackKind::video) {
            // The last picture stands until the end, however long ago it came.
            if (wanted)
                samples.endAt(*wanted);
            end = samples.endDts();
        } else {
            samples.endAt(samples.lastDts() + std::int64_t(description.samplesPerPacket));
            end = std::min(wanted.value_or(samples.endDts()), samples.endDts());
        }
        edits.push_back(presentationEdits(description, samples, end));
    }
    return finishWithEdits(std::move(edits));
}

std::expected<MovieSummary, PlatformError>
MovieAssembler::finishWithEdits(std::vector<std::vector<Edit>> edits) {
    std::vector<TrackLayout> layouts;
    std::int64_t duration = 0;
    for (std::size_t i = 0; i < m_tracks.size(); ++i) {
        duration = std::max(duration, editsDuration(edits[i]));
        layouts.push_back({&m_tracks[i].description, &m_tracks[i].samples, std::move(edits[i])});
    }
    const std::vector<std::uint8_t> header = buildMovieHeader(layouts);
    const std::uint64_t total = m_end + header.size();
    // The journal vouches for the movie until everything here is durable, so the order does not matter.
    if (const auto done = m_file.truncate(m_end); !done)
        return std::unexpected(done.error());
    if (const auto done = m_file.writeAt(m_end, header); !done)
        return std::unexpected(done.error());
    if (const auto done = m_file.writeAt(dataHeaderOffset, dataHeader(m_end - headBytes)); !done)
        return std::unexpected(done.error());
    if (const auto done = m_file.sync(); !done)
        return std::unexpected(done.error());
    return MovieSummary{double(duration) * 1000 / movieTimeScale, total};
}

} // namespace vantrell
