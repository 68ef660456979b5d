// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "TestClip.h"

#include "Media/Libav/FFmpegPointers.h"

#include <gtest/gtest.h>

#include <cmath>
#include <numbers>

extern "C" {
#include <x264.h>
}

namespace vantrell::testing {

namespace {

std::vector<std::uint8_t> decoderConfiguration(const std::uint8_t *sps, int spsBytes, const std::uint8_t *pps,
                                               int ppsBytes) {
    std::vector<std::uint8_t> out{1, sps[1], sps[2], sps[3], 0xff, 0xe1, 0, std::uint8_t(spsBytes)};
    out.insert(out.end(), sps, sps + spsBytes);
    out.insert(out.end(), {1, 0, std::uint8_t(ppsBytes)});
    out.insert(out.end(), pps, pps + ppsBytes);
    return out;
}

void collect(x264_t *encoder, x264_picture_t *picture, std::vector<OwnedSample> &out) {
    x264_nal_t *nals = nullptr;
    int count = 0;
    x264_picture_t encoded{};
    const int bytes = x264_encoder_encode(encoder, &nals, &count, picture, &encoded);
    ASSERT_GE(bytes, 0);
    if (bytes > 0)
        out.push_back({{nals[0].p_payload, nals[0].p_payload + bytes},
                       encoded.i_pts,
                       encoded.i_dts,
                       encoded.b_keyframe != 0});
}

} // namespace

Pictures encodePictures(const PictureOptions &options) {
    x264_param_t parameters;
    x264_param_default_preset(&parameters, "superfast", "zerolatency");
    parameters.i_width = options.size.width;
    parameters.i_height = options.size.height;
    parameters.i_csp = X264_CSP_I420;
    parameters.b_annexb = 0;
    parameters.b_repeat_headers = 0;
    parameters.b_vfr_input = 0;
    parameters.i_timebase_num = 1;
    parameters.i_timebase_den = 90000;
    parameters.i_fps_num = 90000;
    parameters.i_fps_den = std::uint32_t(options.spacing);
    parameters.i_keyint_max = options.keyInterval;
    parameters.i_bframe = options.bFrames;
    parameters.i_threads = 1;
    parameters.i_log_level = X264_LOG_NONE;
    parameters.vui.i_colorprim = parameters.vui.i_transfer = parameters.vui.i_colmatrix = 1;
    x264_t *encoder = x264_encoder_open(&parameters);
    Pictures result;
    result.format.size = options.size;
    x264_nal_t *nals = nullptr;
    int count = 0;
    x264_encoder_headers(encoder, &nals, &count);
    result.format.decoderConfiguration = decoderConfiguration(nals[0].p_payload + 4, nals[0].i_payload - 4,
                                                              nals[1].p_payload + 4, nals[1].i_payload - 4);
    x264_picture_t picture;
    x264_picture_alloc(&picture, X264_CSP_I420, options.size.width, options.size.height);
    for (int i = 0; i < options.count; ++i) {
        for (int plane = 0; plane < 3; ++plane) {
            const int rows = options.size.height >> (plane > 0);
            memset(picture.img.plane[plane], plane == 0 ? options.luma(i) : 128,
                   std::size_t(picture.img.i_stride[plane]) * std::size_t(rows));
        }
        picture.i_pts = std::int64_t(i) * options.spacing;
        collect(encoder, &picture, result.samples);
    }
    while (x264_encoder_delayed_frames(encoder) > 0)
        collect(encoder, nullptr, result.samples);
    x264_picture_clean(&picture);
    x264_encoder_close(encoder);
    return result;
}

Sound encodeSound(double seconds, const std::function<float(double)> &wave, int channels, int sampleRate) {
    const AVCodec *codec = avcodec_find_encoder(AV_CODEC_ID_AAC);
    const CodecContextPtr encoder(avcodec_alloc_context3(codec));
    encoder->sample_fmt = AV_SAMPLE_FMT_FLTP;
    encoder->sample_rate = sampleRate;
    encoder->time_base = {1, sampleRate};
    encoder->bit_rate = 96000;
    encoder->flags |= AV_CODEC_FLAG_GLOBAL_HEADER;
    av_channel_layout_default(&encoder->ch_layout, channels);
    EXPECT_EQ(avcodec_open2(encoder.get(), codec, nullptr), 0);
    Sound result;
    result.format.sampleRate = sampleRate;
    result.format.channels = channels;
    result.format.primingSamples = encoder->initial_padding;
    result.format.decoderConfiguration.assign(encoder->extradata,
                                              encoder->extradata + encoder->extradata_size);
    result.format.name = "Microphone";
    const auto total = std::int64_t(std::lround(seconds * sampleRate));
    const PacketPtr packet(av_packet_alloc());
    const auto drain = [&] {
        while (avcodec_receive_packet(encoder.get(), packet.get()) == 0) {
            result.samples.push_back(
                {{packet->data, packet->data + packet->size}, packet->pts, packet->pts, true});
            av_packet_unref(packet.get());
        }
    };
    for (std::int64_t start = 0; start < total; start += encoder->frame_size) {
        const FramePtr frame(av_frame_alloc());
        frame->nb_samples = int(std::min<std::int64_t>(encoder->frame_size, total - start));
        frame->format = AV_SAMPLE_FMT_FLTP;
        frame->sample_rate = sampleRate;
        av_channel_layout_copy(&frame->ch_layout, &encoder->ch_layout);
        frame->pts = start;
        EXPECT_EQ(av_frame_get_buffer(frame.get(), 0), 0);
        for (int channel = 0; channel < channels; ++channel)
            for (int i = 0; i < frame->nb_samples; ++i)
                reinterpret_cast<float *>(frame->data[channel])[i] = wave(double(start + i) / sampleRate);
        EXPECT_EQ(avcodec_send_frame(encoder.get(), frame.get()), 0);
        drain();
    }
    avcodec_send_frame(encoder.get(), nullptr);
    drain();
    return result;
}

Sound encodeTone(double seconds, double frequency) {
    return encodeSound(seconds, [frequency](double time) {
        return 0.5F * float(std::sin(2 * std::numbers::pi * frequency * time));
    });
}

void writeMovie(const std::filesystem::path &path, const Pictures &pictures, const std::vector<Sound> &sounds,
                double seconds) {
    auto writer = MovieWriter::create(path);
    ASSERT_TRUE(writer) << writer.error().message;
    std::vector<TrackEnd> ends;
    if (!pictures.samples.empty()) {
        const TrackId track = (*writer)->addVideoTrack(pictures.format);
        appendAll(**writer, track, pictures.samples);
        ends.push_back({track, std::lround(seconds * pictures.format.timeScale)});
    }
    for (const Sound &sound : sounds) {
        const TrackId track = (*writer)->addAudioTrack(sound.format);
        appendAll(**writer, track, sound.samples);
        ends.push_back({track, std::lround(seconds * sound.format.sampleRate)});
    }
    const auto summary = (*writer)->finish(ends);
    ASSERT_TRUE(summary) << summary.error().message;
}

void appendAll(MovieWriter &writer, TrackId track, const std::vector<OwnedSample> &samples) {
    for (const OwnedSample &sample : samples) {
        const auto appended = writer.append(track, sample.view());
        ASSERT_TRUE(appended) << appended.error().message;
    }
}

} // namespace vantrell::testing
