// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Media/Sound/AacEncoder.h"

#include "Media/Libav/FFmpegError.h"
#include "Platform/AudioSource.h"

#include <algorithm>
#include <cmath>
#include <utility>

extern "C" {
#include <libavutil/opt.h>
}

namespace vantrell {

std::expected<AacEncoder, PlatformError> AacEncoder::create(int bitRate, std::string trackName) {
    const AVCodec *encoder = avcodec_find_encoder(AV_CODEC_ID_AAC);
    CodecContextPtr codec(encoder ? avcodec_alloc_context3(encoder) : nullptr);
    FramePtr frame(av_frame_alloc());
    PacketPtr packet(av_packet_alloc());
    if (!codec || !frame || !packet)
        return std::unexpected(ffmpegError("find the AAC encoder", AVERROR_ENCODER_NOT_FOUND));
    codec->sample_rate = audioSampleRate;
    codec->sample_fmt = AV_SAMPLE_FMT_FLTP;
    codec->bit_rate = bitRate;
    codec->time_base = {1, audioSampleRate};
    av_channel_layout_default(&codec->ch_layout, channels);
    // The decoder's configuration belongs into the movie's header, not into each packet.
    codec->flags |= AV_CODEC_FLAG_GLOBAL_HEADER;
    // Its statistics at the end are of no use to the user.
    codec->log_level_offset = AV_LOG_INFO - AV_LOG_ERROR;
    // The cheaper of the coder's two searches: a quarter of the time on speech and music, and at these rates
    // not worse.
    av_opt_set(codec->priv_data, "aac_coder", "fast", 0);
    if (const int opened = avcodec_open2(codec.get(), encoder, nullptr); opened < 0)
        return std::unexpected(ffmpegError("open the AAC encoder", opened));

    frame->format = AV_SAMPLE_FMT_FLTP;
    frame->nb_samples = codec->frame_size;
    frame->sample_rate = audioSampleRate;
    av_channel_layout_copy(&frame->ch_layout, &codec->ch_layout);
    if (const int allocated = av_frame_get_buffer(frame.get(), 0); allocated < 0)
        return std::unexpected(ffmpegError("allocate a frame of sound", allocated));
    return AacEncoder(std::move(codec), std::move(frame), std::move(packet), std::move(trackName));
}

AacEncoder::AacEncoder(CodecContextPtr codec, FramePtr frame, PacketPtr packet, std::string trackName)
    : m_codec(std::move(codec)), m_frame(std::move(frame)), m_packet(std::move(packet)) {
    m_format.sampleRate = audioSampleRate;
    m_format.channels = channels;
    m_format.samplesPerPacket = m_codec->frame_size;
    m_format.primingSamples = m_codec->initial_padding;
    m_format.decoderConfiguration.assign(m_codec->extradata, m_codec->extradata + m_codec->extradata_size);
    m_format.bitRate = int(m_codec->bit_rate);
    m_format.name = std::move(trackName);
}

std::expected<void, PlatformError> AacEncoder::encode(std::span<const float> samples,
                                                      const PacketSink &sink) {
    while (!samples.empty()) {
        // The codec may still hold what was sent before.
        if (m_filled == 0)
            if (const int writable = av_frame_make_writable(m_frame.get()); writable < 0)
                return std::unexpected(ffmpegError("reuse a frame of sound", writable));
        const int count = std::min(int(samples.size()) / channels, m_frame->nb_samples - m_filled);
        for (int channel = 0; channel < channels; ++channel) {
            auto *plane = reinterpret_cast<float *>(m_frame->data[channel]) + m_filled;
            for (int i = 0; i < count; ++i) {
                const float sample = samples[std::size_t(i * channels + channel)];
                // The codec refuses what is no number, and a driver's fault must not end the recording.
                plane[i] = std::isfinite(sample) ? sample : 0.0F;
            }
        }
        m_filled += count;
        m_framesTaken += count;
        samples = samples.subspan(std::size_t(count * channels));
        if (m_filled < m_frame->nb_samples)
            continue;
        if (const auto sent = sendFrame(sink); !sent)
            return sent;
    }
    return {};
}

std::expected<void, PlatformError> AacEncoder::finish(const PacketSink &sink) {
    if (m_filled > 0) {
        for (int channel = 0; channel < channels; ++channel) {
            auto *plane = reinterpret_cast<float *>(m_frame->data[channel]);
            std::fill(plane + m_filled, plane + m_frame->nb_samples, 0.0F);
        }
        if (const auto sent = sendFrame(sink); !sent)
            return sent;
    }
    if (const int drained = avcodec_send_frame(m_codec.get(), nullptr); drained < 0)
        return std::unexpected(ffmpegError("finish the sound", drained));
    return receivePackets(sink);
}

std::expected<void, PlatformError> AacEncoder::sendFrame(const PacketSink &sink) {
    m_frame->pts = m_framesTaken - m_filled;
    m_filled = 0;
    if (const int sent = avcodec_send_frame(m_codec.get(), m_frame.get()); sent < 0)
        return std::unexpected(ffmpegError("encode sound", sent));
    return receivePackets(sink);
}

std::expected<void, PlatformError> AacEncoder::receivePackets(const PacketSink &sink) {
    for (;;) {
        const int received = avcodec_receive_packet(m_codec.get(), m_packet.get());
        if (received == AVERROR(EAGAIN) || received == AVERROR_EOF)
            return {};
        if (received < 0)
            return std::unexpected(ffmpegError("encode sound", received));
        const auto taken = sink(EncodedSample{.data = {m_packet->data, std::size_t(m_packet->size)},
                                              .pts = m_packet->pts,
                                              .dts = m_packet->pts,
                                              .isKey = true});
        av_packet_unref(m_packet.get());
        if (!taken)
            return taken;
    }
}

} // namespace vantrell
