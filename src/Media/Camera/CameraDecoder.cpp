// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Media/Camera/CameraDecoder.h"

#include "Support/Log.h"

#include <algorithm>
#include <array>

namespace vantrell {

namespace {

constexpr int manyRefused = 15;
/// A second or two: then a picture with faults is better than one that stands still.
constexpr int mostSpoilt = 45;

/// Begins and ends as a whole picture does; drivers fill up their buffers with zeros behind it.
bool isWholeJpeg(std::span<const std::uint8_t> data) {
    while (!data.empty() && data.back() == 0)
        data = data.first(data.size() - 1);
    constexpr std::array<std::uint8_t, 2> start{0xff, 0xd8};
    constexpr std::array<std::uint8_t, 2> end{0xff, 0xd9};
    return data.size() > 4 && std::ranges::equal(data.first(2), start) &&
           std::ranges::equal(data.last(2), end);
}

} // namespace

CameraDecoder::CameraDecoder(CameraFormat format)
    : m_format(format), m_packet(av_packet_alloc()), m_frame(av_frame_alloc()) {
    open();
}

void CameraDecoder::open() {
    if (m_format == CameraFormat::mjpeg)
        return;
    const AVCodec *codec = avcodec_find_decoder(AV_CODEC_ID_H264);
    m_context.reset(codec ? avcodec_alloc_context3(codec) : nullptr);
    if (!m_context)
        return;
    // Several threads hold pictures back.
    m_context->thread_count = 1;
    m_context->flags |= AV_CODEC_FLAG_LOW_DELAY;
    m_context->log_level_offset = AV_LOG_INFO - AV_LOG_ERROR;
    m_context->opaque = this;
    m_context->get_buffer2 = [](AVCodecContext *context, AVFrame *frame, int flags) {
        ++static_cast<CameraDecoder *>(context->opaque)->m_begun;
        return avcodec_default_get_buffer2(context, frame, flags);
    };
    if (m_isStrict)
        m_context->err_recognition |= AV_EF_EXPLODE | AV_EF_BITSTREAM | AV_EF_BUFFER;
    if (avcodec_open2(m_context.get(), codec, nullptr) < 0)
        m_context.reset();
}

bool CameraDecoder::decodeVideo(std::span<const std::uint8_t> data) {
    if (!m_context || !m_packet || av_new_packet(m_packet.get(), int(data.size())) < 0)
        return false;
    std::ranges::copy(data, m_packet->data);
    m_begun = 0;
    const bool isTaken = avcodec_send_packet(m_context.get(), m_packet.get()) >= 0;
    av_packet_unref(m_packet.get());
    if (!isTaken || avcodec_receive_frame(m_context.get(), m_frame.get()) < 0 || m_frame->width <= 0)
        return false;
    return !m_isStrict || (m_begun <= 1 && m_frame->decode_error_flags == 0 &&
                           (m_frame->flags & AV_FRAME_FLAG_CORRUPT) == 0);
}

const AVFrame *CameraDecoder::decode(std::span<const std::uint8_t> data, int leastSide) {
    if (!m_frame)
        return nullptr;
    const bool isGood =
        m_format == CameraFormat::mjpeg
            ? (!m_isStrict || isWholeJpeg(data)) && m_jpeg.unpack(data, *m_frame, m_isStrict, leastSide)
            : decodeVideo(data);
    if (isGood) {
        m_refusedInARow = 0;
        m_spoilt = m_frame->key_frame ? 0 : std::max(m_spoilt - 1, 0);
        return m_spoilt > 0 ? nullptr : m_frame.get();
    }
    m_spoilt = m_format == CameraFormat::h264 ? mostSpoilt : 0;
    if (m_isStrict && ++m_refusedInARow == manyRefused) {
        qCInfo(logCapture, "the camera's pictures are all faulty, taken as they are");
        m_isStrict = false;
        open();
    }
    return nullptr;
}

} // namespace vantrell
