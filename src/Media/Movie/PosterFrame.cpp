// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Media/Movie/PosterFrame.h"

#include "Media/Libav/FFmpegError.h"
#include "Media/Libav/FFmpegPointers.h"

#include <algorithm>
#include <cmath>

extern "C" {
#include <libavutil/imgutils.h>
}

namespace vantrell {

namespace {

constexpr int largestSide = 1024;

std::expected<FramePtr, PlatformError> decodeFirst(AVFormatContext &input, int stream,
                                                   AVCodecContext &decoder) {
    const PacketPtr packet(av_packet_alloc());
    FramePtr frame(av_frame_alloc());
    for (;;) {
        int result = av_read_frame(&input, packet.get());
        if (result >= 0 && packet->stream_index != stream) {
            av_packet_unref(packet.get());
            continue;
        }
        // At the end of the file a null packet makes the decoder give what it holds.
        result = avcodec_send_packet(&decoder, result >= 0 ? packet.get() : nullptr);
        av_packet_unref(packet.get());
        if (result < 0 && result != AVERROR_INVALIDDATA)
            return std::unexpected(ffmpegError("decode", result));
        result = avcodec_receive_frame(&decoder, frame.get());
        if (result == 0)
            return frame;
        if (result != AVERROR(EAGAIN))
            return std::unexpected(ffmpegError("decode", result));
    }
}

QSize fitted(int width, int height) {
    const double scale = std::min({1.0, double(largestSide) / width, double(largestSide) / height});
    return {std::max(1, int(std::lround(width * scale))), std::max(1, int(std::lround(height * scale)))};
}

std::expected<QImage, PlatformError> toImage(const AVFrame &frame) {
    const QSize size = fitted(frame.width, frame.height);
    QImage image(size, QImage::Format_RGB32);
    const ScalerPtr scaler(sws_getContext(
        frame.width, frame.height, AVPixelFormat(frame.format), size.width(), size.height(), AV_PIX_FMT_BGRA,
        SWS_AREA | SWS_ACCURATE_RND | SWS_FULL_CHR_H_INP | SWS_FULL_CHR_H_INT, nullptr, nullptr, nullptr));
    if (!scaler || image.isNull())
        return std::unexpected(ffmpegError("scale", AVERROR(ENOMEM)));
    // Our movies are tagged BT.709; left alone the scaler would assume BT.601 and shift every colour.
    const int matrix = frame.colorspace == AVCOL_SPC_SMPTE170M || frame.colorspace == AVCOL_SPC_BT470BG
                           ? SWS_CS_ITU601
                           : SWS_CS_ITU709;
    const int fullRange = frame.color_range == AVCOL_RANGE_JPEG ? 1 : 0;
    sws_setColorspaceDetails(scaler.get(), sws_getCoefficients(matrix), fullRange,
                             sws_getCoefficients(SWS_CS_DEFAULT), 1, 0, 1 << 16, 1 << 16);
    std::uint8_t *planes[4] = {image.bits()};
    const int strides[4] = {int(image.bytesPerLine())};
    sws_scale(scaler.get(), frame.data, frame.linesize, 0, frame.height, planes, strides);
    return image;
}

} // namespace

std::expected<QImage, PlatformError> decodePosterFrame(const std::filesystem::path &path) {
    AVFormatContext *opened = nullptr;
    int result = avformat_open_input(&opened, path.c_str(), nullptr, nullptr);
    if (result < 0)
        return std::unexpected(ffmpegError("open movie", result));
    const FormatInputPtr input(opened);
    const AVCodec *codec = nullptr;
    // Our movies say all of it in their tables: avformat_find_stream_info would only read on.
    const int stream = av_find_best_stream(input.get(), AVMEDIA_TYPE_VIDEO, -1, -1, &codec, 0);
    if (stream < 0 || !codec)
        return std::unexpected(ffmpegError("find picture", stream));
    const CodecContextPtr decoder(avcodec_alloc_context3(codec));
    result = avcodec_parameters_to_context(decoder.get(), input->streams[stream]->codecpar);
    // One thread: a second one would wait for a second frame.
    decoder->thread_count = 1;
    decoder->flags |= AV_CODEC_FLAG_LOW_DELAY;
    if (result >= 0)
        result = avcodec_open2(decoder.get(), codec, nullptr);
    if (result < 0)
        return std::unexpected(ffmpegError("open decoder", result));
    const auto frame = decodeFirst(*input, stream, *decoder);
    if (!frame)
        return std::unexpected(frame.error());
    return toImage(**frame);
}

} // namespace vantrell
