// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Ssim.h"

namespace vantrell::bench {

double ssim(const std::uint8_t *a, std::ptrdiff_t aStride, const std::uint8_t *b, std::ptrdiff_t bStride,
            int width, int height) {
    constexpr int block = 8;
    constexpr int step = 4;
    constexpr double pixels = block * block;
    constexpr double c1 = 0.01 * 0.01 * 255 * 255;
    constexpr double c2 = 0.03 * 0.03 * 255 * 255;
    double total = 0;
    std::int64_t blocks = 0;
    for (int y = 0; y + block <= height; y += step) {
        for (int x = 0; x + block <= width; x += step) {
            int sumA = 0;
            int sumB = 0;
            int squares = 0;
            int products = 0;
            for (int v = 0; v < block; ++v) {
                const std::uint8_t *pa = a + (y + v) * aStride + x;
                const std::uint8_t *pb = b + (y + v) * bStride + x;
                for (int u = 0; u < block; ++u) {
                    sumA += pa[u];
                    sumB += pb[u];
                    squares += pa[u] * pa[u] + pb[u] * pb[u];
                    products += pa[u] * pb[u];
                }
            }
            const double ma = sumA / pixels;
            const double mb = sumB / pixels;
            const double variances = squares / pixels - ma * ma - mb * mb;
            const double covariance = products / pixels - ma * mb;
            total +=
                (2 * ma * mb + c1) * (2 * covariance + c2) / ((ma * ma + mb * mb + c1) * (variances + c2));
            ++blocks;
        }
    }
    return blocks ? total / double(blocks) : 1;
}

} // namespace vantrell::bench
