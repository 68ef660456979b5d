// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Media/Encoding/BlockError.h"

#include "Media/Encoding/BlockArea.h"

#include <cstdlib>

namespace vantrell {

int absoluteDifference(BlockPixels a, BlockPixels b) {
    int sum = 0;
    for (int y = 0; y < blockEdge; ++y, a.data += a.stride, b.data += b.stride) {
        for (int x = 0; x < blockEdge; ++x)
            sum += std::abs(a.data[x] - b.data[x]);
    }
    return sum;
}

int squaredDifference(BlockPixels a, BlockPixels b) {
    int sum = 0;
    for (int y = 0; y < blockEdge; ++y, a.data += a.stride, b.data += b.stride) {
        for (int x = 0; x < blockEdge; ++x) {
            const int difference = a.data[x] - b.data[x];
            sum += difference * difference;
        }
    }
    return sum;
}

int squaredChromaDifference(BlockPixels a, BlockPixels b, bool isBetweenRows) {
    const std::ptrdiff_t next = isBetweenRows ? b.stride : 0;
    int sum = 0;
    for (int y = 0; y < blockEdge / 2; ++y, a.data += a.stride, b.data += b.stride) {
        for (int x = 0; x < blockEdge; ++x) {
            const int difference = a.data[x] - (b.data[x] + b.data[x + next] + 1) / 2;
            sum += difference * difference;
        }
    }
    return sum;
}

} // namespace vantrell
