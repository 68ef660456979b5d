// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Media/Movie/MovieHeader.h"

#include "Media/Movie/ByteWriter.h"

#include <algorithm>
#include <ctime>
#include <limits>

namespace vantrell {

namespace {

constexpr std::uint32_t maxU32 = std::numeric_limits<std::uint32_t>::max();
constexpr std::uint16_t undeterminedLanguage = 0x55c4;

std::uint64_t secondsSince1904() {
    return std::uint64_t(std::time(nullptr)) + 2082844800U;
}

/// Times and durations of a header: 32 bits in version 0, 64 in version 1.
struct Clockwork {
    std::uint64_t now = 0;
    std::uint64_t duration = 0;

    std::uint8_t version() const { return now > maxU32 || duration > maxU32 ? 1 : 0; }
    void number(ByteWriter &out, std::uint64_t value) const {
        version() == 1 ? out.u64(value) : out.u32(std::uint32_t(value));
    }
    void dates(ByteWriter &out) const {
        number(out, now);
        number(out, now);
    }
};

void unitMatrix(ByteWriter &out) {
    for (const std::uint32_t value : {0x10000U, 0U, 0U, 0U, 0x10000U, 0U, 0U, 0U, 0x40000000U})
        out.u32(value);
}

/// QuickTime's handler: a counted string for a name.
void handler(ByteWriter &out, std::string_view component, std::string_view type, std::string_view name) {
    name = name.substr(0, 255);
    out.fullBox("hdlr", 0, 0, [&] {
        out.text(component);
        out.text(type);
        out.zeros(12);
        out.u8(std::uint8_t(name.size()));
        out.text(name);
    });
}

void editList(ByteWriter &out, std::span<const Edit> edits) {
    const bool wide = std::ranges::any_of(edits, [](const Edit &edit) {
        return edit.duration > maxU32 || edit.mediaTime > std::numeric_limits<std::int32_t>::max();
    });
    out.box("edts", [&] {
        out.fullBox("elst", wide ? 1 : 0, 0, [&] {
            out.u32(std::uint32_t(edits.size()));
            for (const Edit &edit : edits) {
                if (wide) {
                    out.u64(std::uint64_t(edit.duration));
                    out.i64(edit.mediaTime);
                } else {
                    out.u32(std::uint32_t(edit.duration));
                    out.i32(std::int32_t(edit.mediaTime));
                }
                out.u32(0x10000); // at its own speed
            }
        });
    });
}

void mediaInformation(ByteWriter &out, const TrackLayout &track) {
    const bool isVideo = track.description->kind == TrackKind::video;
    out.box("minf", [&] {
        if (isVideo)
            out.fullBox("vmhd", 0, 1, [&] {
                out.u16(0x40); // copy with dithering, as every writer says
                for (int i = 0; i < 3; ++i)
                    out.u16(0x8000);
            });
        else
            out.fullBox("smhd", 0, 0, [&] { out.u32(0); });
        handler(out, "dhlr", "url ", "DataHandler");
        out.box("dinf", [&] {
            out.fullBox("dref", 0, 0, [&] {
                out.u32(1);
                out.fullBox("url ", 0, 1, [] {}); // this file
            });
        });
        out.box("stbl", [&] {
            out.fullBox("stsd", 0, 0, [&] {
                out.u32(std::uint32_t(track.description->sampleDescriptions.size()));
                for (const std::vector<std::uint8_t> &entry : track.description->sampleDescriptions)
                    out.bytes(entry);
            });
            track.samples->appendBoxes(out, isVideo);
            if (!isVideo) {
                // Each packet needs the one before it: a seek has to begin one packet early.
                out.fullBox("sgpd", 1, 0, [&] {
                    out.text("roll");
                    out.u32(2);
                    out.u32(1);
                    out.u16(0xffff);
                });
                out.fullBox("sbgp", 0, 0, [&] {
                    out.text("roll");
                    out.u32(1);
                    out.u32(std::uint32_t(track.samples->count()));
                    out.u32(1);
                });
            }
        });
    });
}

void trackBox(ByteWriter &out, const TrackLayout &track, std::uint32_t id, std::uint64_t now) {
    const TrackDescription &description = *track.description;
    const bool isVideo = description.kind == TrackKind::video;
    out.box("trak", [&] {
        const Clockwork header{now, std::uint64_t(editsDuration(track.edits))};
        out.fullBox("tkhd", header.version(), 0xf, [&] { // enabled, in the movie, its preview and poster
            header.dates(out);
            out.u32(id);
            out.u32(0);
            header.number(out, header.duration);
            out.zeros(8);
            out.u16(0);
            out.u16(0);
            out.u16(isVideo ? 0 : 0x100);
            out.u16(0);
            unitMatrix(out);
            out.u32(std::uint32_t(description.size.width) << 16);
            out.u32(std::uint32_t(description.size.height) << 16);
        });
        editList(out, track.edits);
        out.box("mdia", [&] {
            const Clockwork media{now, std::uint64_t(track.samples->endDts() - track.samples->firstDts())};
            out.fullBox("mdhd", media.version(), 0, [&] {
                media.dates(out);
                out.u32(description.timeScale);
                media.number(out, media.duration);
                out.u16(undeterminedLanguage);
                out.u16(0);
            });
            const std::string_view kind = isVideo ? "VideoHandler" : "SoundHandler";
            handler(out, "mhlr", isVideo ? "vide" : "soun",
                    description.name.empty() ? kind : std::string_view(description.name));
            mediaInformation(out, track);
        });
        if (!description.name.empty())
            out.box("udta", [&] { out.box("name", [&] { out.text(description.name); }); });
    });
}

} // namespace

std::int64_t rescale(std::int64_t value, std::uint32_t from, std::uint32_t to) {
    if (from == to || from == 0)
        return value;
    // 128 bits: days of 90 kHz times a sound rate do not fit into 64.
    const auto product = __int128(value) * to;
    const __int128 half = from / 2;
    return std::int64_t((product + (product < 0 ? -half : half)) / from);
}

std::vector<Edit> presentationEdits(const TrackDescription &track, const SampleTable &samples,
                                    std::int64_t end) {
    if (samples.isEmpty())
        return {};
    const std::int64_t firstShown = samples.firstPts() + std::int64_t(track.priming);
    const std::int64_t start = std::max<std::int64_t>(firstShown, 0);
    const std::int64_t startTicks = rescale(start, track.timeScale, movieTimeScale);
    const std::int64_t endTicks = rescale(std::max(end, start), track.timeScale, movieTimeScale);
    std::vector<Edit> edits;
    if (startTicks > 0)
        edits.push_back({startTicks, emptyEdit});
    edits.push_back({endTicks - startTicks, start - samples.firstDts()});
    return edits;
}

std::int64_t editsDuration(std::span<const Edit> edits) {
    std::int64_t total = 0;
    for (const Edit &edit : edits)
        total += edit.duration;
    return total;
}

std::vector<std::uint8_t> buildMovieHeader(std::span<const TrackLayout> tracks) {
    const std::uint64_t now = secondsSince1904();
    Clockwork header{now, 0};
    for (const TrackLayout &track : tracks)
        header.duration = std::max(header.duration, std::uint64_t(editsDuration(track.edits)));
    ByteWriter out;
    out.reserve(std::size_t(movieHeaderBytes(tracks)));
    out.box("moov", [&] {
        const auto used = std::uint32_t(std::ranges::count_if(
            tracks, [](const TrackLayout &track) { return !track.samples->isEmpty(); }));
        out.fullBox("mvhd", header.version(), 0, [&] {
            header.dates(out);
            out.u32(movieTimeScale);
            header.number(out, header.duration);
            out.u32(0x10000);
            out.u16(0x100);
            out.zeros(10);
            unitMatrix(out);
            out.zeros(24);
            out.u32(used + 1);
        });
        std::uint32_t id = 0;
        for (const TrackLayout &track : tracks)
            if (!track.samples->isEmpty())
                trackBox(out, track, ++id, now);
    });
    return out.take();
}

std::uint64_t movieHeaderBytes(std::span<const TrackLayout> tracks) {
    std::uint64_t bytes = 256;
    for (const TrackLayout &track : tracks) {
        bytes +=
            1024 + 2 * track.description->name.size() + 20 * track.edits.size() + track.samples->boxBytes();
        for (const std::vector<std::uint8_t> &entry : track.description->sampleDescriptions)
            bytes += entry.size();
    }
    return bytes;
}

} // namespace vantrell
