// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "MovieSigns.h"

#include "FlashScene.h"
#include "Media/Libav/FFmpegPointers.h"
#include "TestSupport/FrameCode.h"
#include "TestSupport/Movie/MoviePictures.h"

#include <cmath>
#include <optional>

namespace vantrell::bench {

namespace {

constexpr float audible = 0.25F;
constexpr double silence = 0.2;
constexpr int lightLuma = 128;

/// Follows one sound track.
class OnsetFinder {
public:
    explicit OnsetFinder(const AVStream &stream) : m_stream(stream) {
        if (const AVDictionaryEntry *entry = av_dict_get(stream.metadata, "handler_name", nullptr, 0))
            m_track.name = entry->value;
        const AVCodec *codec = avcodec_find_decoder(stream.codecpar->codec_id);
        m_decoder.reset(avcodec_alloc_context3(codec));
        avcodec_parameters_to_context(m_decoder.get(), stream.codecpar);
        m_decoder->pkt_timebase = stream.time_base;
        avcodec_open2(m_decoder.get(), codec, nullptr);
    }

    void take(const AVPacket *packet) {
        avcodec_send_packet(m_decoder.get(), packet);
        const FramePtr frame(av_frame_alloc());
        while (avcodec_receive_frame(m_decoder.get(), frame.get()) == 0)
            listen(*frame);
    }

    const MovieSigns::Track &track() const { return m_track; }

private:
    void listen(const AVFrame &frame) {
        const double seconds = double(frame.pts) * av_q2d(m_stream.time_base);
        const auto *samples = reinterpret_cast<const float *>(frame.data[0]);
        for (int i = 0; i < frame.nb_samples; ++i) {
            if (std::abs(samples[i]) < audible)
                continue;
            const double time = seconds + double(i) / frame.sample_rate;
            if (time - m_heard > silence)
                m_track.onsets.push_back(time);
            m_heard = time;
        }
    }

    const AVStream &m_stream;
    CodecContextPtr m_decoder;
    MovieSigns::Track m_track;
    double m_heard = -1;
};

void readFlashes(const std::filesystem::path &movie, MovieSigns &signs) {
    std::optional<std::uint32_t> darkNumber;
    signs.durationSeconds = testing::forEachPicture(movie, [&](const testing::MoviePicture &picture) {
        const auto number = testing::framecode::read(
            picture.luma + flashCodeY * picture.lumaStride + flashCodeX, picture.lumaStride);
        const bool isLight = picture.at(picture.width / 2, picture.height / 2).y > lightLuma;
        if (isLight && number && number == darkNumber)
            signs.flashes.emplace(*number, picture.seconds);
        darkNumber = isLight ? std::nullopt : number;
    });
}

} // namespace

MovieSigns readSigns(const std::filesystem::path &movie) {
    MovieSigns signs;
    AVFormatContext *opened = nullptr;
    if (avformat_open_input(&opened, movie.c_str(), nullptr, nullptr) < 0)
        return signs;
    const FormatInputPtr input(opened);
    avformat_find_stream_info(input.get(), nullptr);
    std::map<int, OnsetFinder> finders;
    for (unsigned i = 0; i < input->nb_streams; ++i)
        if (input->streams[i]->codecpar->codec_type == AVMEDIA_TYPE_AUDIO)
            finders.try_emplace(int(i), *input->streams[i]);
    const PacketPtr packet(av_packet_alloc());
    while (av_read_frame(input.get(), packet.get()) >= 0) {
        if (const auto finder = finders.find(packet->stream_index); finder != finders.end())
            finder->second.take(packet.get());
        av_packet_unref(packet.get());
    }
    for (auto &[index, finder] : finders) {
        finder.take(nullptr);
        signs.tracks.push_back(finder.track());
    }
    readFlashes(movie, signs);
    return signs;
}

} // namespace vantrell::bench
