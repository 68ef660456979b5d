// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "TestSupport/Movie/MoviePictures.h"

#include <memory>

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
}

namespace vantrell::testing {

namespace {

void show(const AVFrame &frame, const AVStream &stream,
          const std::function<void(const MoviePicture &)> &visit) {
    MoviePicture picture;
    picture.ticks = frame.pts;
    picture.seconds = double(frame.pts) * av_q2d(stream.time_base);
    picture.width = frame.width;
    picture.height = frame.height;
    picture.isKey = frame.key_frame != 0;
    picture.luma = frame.data[0];
    picture.cb = frame.data[1];
    picture.cr = frame.data[2];
    picture.lumaStride = frame.linesize[0];
    picture.chromaStride = frame.linesize[1];
    picture.isTaggedBt709 = frame.colorspace == AVCOL_SPC_BT709 && frame.color_primaries == AVCOL_PRI_BT709 &&
                            frame.color_trc == AVCOL_TRC_BT709 && frame.color_range == AVCOL_RANGE_MPEG;
    visit(picture);
}

} // namespace

MoviePicture::Colour MoviePicture::at(int x, int y) const {
    const std::ptrdiff_t chroma = y / 2 * chromaStride + x / 2;
    return {luma[y * lumaStride + x], cb[chroma], cr[chroma]};
}

double forEachPicture(const std::filesystem::path &movie,
                      const std::function<void(const MoviePicture &)> &visit) {
    AVFormatContext *format = nullptr;
    if (avformat_open_input(&format, movie.c_str(), nullptr, nullptr) < 0)
        return -1;
    const auto closeFormat = [](AVFormatContext *context) { avformat_close_input(&context); };
    const std::unique_ptr<AVFormatContext, decltype(closeFormat)> owner(format, closeFormat);
    if (avformat_find_stream_info(format, nullptr) < 0)
        return -1;
    const AVCodec *codec = nullptr;
    const int index = av_find_best_stream(format, AVMEDIA_TYPE_VIDEO, -1, -1, &codec, 0);
    if (index < 0)
        return -1;
    const auto freeContext = [](AVCodecContext *context) { avcodec_free_context(&context); };
    const std::unique_ptr<AVCodecContext, decltype(freeContext)> context(avcodec_alloc_context3(codec),
                                                                         freeContext);
    avcodec_parameters_to_context(context.get(), format->streams[index]->codecpar);
    if (avcodec_open2(context.get(), codec, nullptr) < 0)
        return -1;
    const auto freePacket = [](AVPacket *packet) { av_packet_free(&packet); };
    const auto freeFrame = [](AVFrame *frame) { av_frame_free(&frame); };
    const std::unique_ptr<AVPacket, decltype(freePacket)> packet(av_packet_alloc(), freePacket);
    const std::unique_ptr<AVFrame, decltype(freeFrame)> frame(av_frame_alloc(), freeFrame);
    const auto showAll = [&] {
        while (avcodec_receive_frame(context.get(), frame.get()) >= 0)
            show(*frame, *format->streams[index], visit);
    };
    while (av_read_frame(format, packet.get()) >= 0) {
        if (packet->stream_index == index && avcodec_send_packet(context.get(), packet.get()) >= 0)
            showAll();
        av_packet_unref(packet.get());
    }
    avcodec_send_packet(context.get(), nullptr);
    showAll();
    return double(format->duration) / AV_TIME_BASE;
}

} // namespace vantrell::testing
