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
constexpr int blockEdge = 8;
constexpr int unit = 2 * blockEdge;
// Places of a unit's blocks.
constexpr std::size_t blueAt = 4;
constexpr std::size_t redAt = 6;

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

/// Gives the frame memory for such a picture unless it has it; nobody else refers to it. There is room for
/// whole units of pixels.
bool makeRoom(AVFrame &frame, int width, int height, AVPixelFormat format) {
    if (frame.width == width && frame.height == height && frame.format == format && frame.data[0])
        return true;
    av_frame_unref(&frame);
    frame.width = (width + unit - 1) / unit * unit;
    frame.height = (height + unit - 1) / unit * unit;
    frame.format = format;
    if (av_frame_get_buffer(&frame, 0) < 0)
        return false;
    frame.width = width;
    frame.height = height;
    frame.color_range = format == AV_PIX_FMT_NV12 ? AVCOL_RANGE_MPEG : AVCOL_RANGE_JPEG;
    frame.colorspace = AVCOL_SPC_BT470BG;
    return true;
}

} // namespace

void JpegUnpacker::Closer::operator()(void *decompressor) const {
    tjDestroy(decompressor);
}

JpegUnpacker::JpegUnpacker() : m_decompressor(tjInitDecompress()) {}

bool JpegUnpacker::readUnit() {
    const auto read = [&](std::size_t component, std::size_t first, int count) {
        for (int i = 0; i < count; ++i)
            if (!m_scan.read(m_header, component, m_blocks[first + std::size_t(i)]))
                return false;
        return true;
    };
    return read(0, 0, 2 * m_header.lumaRows()) && read(1, blueAt, m_header.chromaRows()) &&
           read(2, redAt, m_header.chromaRows()) && m_scan.isWithin();
}

void JpegUnpacker::paintUnit(std::uint8_t *luma, std::uint8_t *chroma, const AVFrame &to) const {
    for (int i = 0; i < 2 * m_header.lumaRows(); ++i)
        paintLuma(m_blocks[std::size_t(i)], luma + i / 2 * blockEdge * to.linesize[0] + i % 2 * blockEdge,
                  to.linesize[0]);
    const bool isTall = m_header.chromaRows() == m_header.lumaRows();
    for (int i = 0; i < m_header.chromaRows(); ++i)
        paintChroma(m_blocks[blueAt + std::size_t(i)], m_blocks[redAt + std::size_t(i)], isTall,
                    chroma + i * blockEdge / 2 * to.linesize[1], to.linesize[1]);
}

bool JpegUnpacker::paint(std::span<const std::uint8_t> data, AVFrame &to) {
    if (!isJpegTransformQuick() || !m_header.read(data) || !m_scan.open(m_header.scan()))
        return false;
    const auto [width, height] = m_header.size();
    if (!makeRoom(to, width, height, AV_PIX_FMT_NV12))
        return false;
    int unitsToMark = m_header.unitsBetweenMarks();
    for (int y = 0; y < height; y += m_header.lumaRows() * blockEdge)
        for (int x = 0; x < width; x += unit, --unitsToMark) {
            if (unitsToMark == 0 && m_header.unitsBetweenMarks() > 0) {
                if (!m_scan.passMark())
                    return false;
                unitsToMark = m_header.unitsBetweenMarks();
            }
            if (!readUnit())
                return false;
            paintUnit(to.data[0] + y * to.linesize[0] + x, to.data[1] + y / 2 * to.linesize[1] + x, to);
        }
    return m_scan.isAtEnd();
}

bool JpegUnpacker::unpack(std::span<const std::uint8_t> data, AVFrame &to, bool strictly, int leastSide) {
    if (leastSide <= 0 && paint(data, to))
        return true;
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
