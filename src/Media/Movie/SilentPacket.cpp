// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Media/Movie/SilentPacket.h"

#include "Media/Libav/FFmpegPointers.h"

#include <algorithm>
#include <span>

namespace vantrell {

namespace {

/// In every version of a sound description the channel count stands at the same place.
int channelCount(const std::vector<std::uint8_t> &description) {
    constexpr std::size_t place = 24;
    return description.size() < place + 2 ? 0 : description[place] << 8 | description[place + 1];
}

CodecContextPtr openEncoder(int sampleRate, int channels) {
    const AVCodec *codec = avcodec_find_encoder(AV_CODEC_ID_AAC);
    CodecContextPtr encoder(avcodec_alloc_context3(codec));
    if (!encoder)
        return nullptr;
    encoder->sample_fmt = AV_SAMPLE_FMT_FLTP;
    encoder->sample_rate = sampleRate;
    encoder->flags |= AV_CODEC_FLAG_GLOBAL_HEADER;
    av_channel_layout_default(&encoder->ch_layout, channels);
    if (avcodec_open2(encoder.get(), codec, nullptr) < 0)
        return nullptr;
    return encoder;
}

/// The packet of pure silence, after that of the beginning.
std::vector<std::uint8_t> encodeSilence(AVCodecContext &encoder) {
    const FramePtr frame(av_frame_alloc());
    frame->nb_samples = encoder.frame_size;
    frame->format = encoder.sample_fmt;
    av_channel_layout_copy(&frame->ch_layout, &encoder.ch_layout);
    if (av_frame_get_buffer(frame.get(), 0) < 0)
        return {};
    for (int channel = 0; channel < encoder.ch_layout.nb_channels; ++channel)
        std::fill_n(frame->extended_data[channel], frame->linesize[0], std::uint8_t(0));
    std::vector<std::uint8_t> silence;
    const PacketPtr packet(av_packet_alloc());
    for (int i = 0; i < 4; ++i) {
        frame->pts = std::int64_t(i) * encoder.frame_size;
        if (avcodec_send_frame(&encoder, frame.get()) < 0)
            return {};
        while (avcodec_receive_packet(&encoder, packet.get()) == 0) {
            silence.assign(packet->data, packet->data + packet->size);
            av_packet_unref(packet.get());
        }
    }
    // What it still holds ends the sound: not what is wanted, but it complains about being left with it.
    avcodec_send_frame(&encoder, nullptr);
    while (avcodec_receive_packet(&encoder, packet.get()) == 0)
        av_packet_unref(packet.get());
    return silence;
}

} // namespace

std::vector<std::uint8_t> makeSilentPacket(const TrackDescription &track) {
    if (track.kind != TrackKind::audio || track.sampleDescriptions.empty())
        return {};
    const std::vector<std::uint8_t> &description = track.sampleDescriptions.back();
    const int channels = channelCount(description);
    if (channels < 1 || channels > 2)
        return {};
    const CodecContextPtr encoder = openEncoder(int(track.timeScale), channels);
    if (!encoder)
        return {};
    // Only when the track was made with the same parameters does the packet mean the same in it.
    const std::span configuration(encoder->extradata, std::size_t(encoder->extradata_size));
    if (std::ranges::search(description, configuration.first(std::min<std::size_t>(2, configuration.size())))
            .empty())
        return {};
    return encodeSilence(*encoder);
}

} // namespace vantrell
