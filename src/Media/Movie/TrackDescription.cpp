// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Media/Movie/TrackDescription.h"

#include "Media/Movie/ByteWriter.h"

#include <algorithm>
#include <limits>

namespace vantrell {

namespace {

constexpr std::uint16_t bt709 = 1;

/// A descriptor of MPEG-4 part 1: tag and length. The four-byte form of the length is what other writers use.
template <typename Contents>
void descriptor(ByteWriter &out, std::uint8_t tag, Contents contents) {
    ByteWriter inner;
    contents(inner);
    out.u8(tag);
    const auto size = std::uint32_t(inner.size());
    for (int shift = 21; shift > 0; shift -= 7)
        out.u8(std::uint8_t(0x80 | (size >> shift & 0x7f)));
    out.u8(std::uint8_t(size & 0x7f));
    out.bytes(inner.view());
}

std::vector<std::uint8_t> avcSampleDescription(const VideoTrackFormat &format) {
    ByteWriter out;
    out.box("avc1", [&] {
        out.zeros(6);
        out.u16(1); // the only data reference
        out.zeros(16);
        out.u16(std::uint16_t(format.size.width));
        out.u16(std::uint16_t(format.size.height));
        out.u32(72 << 16);
        out.u32(72 << 16);
        out.u32(0);
        out.u16(1);
        const std::string_view compressor = "H.264";
        out.u8(std::uint8_t(compressor.size()));
        out.text(compressor);
        out.zeros(31 - compressor.size());
        out.u16(24);
        out.u16(0xffff);
        out.box("avcC", [&] { out.bytes(format.decoderConfiguration); });
        out.box("colr", [&] {
            out.text("nclc");
            out.u16(bt709);
            out.u16(bt709);
            out.u16(std::uint16_t(h273Number(format.matrix)));
        });
        out.box("fiel", [&] {
            out.u8(1); // progressive
            out.u8(0);
        });
        out.box("pasp", [&] {
            out.u32(1);
            out.u32(1);
        });
    });
    return out.take();
}

void elementaryStream(ByteWriter &out, const AudioTrackFormat &format) {
    out.fullBox("esds", 0, 0, [&] {
        descriptor(out, 3, [&](ByteWriter &es) {
            es.u16(0);
            es.u8(0);
            descriptor(es, 4, [&](ByteWriter &config) {
                config.u8(0x40);          // MPEG-4 audio
                config.u8(0x05 << 2 | 1); // audio stream
                config.u8(0);
                config.u16(6144 / 8 * std::uint16_t(format.channels)); // the decoder's buffer
                config.u32(std::uint32_t(format.bitRate));
                config.u32(std::uint32_t(format.bitRate));
                descriptor(config, 5,
                           [&](ByteWriter &specific) { specific.bytes(format.decoderConfiguration); });
            });
            descriptor(es, 6, [](ByteWriter &layer) { layer.u8(2); });
        });
    });
}

std::vector<std::uint8_t> aacSampleDescription(const AudioTrackFormat &format) {
    ByteWriter out;
    out.box("mp4a", [&] {
        out.zeros(6);
        out.u16(1);
        out.u16(1); // QuickTime's sound description, version 1
        out.zeros(6);
        out.u16(std::uint16_t(format.channels));
        out.u16(16);
        out.u16(0xfffe); // variable bit rate
        out.u16(0);
        // 16.16 fixed point; rates that do not fit are told by the decoder configuration alone.
        out.u32(format.sampleRate <= std::numeric_limits<std::uint16_t>::max()
                    ? std::uint32_t(format.sampleRate) << 16
                    : 0);
        out.u32(std::uint32_t(format.samplesPerPacket));
        out.u32(0);
        out.u32(0);
        out.u32(2);
        out.box("wave", [&] {
            out.box("frma", [&] { out.text("mp4a"); });
            out.box("mp4a", [&] { out.u32(0); });
            elementaryStream(out, format);
            out.u32(8);
            out.u32(0); // terminator
        });
    });
    return out.take();
}

} // namespace

TrackDescription describeTrack(const VideoTrackFormat &format) {
    TrackDescription track;
    track.kind = TrackKind::video;
    track.timeScale = std::uint32_t(format.timeScale);
    track.size = format.size;
    track.sampleDescriptions = {avcSampleDescription(format)};
    return track;
}

TrackDescription describeTrack(const AudioTrackFormat &format) {
    TrackDescription track;
    track.kind = TrackKind::audio;
    track.timeScale = std::uint32_t(format.sampleRate);
    track.samplesPerPacket = std::uint32_t(format.samplesPerPacket);
    track.priming = std::uint32_t(format.primingSamples);
    track.name = format.name;
    track.sampleDescriptions = {aacSampleDescription(format)};
    return track;
}

} // namespace vantrell
