// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Media/Encoding/ReconstructionMargin.h"

#include <array>
#include <cstring>

namespace vantrell {

namespace {

constexpr int sideBytes = ReconstructedPicture::margin;

/// Repeats after more bytes than the pixels of any plane take.
std::uint8_t spoiltByte(std::ptrdiff_t place) {
    return std::uint8_t(place * 37 + 11);
}

struct Plane {
    std::uint8_t *data;
    std::ptrdiff_t stride;
    int width;
    int height;
    /// Rows of margin above and below.
    int rows;
    /// Bytes of a pixel.
    int pixel;

    std::uint8_t *row(int y) const { return data + y * stride; }
};

std::array<Plane, 2> planesOf(const ReconstructedPicture &picture) {
    constexpr int margin = ReconstructedPicture::margin;
    const int width = picture.columns * blockEdge;
    const int height = picture.rows * blockEdge;
    return {Plane{picture.luma, picture.lumaStride, width, height, margin, 1},
            Plane{picture.chroma, picture.chromaStride, width, height / 2, margin / 2, 2}};
}

void spoil(std::uint8_t *bytes, int count) {
    for (int i = 0; i < count; ++i)
        bytes[i] = spoiltByte(i);
}

/// `count` bytes repeat the pixel.
bool repeats(const std::uint8_t *bytes, const std::uint8_t *pixel, const Plane &plane, int count) {
    // It begins with the pixel, and each byte is as that one pixel before.
    return std::memcmp(bytes, pixel, std::size_t(plane.pixel)) == 0 &&
           std::memcmp(bytes, bytes + plane.pixel, std::size_t(count - plane.pixel)) == 0;
}

bool hasSides(const Plane &plane, int y) {
    const std::uint8_t *const row = plane.row(y);
    return repeats(row - sideBytes, row, plane, sideBytes) &&
           repeats(row + plane.width, row + plane.width - plane.pixel, plane, sideBytes);
}

} // namespace

void spoilMargin(const ReconstructedPicture &picture) {
    for (const Plane &plane : planesOf(picture)) {
        for (int y = 0; y < plane.height; ++y) {
            spoil(plane.row(y) - sideBytes, sideBytes);
            spoil(plane.row(y) + plane.width, sideBytes);
        }
        for (int y = 1; y <= plane.rows; ++y) {
            spoil(plane.row(-y) - sideBytes, plane.width + 2 * sideBytes);
            spoil(plane.row(plane.height - 1 + y) - sideBytes, plane.width + 2 * sideBytes);
        }
    }
}

bool hasMargin(const ReconstructedPicture &picture) {
    for (const Plane &plane : planesOf(picture)) {
        const auto bytes = std::size_t(plane.width + 2 * sideBytes);
        for (int y = 0; y < plane.height; ++y)
            if (!hasSides(plane, y))
                return false;
        for (int y = 1; y <= plane.rows; ++y)
            if (std::memcmp(plane.row(-y) - sideBytes, plane.row(0) - sideBytes, bytes) != 0 ||
                std::memcmp(plane.row(plane.height - 1 + y) - sideBytes,
                            plane.row(plane.height - 1) - sideBytes, bytes) != 0)
                return false;
    }
    return true;
}

} // namespace vantrell
