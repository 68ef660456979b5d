// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Media/Camera/CameraPictureReader.h"

#include "Media/Camera/JpegColours.h"

#include <libyuv.h>

#include <algorithm>
#include <cstring>

namespace vantrell {

namespace {

PixelSize evenSize(int width, int height) {
    return {width / 2 * 2, height / 2 * 2};
}

bool isFullRange(const AVFrame &decoded) {
    return decoded.color_range == AVCOL_RANGE_JPEG || decoded.format == AV_PIX_FMT_YUVJ420P ||
           decoded.format == AV_PIX_FMT_YUVJ422P;
}

void blacken(Nv12Frame &frame) {
    const auto [width, height] = frame.picture();
    libyuv::SetPlane(frame.luma(), int(frame.stride()), width, height, 16);
    libyuv::SetPlane(frame.chroma(), int(frame.stride()), width, height / 2, 128);
}

} // namespace

bool CameraPictureReader::open(const CameraFrame &frame, int leastSide) {
    m_frame = frame;
    m_decoded = nullptr;
    if (frame.format != CameraFormat::mjpeg && frame.format != CameraFormat::h264) {
        m_size = evenSize(frame.size.width, frame.size.height);
        m_matrix = ColourMatrix::bt601;
        return !m_size.isEmpty();
    }
    if (m_decoderFormat != frame.format) {
        m_decoder = std::make_unique<CameraDecoder>(frame.format);
        m_decoderFormat = frame.format;
    }
    const AVFrame *decoded = m_decoder->decode(frame.planes[0].data, leastSide);
    return decoded && openDecoded(*decoded);
}

bool CameraPictureReader::openDecoded(const AVFrame &decoded) {
    m_decoded = &decoded;
    m_size = evenSize(decoded.width, decoded.height);
    m_matrix = decoded.colorspace == AVCOL_SPC_BT709 ? ColourMatrix::bt709 : ColourMatrix::bt601;
    return !m_size.isEmpty();
}

void CameraPictureReader::write(Nv12Frame &to) {
    if (to.picture() == m_size) {
        convert(to);
        return;
    }
    if (!m_unfitted || m_unfitted->picture() != m_size)
        m_unfitted = std::make_unique<Nv12Frame>(m_size);
    if (!convert(*m_unfitted))
        return;
    PixelRect place = fitted(m_size, to.picture());
    place = {place.x / 2 * 2, place.y / 2 * 2, std::max(place.width / 2 * 2, 2),
             std::max(place.height / 2 * 2, 2)};
    blacken(to);
    const std::ptrdiff_t stride = to.stride();
    libyuv::NV12Scale(m_unfitted->luma(), int(m_unfitted->stride()), m_unfitted->chroma(),
                      int(m_unfitted->stride()), m_size.width, m_size.height,
                      to.luma() + place.y * stride + place.x, int(stride),
                      to.chroma() + place.y / 2 * stride + place.x, int(stride), place.width, place.height,
                      libyuv::kFilterBox);
}

bool CameraPictureReader::convert(Nv12Frame &to) {
    if (m_decoded)
        return convertDecoded(*m_decoded, to);
    const auto [width, height] = m_size;
    const auto plane = [&](int index) { return m_frame.planes[std::size_t(index)].data.data(); };
    const auto stride = [&](int index) { return int(m_frame.planes[std::size_t(index)].stride); };
    const int outStride = int(to.stride());
    if (m_frame.format == CameraFormat::nv12)
        return libyuv::NV12Copy(plane(0), stride(0), plane(1), stride(1), to.luma(), outStride, to.chroma(),
                                outStride, width, height) == 0;
    if (m_frame.format == CameraFormat::i420)
        return libyuv::I420ToNV12(plane(0), stride(0), plane(1), stride(1), plane(2), stride(2), to.luma(),
                                  outStride, to.chroma(), outStride, width, height) == 0;
    return libyuv::YUY2ToNV12(plane(0), stride(0), to.luma(), outStride, to.chroma(), outStride, width,
                              height) == 0;
}

bool CameraPictureReader::convertDecoded(const AVFrame &decoded, Nv12Frame &to) {
    const auto [width, height] = m_size;
    const int outStride = int(to.stride());
    if (decoded.format == AV_PIX_FMT_NV12)
        return libyuv::NV12Copy(decoded.data[0], decoded.linesize[0], decoded.data[1], decoded.linesize[1],
                                to.luma(), outStride, to.chroma(), outStride, width, height) == 0;
    const bool isHalfHeight = decoded.format == AV_PIX_FMT_YUVJ420P || decoded.format == AV_PIX_FMT_YUV420P;
    const bool isFullHeight = decoded.format == AV_PIX_FMT_YUVJ422P || decoded.format == AV_PIX_FMT_YUV422P;
    if (isHalfHeight && !isFullRange(decoded))
        return libyuv::I420ToNV12(decoded.data[0], decoded.linesize[0], decoded.data[1], decoded.linesize[1],
                                  decoded.data[2], decoded.linesize[2], to.luma(), outStride, to.chroma(),
                                  outStride, width, height) == 0;
    if ((isHalfHeight || isFullHeight) && isFullRange(decoded)) {
        limitLuma(decoded.data[0], decoded.linesize[0], to.luma(), outStride, width, height);
        limitChroma(decoded.data[1], decoded.data[2], decoded.linesize[1], isFullHeight, to.chroma(),
                    outStride, width / 2, height / 2);
        return true;
    }
    // Shapes that hardly any camera has.
    m_scaler.reset(sws_getCachedContext(m_scaler.release(), width, height, AVPixelFormat(decoded.format),
                                        width, height, AV_PIX_FMT_NV12, SWS_BILINEAR, nullptr, nullptr,
                                        nullptr));
    if (!m_scaler)
        return false;
    const int *const matrix = sws_getCoefficients(SWS_CS_DEFAULT);
    sws_setColorspaceDetails(m_scaler.get(), matrix, isFullRange(decoded) ? 1 : 0, matrix, 0, 0, 1 << 16,
                             1 << 16);
    std::uint8_t *const planes[] = {to.luma(), to.chroma(), nullptr, nullptr};
    const int strides[] = {outStride, outStride, 0, 0};
    sws_scale(m_scaler.get(), decoded.data, decoded.linesize, 0, height, planes, strides);
    return true;
}

} // namespace vantrell
