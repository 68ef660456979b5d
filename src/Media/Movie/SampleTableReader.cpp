// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Media/Movie/SampleTableReader.h"

#include "Media/Movie/ByteReader.h"
#include "Media/Movie/MovieError.h"

#include <limits>

namespace vantrell {

namespace {

/// A week of pictures at 60 a second is 36 million.
constexpr std::uint32_t mostSamples = 40'000'000;

using Samples = std::vector<MovieIndex::Sample>;
using Result = std::expected<void, PlatformError>;

std::unexpected<PlatformError> disagreement(const char *what) {
    return std::unexpected(movieError(MovieFault::damaged, std::string("damaged movie: ") + what));
}

/// A table of `entryBytes` entries behind version, flags and count; empty when the count is not backed by
/// bytes.
ByteReader openTable(std::span<const std::uint8_t> box, std::size_t entryBytes, std::uint32_t &count) {
    ByteReader in(box);
    in.skip(4);
    count = in.u32();
    if (in.failed() || std::uint64_t(count) * entryBytes > in.remaining()) {
        in.fail();
        count = 0;
    }
    return in;
}

Result readSizes(std::span<const std::uint8_t> box, std::uint64_t fileSize, Samples &samples) {
    ByteReader in(box);
    in.skip(4);
    const std::uint32_t same = in.u32();
    const std::uint32_t count = in.u32();
    const bool isBacked =
        same == 0 ? std::uint64_t(count) * 4 <= in.remaining() : std::uint64_t(count) * same <= fileSize;
    if (in.failed() || !isBacked || count > mostSamples)
        return disagreement("sample sizes");
    samples.resize(count);
    for (MovieIndex::Sample &sample : samples)
        sample.size = same == 0 ? in.u32() : same;
    return {};
}

Result readDurations(std::span<const std::uint8_t> box, Samples &samples) {
    std::uint32_t runs = 0;
    ByteReader in = openTable(box, 8, runs);
    std::size_t next = 0;
    std::int64_t dts = 0;
    for (; runs > 0; --runs) {
        const std::uint32_t count = in.u32();
        const std::uint32_t duration = in.u32();
        if (count > samples.size() - next)
            return disagreement("sample durations");
        for (std::uint32_t i = 0; i < count; ++i) {
            samples[next].dts = dts;
            samples[next++].duration = duration;
            dts += duration;
        }
    }
    if (next != samples.size() || in.failed())
        return disagreement("sample durations");
    return {};
}

Result readOffsets(std::span<const std::uint8_t> box, Samples &samples) {
    if (box.empty())
        return {};
    std::uint32_t runs = 0;
    ByteReader in = openTable(box, 8, runs);
    std::size_t next = 0;
    for (; runs > 0; --runs) {
        const std::uint32_t count = in.u32();
        const std::int32_t offset = in.i32();
        if (count > samples.size() - next)
            return disagreement("composition offsets");
        for (std::uint32_t i = 0; i < count; ++i)
            samples[next++].compositionOffset = offset;
    }
    if (in.failed())
        return disagreement("composition offsets");
    return {};
}

Result readKeys(std::span<const std::uint8_t> box, Samples &samples) {
    if (box.empty())
        return {};
    std::uint32_t count = 0;
    ByteReader in = openTable(box, 4, count);
    for (MovieIndex::Sample &sample : samples)
        sample.isKey = false;
    for (; count > 0; --count) {
        const std::uint32_t number = in.u32();
        if (number == 0 || number > samples.size())
            return disagreement("key samples");
        samples[number - 1].isKey = true;
    }
    if (in.failed())
        return disagreement("key samples");
    return {};
}

struct ChunkPlaces {
    ByteReader in;
    std::uint32_t count = 0;
    bool isWide = false;

    std::uint64_t next() { return isWide ? in.u64() : in.u32(); }
};

ChunkPlaces openChunks(const SampleBoxes &boxes) {
    ChunkPlaces places{ByteReader({}), 0, boxes.chunks.empty()};
    places.in = places.isWide ? openTable(boxes.wideChunks, 8, places.count)
                              : openTable(boxes.chunks, 4, places.count);
    return places;
}

/// Samples of one chunk, one behind the other.
Result placeChunk(std::uint64_t offset, std::span<MovieIndex::Sample> chunk, std::uint32_t description,
                  std::uint64_t fileSize) {
    for (MovieIndex::Sample &sample : chunk) {
        if (offset > fileSize || sample.size > fileSize - offset)
            return disagreement("a sample lies behind the file's end");
        sample.offset = offset;
        sample.description = std::uint16_t(description);
        offset += sample.size;
    }
    return {};
}

Result readPlaces(const SampleBoxes &boxes, std::size_t descriptionCount, std::uint64_t fileSize,
                  Samples &samples) {
    ChunkPlaces places = openChunks(boxes);
    std::uint32_t runs = 0;
    ByteReader in = openTable(boxes.chunkRuns, 12, runs);
    std::size_t next = 0;
    std::uint32_t firstChunk = runs > 0 ? in.u32() : 0;
    if (runs > 0 && firstChunk != 1)
        return disagreement("chunks");
    for (; runs > 0; --runs) {
        const std::uint32_t perChunk = in.u32();
        const std::uint32_t description = in.u32();
        const std::uint64_t following = runs > 1 ? in.u32() : std::uint64_t(places.count) + 1;
        if (following <= firstChunk || following > std::uint64_t(places.count) + 1 || description == 0 ||
            description > descriptionCount || description > std::numeric_limits<std::uint16_t>::max())
            return disagreement("chunks");
        for (std::uint64_t chunk = firstChunk; chunk < following; ++chunk) {
            if (perChunk > samples.size() - next)
                return disagreement("chunks");
            const auto placed =
                placeChunk(places.next(), std::span(samples).subspan(next, perChunk), description, fileSize);
            if (!placed)
                return placed;
            next += perChunk;
        }
        firstChunk = std::uint32_t(following);
    }
    if (next != samples.size() || in.failed() || places.in.failed())
        return disagreement("chunks");
    return {};
}

} // namespace

std::expected<std::vector<MovieIndex::Sample>, PlatformError>
readSamples(const SampleBoxes &boxes, std::size_t descriptionCount, std::uint64_t fileSize) {
    Samples samples;
    Result done = readSizes(boxes.sizes, fileSize, samples);
    if (done)
        done = readDurations(boxes.durations, samples);
    if (done)
        done = readOffsets(boxes.offsets, samples);
    if (done)
        done = readKeys(boxes.keys, samples);
    if (done)
        done = readPlaces(boxes, descriptionCount, fileSize, samples);
    if (!done)
        return std::unexpected(done.error());
    return samples;
}

} // namespace vantrell
