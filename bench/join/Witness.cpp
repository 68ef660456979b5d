// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Witness.h"

#include "Media/Libav/FFmpegPointers.h"
#include "Segments.h"

#include <cmath>

namespace vantrell::bench {

namespace {

/// Follows one sound track and notes the first loud sample after a moment.
class BeepFinder {
public:
    BeepFinder(const AVStream &stream, double after) : m_stream(stream), m_after(after) {
        const AVCodec *codec = avcodec_find_decoder(stream.codecpar->codec_id);
        m_decoder.reset(avcodec_alloc_context3(codec));
        avcodec_parameters_to_context(m_decoder.get(), stream.codecpar);
        m_decoder->pkt_timebase = stream.time_base;
        avcodec_open2(m_decoder.get(), codec, nullptr);
    }

    void take(const AVPacket &packet) {
        avcodec_send_packet(m_decoder.get(), &packet);
        const FramePtr frame(av_frame_alloc());
        while (avcodec_receive_frame(m_decoder.get(), frame.get()) == 0) {
            const double seconds = double(frame->pts) * av_q2d(m_stream.time_base);
            if (m_start < 0)
                m_start = seconds;
            const auto *samples = reinterpret_cast<const float *>(frame->data[0]);
            for (int i = 0; i < frame->nb_samples && m_time < 0; ++i) {
                const double time = seconds + double(i) / frame->sample_rate;
                if (time < m_after || std::abs(samples[i]) < 0.3F)
                    continue;
                m_time = time;
                m_counted = m_start + double(m_count + i) / frame->sample_rate;
            }
            m_count += frame->nb_samples;
        }
    }

    double time() const { return m_time; }
    double counted() const { return m_counted; }

private:
    const AVStream &m_stream;
    const double m_after;
    CodecContextPtr m_decoder;
    double m_start = -1;
    double m_time = -1;
    double m_counted = -1;
    std::int64_t m_count = 0;
};

} // namespace

Joints examine(const std::filesystem::path &movie, int segments) {
    Joints joints;
    AVFormatContext *opened = nullptr;
    if (avformat_open_input(&opened, movie.c_str(), nullptr, nullptr) < 0)
        return joints;
    const FormatInputPtr input(opened);
    avformat_find_stream_info(input.get(), nullptr);
    joints.startSeconds = double(input->start_time) / AV_TIME_BASE;
    joints.durationSeconds = double(input->duration) / AV_TIME_BASE;
    const int sound = av_find_best_stream(input.get(), AVMEDIA_TYPE_AUDIO, -1, -1, nullptr, 0);
    const int picture = av_find_best_stream(input.get(), AVMEDIA_TYPE_VIDEO, -1, -1, nullptr, 0);
    if (sound < 0 || picture < 0)
        return joints;
    BeepFinder beep(*input->streams[sound], (segments - 1) * segmentSeconds - 1.0);
    const std::int64_t wanted = std::int64_t(segments - 1) * segmentSeconds * picturesPerSecond;
    std::int64_t pictures = 0;
    double pictureTime = 0;
    const PacketPtr packet(av_packet_alloc());
    while (av_read_frame(input.get(), packet.get()) >= 0) {
        if (packet->stream_index == picture && pictures++ == wanted)
            pictureTime = double(packet->pts) * av_q2d(input->streams[picture]->time_base);
        if (packet->stream_index == sound)
            beep.take(*packet);
        av_packet_unref(packet.get());
    }
    joints.lastOffset = beep.time() - pictureTime;
    joints.lastCountedOffset = beep.counted() - pictureTime;
    return joints;
}

} // namespace vantrell::bench
