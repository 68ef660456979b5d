// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Media/Movie/MovieIndex.h"

#include "Media/Movie/ByteReader.h"
#include "Media/Movie/MovieError.h"
#include "Media/Movie/SampleTableReader.h"

#include <algorithm>
#include <array>
#include <optional>
#include <string_view>

namespace vantrell {

namespace {

/// The tables of a day's recording are some tens of megabytes.
constexpr std::uint64_t largestHeader = std::uint64_t(256) << 20;
constexpr std::size_t mostTracks = 64;
constexpr std::size_t mostEdits = 4096;

std::unexpected<PlatformError> damaged(const char *what) {
    return std::unexpected(movieError(MovieFault::damaged, std::string("damaged movie: ") + what));
}

struct Box {
    std::string type;
    std::span<const std::uint8_t> body;
};

/// The next box of a container; nothing at its end or where the sizes stop making sense. QuickTime ends some
/// containers with a lone zero.
std::optional<Box> nextBox(ByteReader &in) {
    if (in.remaining() < 8)
        return std::nullopt;
    std::uint64_t size = in.u32();
    Box box{in.text(4), {}};
    std::uint64_t header = 8;
    if (size == 1) {
        size = in.u64();
        header = 16;
    } else if (size == 0) {
        size = header + in.remaining();
    }
    if (size < header || size - header > in.remaining() || in.failed())
        return std::nullopt;
    box.body = in.bytes(size - header);
    return box;
}

std::span<const std::uint8_t> findBox(std::span<const std::uint8_t> container, std::string_view type) {
    ByteReader in(container);
    while (const auto box = nextBox(in))
        if (box->type == type)
            return box->body;
    return {};
}

struct MediaTime {
    std::uint32_t timeScale = 0;
    std::uint64_t duration = 0;
};

/// The common beginning of mvhd and mdhd.
MediaTime readTimes(std::span<const std::uint8_t> body) {
    ByteReader in(body);
    const std::uint8_t version = in.u8();
    in.skip(3);
    in.skip(version == 1 ? 16 : 8);
    MediaTime time{in.u32(), version == 1 ? in.u64() : in.u32()};
    return in.failed() ? MediaTime{} : time;
}

PixelSize readPixelSize(std::span<const std::uint8_t> trackHeader) {
    if (trackHeader.size() < 8)
        return {};
    ByteReader in(trackHeader.last(8));
    const std::uint32_t width = in.u32() >> 16;
    const std::uint32_t height = in.u32() >> 16;
    return {int(width), int(height)};
}

std::vector<Edit> readEdits(std::span<const std::uint8_t> body) {
    ByteReader in(body);
    const bool wide = in.u8() == 1;
    in.skip(3);
    std::vector<Edit> edits;
    for (std::uint32_t left = in.u32(); left > 0; --left) {
        Edit edit;
        edit.duration = wide ? in.i64() : std::int64_t(in.u32());
        edit.mediaTime = wide ? in.i64() : in.i32();
        in.skip(4);
        // Far beyond any movie, and far from where sums of them would overflow.
        constexpr std::int64_t limit = std::int64_t(1) << 50;
        if (in.failed() || edit.duration < 0 || edit.duration > limit || edit.mediaTime < emptyEdit ||
            edit.mediaTime > limit || edits.size() == mostEdits)
            break;
        edits.push_back(edit);
    }
    return edits;
}

std::vector<std::vector<std::uint8_t>> readDescriptions(std::span<const std::uint8_t> body) {
    ByteReader in(body);
    in.skip(8);
    std::vector<std::vector<std::uint8_t>> entries;
    while (in.remaining() >= 8) {
        const auto all = in.rest();
        if (!nextBox(in))
            break;
        const auto entry = all.first(all.size() - in.remaining());
        entries.emplace_back(entry.begin(), entry.end());
    }
    return entries;
}

std::expected<std::optional<MovieIndex::Track>, PlatformError> readTrack(std::span<const std::uint8_t> body,
                                                                         std::uint64_t fileSize) {
    const auto media = findBox(body, "mdia");
    ByteReader handler(findBox(media, "hdlr"));
    handler.skip(8);
    const std::string kind = handler.text(4);
    if (kind != "vide" && kind != "soun")
        return std::nullopt;

    MovieIndex::Track track;
    track.description.kind = kind == "vide" ? TrackKind::video : TrackKind::audio;
    const MediaTime time = readTimes(findBox(media, "mdhd"));
    if (time.timeScale == 0)
        return damaged("no time scale");
    track.description.timeScale = time.timeScale;
    if (track.description.kind == TrackKind::video)
        track.description.size = readPixelSize(findBox(body, "tkhd"));
    const auto name = findBox(findBox(body, "udta"), "name");
    track.description.name.assign(name.begin(), name.end());
    track.edits = readEdits(findBox(findBox(body, "edts"), "elst"));

    const auto tables = findBox(findBox(media, "minf"), "stbl");
    track.description.sampleDescriptions = readDescriptions(findBox(tables, "stsd"));
    const SampleBoxes boxes{findBox(tables, "stts"), findBox(tables, "ctts"), findBox(tables, "stss"),
                            findBox(tables, "stsc"), findBox(tables, "stsz"), findBox(tables, "stco"),
                            findBox(tables, "co64")};
    auto samples = readSamples(boxes, track.description.sampleDescriptions.size(), fileSize);
    if (!samples)
        return std::unexpected(samples.error());
    track.samples = std::move(*samples);
    if (!track.samples.empty())
        track.mediaDuration = track.samples.back().dts + track.samples.back().duration;
    return track;
}

/// The header box's contents, wherever in the file it lies.
std::expected<std::vector<std::uint8_t>, PlatformError> loadHeader(const DiskFile &file, std::uint64_t size) {
    std::uint64_t offset = 0;
    while (offset + 8 <= size) {
        std::array<std::uint8_t, 16> head{};
        const auto count = file.readAt(offset, head);
        if (!count)
            return std::unexpected(count.error());
        ByteReader in(std::span(head).first(*count));
        std::uint64_t boxSize = in.u32();
        const std::string type = in.text(4);
        std::uint64_t headBytes = 8;
        if (boxSize == 1) {
            boxSize = in.u64();
            headBytes = 16;
        } else if (boxSize == 0) {
            boxSize = size - offset;
        }
        if (in.failed() || boxSize < headBytes || boxSize > size - offset)
            return damaged("a box is larger than the file");
        if (type == "moov") {
            if (boxSize > largestHeader)
                return damaged("its tables are too large");
            std::vector<std::uint8_t> body(std::size_t(boxSize - headBytes));
            const auto read = file.readAt(offset + headBytes, body);
            if (!read)
                return std::unexpected(read.error());
            body.resize(*read);
            return body;
        }
        offset += boxSize;
    }
    return damaged("no tables");
}

} // namespace

std::expected<MovieIndex, PlatformError> readMovieIndex(const DiskFile &file) {
    const auto size = file.size();
    if (!size)
        return std::unexpected(size.error());
    const auto header = loadHeader(file, *size);
    if (!header)
        return std::unexpected(header.error());
    const MediaTime time = readTimes(findBox(*header, "mvhd"));
    if (time.timeScale == 0)
        return damaged("no time scale");

    MovieIndex index;
    index.timeScale = time.timeScale;
    ByteReader in(*header);
    while (const auto box = nextBox(in)) {
        if (box->type != "trak")
            continue;
        auto track = readTrack(box->body, *size);
        if (!track)
            return std::unexpected(track.error());
        if (index.tracks.size() == mostTracks)
            return damaged("too many tracks");
        if (!*track)
            continue;
        const MovieIndex::Track &read = **track;
        const std::int64_t duration =
            read.edits.empty() ? rescale(read.mediaDuration, read.description.timeScale, time.timeScale)
                               : editsDuration(read.edits);
        index.duration = std::max(index.duration, duration);
        index.tracks.push_back(std::move(**track));
    }
    return index;
}

} // namespace vantrell
