// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Media/Movie/ByteReader.h"
#include "Media/Movie/Crc32c.h"
#include "Media/Movie/MovieError.h"
#include "Media/Movie/MovieJournal.h"
#include "Media/Movie/MovieJournalLayout.h"

#include <algorithm>

namespace vantrell {

using namespace journalLayout;

namespace {

/// A journal of days is some tens of megabytes; anything beyond is not one of ours.
constexpr std::uint64_t largestJournal = std::uint64_t(1) << 30;

std::uint64_t readNote(std::span<const std::uint8_t> bytes, std::uint64_t place) {
    std::uint64_t newest = 0;
    std::uint64_t value = 0;
    for (int copy = 0; copy < 2; ++copy) {
        const auto note = bytes.subspan(place + std::uint64_t(copy) * noteSpacing, 20);
        ByteReader in(note);
        const std::uint64_t sequence = in.u64();
        const std::uint64_t noted = in.u64();
        if (in.u32() == crc32c(note.first(16)) && sequence > newest) {
            newest = sequence;
            value = noted;
        }
    }
    return value;
}

TrackDescription readTrack(ByteReader &in) {
    TrackDescription track;
    track.kind = in.u8() == 0 ? TrackKind::video : TrackKind::audio;
    track.timeScale = in.u32();
    track.size.width = std::int32_t(in.u32());
    track.size.height = std::int32_t(in.u32());
    track.samplesPerPacket = in.u32();
    track.priming = in.u32();
    track.name = in.text(in.u16());
    for (int left = in.u16(); left > 0 && !in.failed(); --left) {
        const auto entry = in.bytes(in.u32());
        track.sampleDescriptions.emplace_back(entry.begin(), entry.end());
    }
    if (track.timeScale == 0)
        in.fail();
    return track;
}

MovieJournalContents::Chunk readChunk(ByteReader &in, std::size_t trackCount) {
    MovieJournalContents::Chunk chunk;
    chunk.track = in.u32();
    chunk.offset = in.u64();
    chunk.size = in.u64();
    chunk.checksum = in.u32();
    const std::uint32_t count = in.u32();
    if (chunk.track >= trackCount || count == 0 || count * sampleBytes != in.remaining()) {
        in.fail();
        return chunk;
    }
    chunk.samples.reserve(count);
    std::uint64_t total = 0;
    for (std::uint32_t i = 0; i < count; ++i) {
        SampleEntry sample;
        sample.size = in.u32();
        sample.isKey = in.u8() != 0;
        sample.dts = in.i64();
        sample.compositionOffset = in.i32();
        total += sample.size;
        chunk.samples.push_back(sample);
    }
    if (total != chunk.size)
        in.fail();
    return chunk;
}

std::vector<std::optional<std::int64_t>> readEnds(ByteReader &in) {
    std::vector<std::optional<std::int64_t>> ends;
    for (std::uint32_t left = in.u32(); left > 0 && !in.failed(); --left) {
        const bool has = in.u8() != 0;
        const std::int64_t end = in.i64();
        ends.push_back(has ? std::optional(end) : std::nullopt);
    }
    return ends;
}

/// False when the record is not one that our writer makes: nothing after it is trusted either.
bool readRecord(std::span<const std::uint8_t> payload, MovieJournalContents &contents) {
    ByteReader in(payload);
    switch (in.u8()) {
    case trackRecord: {
        TrackDescription track = readTrack(in);
        if (!in.failed())
            contents.tracks.push_back(std::move(track));
        break;
    }
    case chunkRecord: {
        MovieJournalContents::Chunk chunk = readChunk(in, contents.tracks.size());
        if (!in.failed())
            contents.chunks.push_back(std::move(chunk));
        break;
    }
    case endsRecord: {
        auto ends = readEnds(in);
        if (!in.failed())
            contents.ends = std::move(ends);
        break;
    }
    default:
        return false;
    }
    return !in.failed();
}

} // namespace

std::expected<MovieJournalContents, PlatformError> readMovieJournal(const DiskFile &journal) {
    const auto size = journal.size();
    if (!size)
        return std::unexpected(size.error());
    std::vector<std::uint8_t> bytes(std::size_t(std::min(*size, largestJournal)));
    const auto count = journal.readAt(0, bytes);
    if (!count)
        return std::unexpected(count.error());
    bytes.resize(*count);
    if (bytes.size() < recordsBegin || !std::ranges::equal(std::span(bytes).first(magic.size()), magic))
        return std::unexpected(movieError(MovieFault::notAJournal, "not a movie's journal"));

    MovieJournalContents contents;
    contents.elapsed = std::bit_cast<double>(readNote(bytes, elapsedNote));
    contents.synced = readNote(bytes, syncedNote);
    ByteReader in(std::span(bytes).subspan(recordsBegin));
    while (in.remaining() > 8) {
        const std::uint32_t length = in.u32();
        const std::uint32_t checksum = in.u32();
        const auto payload = in.bytes(length);
        if (in.failed() || payload.empty() || crc32c(payload) != checksum || !readRecord(payload, contents))
            break;
    }
    return contents;
}

} // namespace vantrell
