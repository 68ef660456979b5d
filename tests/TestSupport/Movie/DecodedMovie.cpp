// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "TestSupport/Movie/DecodedMovie.h"

#include "Media/Libav/FFmpegError.h"
#include "Media/Libav/FFmpegPointers.h"

#include <algorithm>
#include <cmath>

namespace vantrell::testing {

namespace {

void takePicture(const AVFrame &frame, AVRational timeBase, DecodedMovie::Stream &stream) {
    const double seconds = double(frame.best_effort_timestamp) * av_q2d(timeBase);
    stream.pictures.push_back({seconds, seconds + double(frame.pkt_duration) * av_q2d(timeBase), frame.width,
                               frame.height,
                               frame.data[0][frame.height / 2 * frame.linesize[0] + frame.width / 2]});
}

void takeSound(const AVFrame &frame, AVRational timeBase, DecodedMovie::Stream &stream) {
    stream.sampleRate = frame.sample_rate;
    const double seconds = double(frame.pts) * av_q2d(timeBase);
    for (int i = 0; i < frame.nb_samples; ++i) {
        stream.sampleTimes.push_back(seconds + double(i) / frame.sample_rate);
        stream.samples.push_back(reinterpret_cast<const float *>(frame.data[0])[i]);
    }
}

std::string decodePacket(AVCodecContext &decoder, const AVPacket *packet, AVRational timeBase,
                         DecodedMovie::Stream &stream) {
    int result = avcodec_send_packet(&decoder, packet);
    const FramePtr frame(av_frame_alloc());
    while (result >= 0) {
        result = avcodec_receive_frame(&decoder, frame.get());
        if (result < 0)
            break;
        if (frame->decode_error_flags != 0)
            return "a frame decodes with errors";
        stream.isVideo ? takePicture(*frame, timeBase, stream) : takeSound(*frame, timeBase, stream);
    }
    return result == AVERROR(EAGAIN) || result == AVERROR_EOF ? "" : ffmpegError("decode", result).message;
}

} // namespace

float DecodedMovie::Stream::peak(double fromSeconds, double toSeconds) const {
    float largest = 0;
    for (std::size_t i = 0; i < samples.size(); ++i)
        if (sampleTimes[i] >= fromSeconds && sampleTimes[i] < toSeconds)
            largest = std::max(largest, std::abs(samples[i]));
    return largest;
}

DecodedMovie decodeMovie(const std::filesystem::path &path) {
    DecodedMovie movie;
    AVFormatContext *opened = nullptr;
    if (const int result = avformat_open_input(&opened, path.c_str(), nullptr, nullptr); result < 0) {
        movie.error = ffmpegError("open", result).message;
        return movie;
    }
    const FormatInputPtr input(opened);
    avformat_find_stream_info(input.get(), nullptr);
    movie.durationSeconds = double(input->duration) / AV_TIME_BASE;
    std::vector<CodecContextPtr> decoders;
    for (unsigned i = 0; i < input->nb_streams; ++i) {
        const AVStream &source = *input->streams[i];
        const AVCodec *codec = avcodec_find_decoder(source.codecpar->codec_id);
        decoders.emplace_back(avcodec_alloc_context3(codec));
        avcodec_parameters_to_context(decoders.back().get(), source.codecpar);
        decoders.back()->pkt_timebase = source.time_base;
        decoders.back()->thread_count = 1;
        decoders.back()->err_recognition |= AV_EF_EXPLODE;
        if (!codec || avcodec_open2(decoders.back().get(), codec, nullptr) < 0) {
            movie.error = "no decoder";
            return movie;
        }
        DecodedMovie::Stream stream;
        stream.isVideo = source.codecpar->codec_type == AVMEDIA_TYPE_VIDEO;
        if (const AVDictionaryEntry *entry = av_dict_get(source.metadata, "handler_name", nullptr, 0))
            stream.name = entry->value;
        stream.startSeconds = double(source.start_time) * av_q2d(source.time_base);
        stream.durationSeconds = double(source.duration) * av_q2d(source.time_base);
        movie.streams.push_back(std::move(stream));
    }
    const PacketPtr packet(av_packet_alloc());
    while (movie.error.empty() && av_read_frame(input.get(), packet.get()) >= 0) {
        const auto index = std::size_t(packet->stream_index);
        movie.error = decodePacket(*decoders[index], packet.get(), input->streams[index]->time_base,
                                   movie.streams[index]);
        av_packet_unref(packet.get());
    }
    for (std::size_t i = 0; i < decoders.size() && movie.error.empty(); ++i)
        movie.error = decodePacket(*decoders[i], nullptr, input->streams[i]->time_base, movie.streams[i]);
    return movie;
}

} // namespace vantrell::testing
