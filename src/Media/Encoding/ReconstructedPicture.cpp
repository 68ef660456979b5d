// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Media/Encoding/ReconstructedPicture.h"

#include <cstring>

namespace vantrell {

namespace {

/// Chroma has half as many rows, of as many bytes.
struct ReconstructedPlane {
    std::uint8_t *data;
    std::ptrdiff_t stride;
    int rowsDivisor;
};

struct PlanePair {
    ReconstructedPlane small;
    ReconstructedPlane whole;
};

/// Pixels of luma, relative to the small picture; margins are below zero and beyond the end.
struct PixelSpan {
    int left;
    int top;
    int right;
    int bottom;
};

template <typename CopyRow>
void forEachRow(const PlanePair &planes, const BlockArea &place, const PixelSpan &span, CopyRow copyRow) {
    const int divisor = planes.small.rowsDivisor;
    const std::ptrdiff_t wholeStart =
        std::ptrdiff_t(place.row) * blockEdge / divisor * planes.whole.stride + place.column * blockEdge;
    for (int y = span.top / divisor; y < span.bottom / divisor; ++y)
        copyRow(planes.small.data + y * planes.small.stride + span.left,
                planes.whole.data + wholeStart + y * planes.whole.stride + span.left,
                std::size_t(span.right - span.left));
}

} // namespace

void ReconstructedPicture::fillFrom(const ReconstructedPicture &whole, const BlockArea &place,
                                    int around) const {
    const PixelSpan everything{-around, -around, columns * blockEdge + around, rows * blockEdge + around};
    const auto copy = [](std::uint8_t *small, const std::uint8_t *from, std::size_t bytes) {
        std::memcpy(small, from, bytes);
    };
    forEachRow({{luma, lumaStride, 1}, {whole.luma, whole.lumaStride, 1}}, place, everything, copy);
    forEachRow({{chroma, chromaStride, 2}, {whole.chroma, whole.chromaStride, 2}}, place, everything, copy);
}

void ReconstructedPicture::writeTo(const ReconstructedPicture &whole, const BlockArea &place,
                                   const BlockArea &part) const {
    if (part.count() == 0)
        return;
    const PixelSpan span{
        (part.column - place.column) * blockEdge - (part.column == 0 ? margin : 0),
        (part.row - place.row) * blockEdge - (part.row == 0 ? margin : 0),
        (part.right() - place.column) * blockEdge + (part.right() == whole.columns ? margin : 0),
        (part.bottom() - place.row) * blockEdge + (part.bottom() == whole.rows ? margin : 0)};
    const auto copy = [](const std::uint8_t *small, std::uint8_t *to, std::size_t bytes) {
        std::memcpy(to, small, bytes);
    };
    forEachRow({{luma, lumaStride, 1}, {whole.luma, whole.lumaStride, 1}}, place, span, copy);
    forEachRow({{chroma, chromaStride, 2}, {whole.chroma, whole.chromaStride, 2}}, place, span, copy);
}

} // namespace vantrell
