// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "CameraReel.h"

#include "Media/Libav/FFmpegPointers.h"
#include "TestSupport/FrameCode.h"

#include <stdexcept>
#include <utility>

namespace vantrell::bench {

namespace {

using testing::framecode::squaresOf;

void drawCode(CameraScene::Picture &picture, PixelSize size, std::uint32_t place) {
    const std::uint32_t bits = squaresOf(place);
    for (int y = 0; y < testing::framecode::height; ++y)
        for (int x = 0; x < testing::framecode::width; ++x)
            picture.y[std::size_t(y * size.width + x)] =
                (bits >> (x / testing::framecode::squareSize) & 1) ? 235 : 16;
}

/// A camera's own compression: every second row of colours, full range.
class JpegMaker {
public:
    explicit JpegMaker(PixelSize size) : m_size(size) {
        const AVCodec *codec = avcodec_find_encoder(AV_CODEC_ID_MJPEG);
        m_context.reset(codec ? avcodec_alloc_context3(codec) : nullptr);
        if (!m_context)
            throw std::runtime_error("no encoder for JPEG");
        m_context->width = size.width;
        m_context->height = size.height;
        m_context->pix_fmt = AV_PIX_FMT_YUVJ422P;
        m_context->time_base = {1, 30};
        m_context->flags |= AV_CODEC_FLAG_QSCALE;
        m_context->global_quality = 4 * FF_QP2LAMBDA;
        m_context->thread_count = 1;
        if (avcodec_open2(m_context.get(), codec, nullptr) < 0)
            throw std::runtime_error("the encoder for JPEG does not start");
    }

    std::vector<std::uint8_t> make(const CameraScene::Picture &picture) {
        m_frame->format = AV_PIX_FMT_YUVJ422P;
        m_frame->width = m_size.width;
        m_frame->height = m_size.height;
        m_frame->quality = m_context->global_quality;
        av_frame_get_buffer(m_frame.get(), 0);
        for (int y = 0; y < m_size.height; ++y) {
            for (int x = 0; x < m_size.width; ++x)
                m_frame->data[0][y * m_frame->linesize[0] + x] =
                    full(picture.y[std::size_t(y * m_size.width + x)], 16, 219);
            for (int x = 0; x < m_size.width / 2; ++x) {
                const std::size_t at = std::size_t(y / 2 * (m_size.width / 2) + x);
                m_frame->data[1][y * m_frame->linesize[1] + x] = full(picture.cb[at], 16, 224);
                m_frame->data[2][y * m_frame->linesize[2] + x] = full(picture.cr[at], 16, 224);
            }
        }
        if (avcodec_send_frame(m_context.get(), m_frame.get()) < 0 ||
            avcodec_receive_packet(m_context.get(), m_packet.get()) < 0)
            throw std::runtime_error("the encoder for JPEG failed");
        std::vector<std::uint8_t> bytes(m_packet->data, m_packet->data + m_packet->size);
        av_packet_unref(m_packet.get());
        av_frame_unref(m_frame.get());
        return bytes;
    }

private:
    static std::uint8_t full(int value, int low, int range) {
        return std::uint8_t(std::clamp((value - low) * 255 / range, 0, 255));
    }

    const PixelSize m_size;
    CodecContextPtr m_context;
    FramePtr m_frame{av_frame_alloc()};
    PacketPtr m_packet{av_packet_alloc()};
};

} // namespace

CameraReel::CameraReel(PixelSize size, CameraFormat format, int pictures) {
    const CameraScene scene(size);
    JpegMaker jpeg(size);
    for (int i = 0; i < pictures; ++i) {
        auto picture = scene.paint(i);
        drawCode(picture, size, std::uint32_t(i));
        m_sent.push_back(format == CameraFormat::mjpeg ? jpeg.make(picture) : scene.packed(picture));
        m_painted.push_back(std::move(picture));
    }
}

std::size_t CameraReel::placeOf(std::uint32_t number) const {
    const std::size_t there = length() - 1;
    const std::size_t at = number % (2 * there);
    return at < there ? at : 2 * there - at;
}

} // namespace vantrell::bench
