// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Media/Encoding/TrialDecoder.h"

#include "Media/Libav/FFmpegError.h"

#include <algorithm>

namespace vantrell {

std::expected<void, PlatformError> TrialDecoder::open(const std::vector<std::uint8_t> &configuration) {
    const AVCodec *decoder = avcodec_find_decoder(AV_CODEC_ID_H264);
    m_context.reset(decoder ? avcodec_alloc_context3(decoder) : nullptr);
    if (!m_context || !m_packet || !m_frame)
        return std::unexpected(ffmpegError("find the decoder", AVERROR_DECODER_NOT_FOUND));
    m_context->extradata =
        static_cast<std::uint8_t *>(av_mallocz(configuration.size() + AV_INPUT_BUFFER_PADDING_SIZE));
    m_context->extradata_size = int(configuration.size());
    if (!m_context->extradata)
        return std::unexpected(ffmpegError("open the decoder", AVERROR(ENOMEM)));
    std::ranges::copy(configuration, m_context->extradata);
    m_context->flags |= AV_CODEC_FLAG_LOW_DELAY;
    m_context->thread_count = 1;
    m_context->log_level_offset = AV_LOG_INFO - AV_LOG_ERROR;
    if (const int opened = avcodec_open2(m_context.get(), decoder, nullptr); opened < 0)
        return std::unexpected(ffmpegError("open the decoder", opened));
    return {};
}

std::expected<const AVFrame *, PlatformError> TrialDecoder::decode(std::span<const std::uint8_t> frame) {
    if (const int room = av_new_packet(m_packet.get(), int(frame.size())); room < 0)
        return std::unexpected(ffmpegError("decode the trial", room));
    std::ranges::copy(frame, m_packet->data);
    const int sent = avcodec_send_packet(m_context.get(), m_packet.get());
    av_packet_unref(m_packet.get());
    if (sent < 0)
        return std::unexpected(ffmpegError("decode the trial", sent));
    if (const int received = avcodec_receive_frame(m_context.get(), m_frame.get()); received < 0)
        return std::unexpected(ffmpegError("decode the trial", received));
    return m_frame.get();
}

} // namespace vantrell
