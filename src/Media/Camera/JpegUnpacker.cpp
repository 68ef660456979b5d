// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Media/Camera/JpegUnpacker.h"

#include <algorithm>
#include <optional>

#include <turbojpeg.h>

namespace vantrell {

namespace {

/// Beyond any camera: a damaged header asks for as much as it likes.
constexpr int largestSide = 8192;
constexpr int mostHalvings = 3;

std::optional<AVPixelFormat> formatOf(int subsampling) {
    switch (subsampling) {
    case TJSAMP_420:
        return AV_PIX_FMT_YUVJ420P;
    case TJSAMP_422:
        return AV_PIX_FMT_YUVJ422P;
    case TJSAMP_444:
        return AV_PIX_FMT_YUVJ444P;
    case TJSAMP_440:
        return AV_PIX_FMT_YUVJ440P;
    case TJSAMP_411:
        return AV_PIX_FMT_YUVJ411P;
    case TJSAMP_GRAY:
        return AV_PIX_FMT_GRAY8;
    default:
        return std::nullopt;
    }
}

/// Gives the frame memory for such a picture unless it has it; nobody else refers to it.
bool makeRoom(AVFrame &frame, int width, int height, AVPixelFormat format) {
    if (frame.width == width && frame.height == height && frame.format == format && frame.data[0])
        return true;
    av_frame_unref(&frame);
    frame.width = width;
    frame.height = height;
    frame.format = format;
    if (av_frame_get_buffer(&frame, 0) < 0)
        return false;
    frame.color_range = AVCOL_RANGE_JPEG;
    frame.colorspace = AVCOL_SPC_BT470BG;
    return true;
}

} // namespace

void JpegUnpacker::Closer::operator()(void *decompressor) const {
    tjDestroy(decompressor);
}

JpegUnpacker::JpegUnpacker() : m_decompressor(tjInitDecompress()) {}

bool JpegUnpacker::unpack(std::span<const std::uint8_t> data, AVFrame &to, bool strictly, int leastSide) {
    tjhandle decompressor = m_decompressor.get();
    int width = 0;
    int height = 0;
    int subsampling = 0;
    int colours = 0;
    if (!decompressor || tjDecompressHeader3(decompressor, data.data(), data.size(), &width, &height,
                                             &subsampling, &colours) != 0)
        return false;
    const auto format = formatOf(subsampling);
    for (int halvings = 0;
         leastSide > 0 && halvings < mostHalvings && std::min(width, height) / 2 >= leastSide; ++halvings) {
        width = (width + 1) / 2;
        height = (height + 1) / 2;
    }
    if (!format || width < 1 || height < 1 || std::max(width, height) > largestSide ||
        !makeRoom(to, width, height, *format))
        return false;
    // The quicker transform is off by three steps of 255 at most where it rounds, far less than what the
    // picture's own compression is off by.
    const int flags = TJFLAG_FASTDCT | (strictly ? TJFLAG_STOPONWARNING : 0);
    const int result = tjDecompressToYUVPlanes(decompressor, data.data(), data.size(), to.data, width,
                                               to.linesize, height, flags);
    return result == 0 || (!strictly && tjGetErrorCode(decompressor) == TJERR_WARNING);
}

} // namespace vantrell
