// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Media/Encoding/LibavEncoder.h"

#include "Media/H264/H264Units.h"
#include "Media/Libav/FFmpegError.h"
#include "Platform/ScreenError.h"

#include <cstddef>

extern "C" {
#include <libavutil/dict.h>
#include <libavutil/hwcontext.h>
}

namespace vantrell {

namespace {

/// The encoder's own key frames, besides those that are asked for: once a minute of 60 frames a second.
constexpr int mostBetweenKeyFrames = 3600;
/// Pictures in the card's memory: one on its way in, one being encoded and its reference.
constexpr int picturesInMemory = 4;

using BufferPtr = std::unique_ptr<AVBufferRef, FFmpegDeleter<av_buffer_unref>>;

struct Dictionary {
    Dictionary() = default;
    Dictionary(const Dictionary &) = delete;
    Dictionary &operator=(const Dictionary &) = delete;
    ~Dictionary() { av_dict_free(&entries); }
    AVDictionary *entries = nullptr;
};

void describePicture(AVCodecContext &context, PixelSize encoded, ColourMatrix matrix) {
    context.width = encoded.width;
    context.height = encoded.height;
    context.pix_fmt = AV_PIX_FMT_NV12;
    // Frames are counted: when they were taken is the movie's business, and no encoder shall drop one for it.
    context.time_base = {1, 60};
    context.framerate = {60, 1};
    context.max_b_frames = 0;
    context.gop_size = mostBetweenKeyFrames;
    context.profile = FF_PROFILE_H264_HIGH;
    context.flags |= AV_CODEC_FLAG_GLOBAL_HEADER | AV_CODEC_FLAG_LOW_DELAY;
    context.color_range = AVCOL_RANGE_MPEG;
    context.color_primaries = AVCOL_PRI_BT709;
    context.color_trc = AVCOL_TRC_BT709;
    context.colorspace = AVColorSpace(h273Number(matrix));
}

/// Pictures of the context's size in the card's memory.
std::expected<void, PlatformError> openMemory(AVCodecContext &context, const LibavEncoder::Codec &codec) {
    AVBufferRef *opened = nullptr;
    const int found = av_hwdevice_ctx_create(
        &opened, codec.memory, codec.device.empty() ? nullptr : codec.device.c_str(), nullptr, 0);
    const BufferPtr device(opened);
    if (found < 0)
        return std::unexpected(ffmpegError("open " + codec.device, found));
    BufferPtr frames(av_hwframe_ctx_alloc(device.get()));
    if (!frames)
        return std::unexpected(ffmpegError("allocate pictures", AVERROR(ENOMEM)));
    auto &pool = *reinterpret_cast<AVHWFramesContext *>(frames->data);
    for (const AVPixelFormat *format = context.codec->pix_fmts; format && *format != AV_PIX_FMT_NONE;
         ++format)
        if (*format != AV_PIX_FMT_NV12)
            pool.format = *format;
    pool.sw_format = AV_PIX_FMT_NV12;
    pool.width = context.width;
    pool.height = context.height;
    pool.initial_pool_size = picturesInMemory;
    if (const int made = av_hwframe_ctx_init(frames.get()); made < 0)
        return std::unexpected(ffmpegError("allocate pictures on " + codec.device, made));
    context.pix_fmt = pool.format;
    context.hw_frames_ctx = frames.release();
    return {};
}

std::expected<void, PlatformError> openCodec(AVCodecContext &context, const LibavEncoder::Codec &codec) {
    Dictionary options;
    for (const auto &[name, value] : codec.options)
        av_dict_set(&options.entries, name.c_str(), value.c_str(), 0);
    if (const int opened = avcodec_open2(&context, context.codec, &options.entries); opened < 0)
        return std::unexpected(ffmpegError("open " + codec.name, opened));
    return {};
}

} // namespace

std::expected<std::unique_ptr<LibavEncoder>, PlatformError>
LibavEncoder::create(const Codec &codec, PixelSize picture, ColourMatrix matrix) {
    const AVCodec *encoder = avcodec_find_encoder_by_name(codec.name.c_str());
    CodecContextPtr context(encoder ? avcodec_alloc_context3(encoder) : nullptr);
    FramePtr frame(av_frame_alloc());
    FramePtr inMemory(codec.memory != AV_HWDEVICE_TYPE_NONE ? av_frame_alloc() : nullptr);
    PacketPtr packet(av_packet_alloc());
    if (!context || !frame || !packet)
        return std::unexpected(ffmpegError("find " + codec.name, AVERROR_ENCODER_NOT_FOUND));
    describePicture(*context, {(picture.width + 1) / 2 * 2, (picture.height + 1) / 2 * 2}, matrix);
    // What does not work here is no news to the user: there is always another encoder.
    context->log_level_offset = AV_LOG_INFO - AV_LOG_ERROR;
    if (inMemory)
        if (const auto opened = openMemory(*context, codec); !opened)
            return std::unexpected(opened.error());
    if (const auto opened = openCodec(*context, codec); !opened)
        return std::unexpected(opened.error());
    return std::unique_ptr<LibavEncoder>(
        new LibavEncoder(std::move(context), std::move(frame), std::move(inMemory), std::move(packet)));
}

LibavEncoder::LibavEncoder(CodecContextPtr context, FramePtr picture, FramePtr inMemory, PacketPtr packet)
    : m_context(std::move(context)), m_picture(std::move(picture)), m_inMemory(std::move(inMemory)),
      m_packet(std::move(packet)) {
    learnConfiguration({m_context->extradata, std::size_t(m_context->extradata_size)});
}

PixelSize LibavEncoder::encodedSize() const {
    return {m_context->width, m_context->height};
}

std::expected<EncodedFrame, PlatformError>
LibavEncoder::encode(const Nv12Frame &frame, const BlockMap &, std::int64_t presentationTime, bool keyFrame) {
    if (const auto sent = send(frame, keyFrame); !sent)
        return std::unexpected(sent.error());
    av_packet_unref(m_packet.get());
    const int received = avcodec_receive_packet(m_context.get(), m_packet.get());
    if (received == AVERROR(EAGAIN))
        return std::unexpected(
            screenError(ScreenErrorCode::encoderFailed, "The video encoder keeps frames back"));
    if (received < 0)
        return std::unexpected(ffmpegError("encode a picture", received));

    const std::span<const std::uint8_t> stream(m_packet->data, std::size_t(m_packet->size));
    learnConfiguration(stream);
    m_data.clear();
    // A picture that only claims to be a key frame would be one where a player cannot start.
    bool isKeyFrame = false;
    for (const H264Unit unit : splitByteStream(stream)) {
        // The movie has the parameter sets in its sample description, and needs nothing but slices here.
        if (typeOf(unit) != H264UnitType::slice && typeOf(unit) != H264UnitType::keySlice)
            continue;
        isKeyFrame = typeOf(unit) == H264UnitType::keySlice;
        for (int shift = 24; shift >= 0; shift -= 8)
            m_data.push_back(std::uint8_t(unit.size() >> shift));
        m_data.insert(m_data.end(), unit.begin(), unit.end());
    }
    if (m_data.empty())
        return std::unexpected(screenError(ScreenErrorCode::encoderFailed, "The video encoder failed"));
    return EncodedFrame{m_data, presentationTime, isKeyFrame};
}

std::expected<void, PlatformError> LibavEncoder::send(const Nv12Frame &frame, bool keyFrame) {
    m_picture->format = AV_PIX_FMT_NV12;
    m_picture->width = m_context->width;
    m_picture->height = m_context->height;
    // libavcodec copies what it has to keep of a frame that owns no memory.
    m_picture->data[0] = const_cast<std::uint8_t *>(frame.luma());
    m_picture->data[1] = const_cast<std::uint8_t *>(frame.chroma());
    m_picture->linesize[0] = int(frame.stride());
    m_picture->linesize[1] = int(frame.stride());

    AVFrame *sent = m_picture.get();
    if (m_inMemory) {
        av_frame_unref(m_inMemory.get());
        if (const int room = av_hwframe_get_buffer(m_context->hw_frames_ctx, m_inMemory.get(), 0); room < 0)
            return std::unexpected(ffmpegError("find room on the graphics card", room));
        if (const int moved = av_hwframe_transfer_data(m_inMemory.get(), m_picture.get(), 0); moved < 0)
            return std::unexpected(ffmpegError("bring a picture to the graphics card", moved));
        sent = m_inMemory.get();
    }
    sent->pts = m_framesSent++;
    sent->pict_type = keyFrame ? AV_PICTURE_TYPE_I : AV_PICTURE_TYPE_NONE;
    if (const int taken = avcodec_send_frame(m_context.get(), sent); taken < 0)
        return std::unexpected(ffmpegError("encode a picture", taken));
    return {};
}

void LibavEncoder::learnConfiguration(std::span<const std::uint8_t> stream) {
    if (!m_configuration.empty())
        return;
    H264Unit sequenceSet;
    H264Unit pictureSet;
    for (const H264Unit unit : splitByteStream(stream)) {
        if (typeOf(unit) == H264UnitType::sequenceParameters)
            sequenceSet = unit;
        else if (typeOf(unit) == H264UnitType::pictureParameters)
            pictureSet = unit;
    }
    constexpr std::size_t smallestSet = 4;
    if (sequenceSet.size() >= smallestSet && !pictureSet.empty())
        m_configuration = avcConfiguration(sequenceSet, pictureSet);
}

} // namespace vantrell
