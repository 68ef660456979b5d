// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Media/Encoding/ReconstructedPicture.h"

#include <algorithm>
#include <cstring>
#include <utility>
#include <vector>

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

void fillSpan(const ReconstructedPicture &small, const ReconstructedPicture &whole, const BlockArea &place,
              const PixelSpan &span) {
    const auto copy = [](std::uint8_t *to, const std::uint8_t *from, std::size_t bytes) {
        std::memcpy(to, from, bytes);
    };
    forEachRow({{small.luma, small.lumaStride, 1}, {whole.luma, whole.lumaStride, 1}}, place, span, copy);
    forEachRow({{small.chroma, small.chromaStride, 2}, {whole.chroma, whole.chromaStride, 2}}, place, span,
               copy);
}

/// The marked blocks of a row, as places and ends of runs in bytes of a plane's row, margin included.
std::vector<std::pair<int, int>> runsOf(const BlockMap &blocks, int row) {
    constexpr int margin = ReconstructedPicture::margin;
    std::vector<std::pair<int, int>> runs;
    for (int column = 0; column < blocks.columns(); ++column) {
        if (!blocks.isMarked(column, row))
            continue;
        const int begin = column == 0 ? -margin : column * blockEdge;
        const int end = (column + 1) * blockEdge + (column + 1 == blocks.columns() ? margin : 0);
        if (!runs.empty() && runs.back().second == begin)
            runs.back().second = end;
        else
            runs.emplace_back(begin, end);
    }
    return runs;
}

/// Fills `bytes` of a row with the mean of two rows, of which one may be the row itself.
void mean(std::uint8_t *row, const std::uint8_t *one, const std::uint8_t *other, int bytes) {
    for (int x = 0; x < bytes; ++x)
        row[x] = std::uint8_t((one[x] + other[x] + 1) / 2);
}

} // namespace

void ReconstructedPicture::fillFrom(const ReconstructedPicture &whole, const BlockArea &place,
                                    int around) const {
    fillSpan(*this, whole, place,
             {-around, -around, columns * blockEdge + around, rows * blockEdge + around});
}

void ReconstructedPicture::fillMarginFrom(const ReconstructedPicture &whole, const BlockArea &place,
                                          int around) const {
    const int right = columns * blockEdge;
    const int bottom = rows * blockEdge;
    fillSpan(*this, whole, place, {-around, -around, right + around, 0});
    fillSpan(*this, whole, place, {-around, 0, 0, bottom});
    fillSpan(*this, whole, place, {right, 0, right + around, bottom});
    fillSpan(*this, whole, place, {-around, bottom, right + around, bottom + around});
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

void ReconstructedPicture::copyFromBelow(const BlockMap &blocks, int distance) const {
    const auto copyRow = [&](int row) {
        const auto runs = runsOf(blocks, row);
        if (runs.empty())
            return;
        // What is read has not been overwritten yet: rows go towards where it lies.
        for (const auto &[plane, stride, divisor] :
             {ReconstructedPlane{luma, lumaStride, 1}, ReconstructedPlane{chroma, chromaStride, 2}}) {
            const int count = blockEdge / divisor;
            const bool isBetween = distance % divisor != 0;
            const std::ptrdiff_t way = (distance - (isBetween ? 1 : 0)) / divisor * stride;
            for (int i = 0; i < count; ++i) {
                const int y = row * count + (distance > 0 ? i : count - 1 - i);
                std::uint8_t *to = plane + y * stride;
                for (const auto &[begin, end] : runs) {
                    if (isBetween)
                        mean(to + begin, to + way + begin, to + way + stride + begin, end - begin);
                    else
                        std::memcpy(to + begin, to + way + begin, std::size_t(end - begin));
                }
            }
            const int edge = row == 0 ? 0 : row == rows - 1 ? rows * count - 1 : -1;
            for (int i = 1; edge >= 0 && i <= margin / divisor; ++i) {
                std::uint8_t *from = plane + edge * stride;
                for (const auto &[begin, end] : runs)
                    std::memcpy(from + (edge == 0 ? -i : i) * stride + begin, from + begin,
                                std::size_t(end - begin));
            }
        }
    };
    if (distance > 0) {
        for (int row = 0; row < rows; ++row)
            copyRow(row);
    } else {
        for (int row = rows - 1; row >= 0; --row)
            copyRow(row);
    }
}

void ReconstructedPicture::fill(int column, int row, PlainColour colour) const {
    const int left = column * blockEdge - (column == 0 ? margin : 0);
    const int right = (column + 1) * blockEdge + (column + 1 == columns ? margin : 0);
    const int top = row * blockEdge - (row == 0 ? margin : 0);
    const int bottom = (row + 1) * blockEdge + (row + 1 == rows ? margin : 0);
    for (int y = top; y < bottom; ++y)
        std::fill_n(luma + y * lumaStride + left, right - left, colour.luma);
    for (int y = top / 2; y < bottom / 2; ++y) {
        std::uint8_t *to = chroma + y * chromaStride;
        for (int x = left; x < right; x += int(sizeof colour.chroma))
            std::memcpy(to + x, &colour.chroma, sizeof colour.chroma);
    }
}

} // namespace vantrell
