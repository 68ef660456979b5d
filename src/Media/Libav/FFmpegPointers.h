// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include <memory>

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
#include <libavutil/frame.h>
#include <libswresample/swresample.h>
#include <libswscale/swscale.h>
}

namespace vantrell {

// Owners of FFmpeg's objects. Nothing outside this header frees one.

template <auto Free>
struct FFmpegDeleter {
    template <typename T>
    void operator()(T *object) const {
        // Most of FFmpeg's functions take the address of the pointer, to null it.
        if constexpr (requires { Free(&object); })
            Free(&object);
        else
            Free(object);
    }
};

using CodecContextPtr = std::unique_ptr<AVCodecContext, FFmpegDeleter<avcodec_free_context>>;
using FormatInputPtr = std::unique_ptr<AVFormatContext, FFmpegDeleter<avformat_close_input>>;
using FramePtr = std::unique_ptr<AVFrame, FFmpegDeleter<av_frame_free>>;
using PacketPtr = std::unique_ptr<AVPacket, FFmpegDeleter<av_packet_free>>;
using ScalerPtr = std::unique_ptr<SwsContext, FFmpegDeleter<sws_freeContext>>;
using ResamplerPtr = std::unique_ptr<SwrContext, FFmpegDeleter<swr_free>>;

} // namespace vantrell
