// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "TestSupport/Camera/CameraPainter.h"

#include "TestSupport/FrameCode.h"

#include <algorithm>
#include <stdexcept>

namespace vantrell::testing {

namespace {

CodecContextPtr openEncoder(CameraFormat format, PixelSize size) {
    const bool isMjpeg = format == CameraFormat::mjpeg;
    const AVCodec *codec =
        isMjpeg ? avcodec_find_encoder(AV_CODEC_ID_MJPEG) : avcodec_find_encoder_by_name("libx264");
    CodecContextPtr context(codec ? avcodec_alloc_context3(codec) : nullptr);
    if (!context)
        throw std::runtime_error("no encoder for a test camera");
    context->width = size.width;
    context->height = size.height;
    context->pix_fmt = isMjpeg ? AV_PIX_FMT_YUVJ420P : AV_PIX_FMT_YUV420P;
    context->color_range = isMjpeg ? AVCOL_RANGE_JPEG : AVCOL_RANGE_MPEG;
    context->time_base = {1, 30};
    context->gop_size = 30;
    context->thread_count = 1;
    AVDictionary *options = nullptr;
    if (isMjpeg) {
        context->flags |= AV_CODEC_FLAG_QSCALE;
        context->global_quality = 3 * FF_QP2LAMBDA;
    } else {
        av_dict_set(&options, "preset", "ultrafast", 0);
        av_dict_set(&options, "tune", "zerolatency", 0);
    }
    const int opened = avcodec_open2(context.get(), codec, &options);
    av_dict_free(&options);
    if (opened < 0)
        throw std::runtime_error("the encoder of a test camera does not start");
    return context;
}

} // namespace

CameraPainter::CameraPainter(CameraFormat format, PixelSize size) : m_format(format), m_size(size) {
    const std::size_t pixels = std::size_t(size.width) * std::size_t(size.height);
    m_pixels.resize(format == CameraFormat::yuyv ? pixels * 2 : pixels * 3 / 2);
    if (format != CameraFormat::mjpeg && format != CameraFormat::h264)
        return;
    m_encoder = openEncoder(format, size);
    m_frame.reset(av_frame_alloc());
    m_packet.reset(av_packet_alloc());
}

std::span<const std::uint8_t> CameraPainter::paint(std::uint32_t number, bool isFlash) {
    paintRaw(number, isFlash);
    return m_encoder ? compress() : std::span<const std::uint8_t>(m_pixels);
}

void CameraPainter::paintRaw(std::uint32_t number, bool isFlash) {
    const std::uint32_t bits = framecode::squaresOf(number);
    const bool isPacked = m_format == CameraFormat::yuyv;
    const int step = isPacked ? 2 : 1;
    const int bar = int(number * 8 % std::uint32_t(m_size.width));
    for (int y = 0; y < m_size.height; ++y) {
        std::uint8_t *const row = m_pixels.data() + std::ptrdiff_t(y) * m_size.width * step;
        for (int x = 0; x < m_size.width; ++x) {
            int luma = isFlash ? 235 : x / 4 % 2 * 8 + 90;
            if (!isFlash && x >= bar && x < bar + 24)
                luma = 180;
            if (y < framecode::height && x < framecode::width)
                luma = (bits >> (x / framecode::squareSize) & 1) ? 235 : 16;
            row[x * step] = std::uint8_t(luma);
            if (isPacked)
                row[x * 2 + 1] = x % 2 ? groundCr : groundCb;
        }
    }
    if (isPacked)
        return;
    const auto chroma = std::span(m_pixels).subspan(std::size_t(m_size.width) * std::size_t(m_size.height));
    if (m_format == CameraFormat::nv12) {
        for (std::size_t i = 0; i < chroma.size(); ++i)
            chroma[i] = i % 2 ? groundCr : groundCb;
    } else {
        std::ranges::fill(chroma.first(chroma.size() / 2), groundCb);
        std::ranges::fill(chroma.last(chroma.size() / 2), groundCr);
    }
}

std::span<const std::uint8_t> CameraPainter::compress() {
    const std::ptrdiff_t lumaBytes = std::ptrdiff_t(m_size.width) * m_size.height;
    m_frame->format = m_encoder->pix_fmt;
    m_frame->width = m_size.width;
    m_frame->height = m_size.height;
    m_frame->data[0] = m_pixels.data();
    m_frame->data[1] = m_pixels.data() + lumaBytes;
    m_frame->data[2] = m_pixels.data() + lumaBytes + lumaBytes / 4;
    m_frame->linesize[0] = m_size.width;
    m_frame->linesize[1] = m_frame->linesize[2] = m_size.width / 2;
    m_frame->quality = m_encoder->global_quality;
    m_frame->pts = m_painted++;
    av_packet_unref(m_packet.get());
    if (avcodec_send_frame(m_encoder.get(), m_frame.get()) < 0 ||
        avcodec_receive_packet(m_encoder.get(), m_packet.get()) < 0)
        throw std::runtime_error("the test camera's encoder failed");
    return {m_packet->data, std::size_t(m_packet->size)};
}

} // namespace vantrell::testing
