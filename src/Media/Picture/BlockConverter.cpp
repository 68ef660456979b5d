// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Media/Picture/BlockConverter.h"

#include "Support/BlockMap.h"

#include <cstring>

#if defined(__x86_64__)
#include <immintrin.h>
#endif

namespace vantrell {

namespace {

constexpr int blockEdge = BlockMap::blockSize;

/// BT.709 in 1/256: white comes out as 235, black as 16, and every grey has chroma 128 exactly.
constexpr int lumaB = 16;
constexpr int lumaG = 157;
constexpr int lumaR = 47;
constexpr int cbB = 112;
constexpr int cbG = -86;
constexpr int cbR = -26;
constexpr int crB = -10;
constexpr int crG = -102;
constexpr int crR = 112;
constexpr int lumaOffset = 16 * 256 + 128;
constexpr int chromaOffset = 128 * 256 + 128;

std::uint8_t mean(int a, int b) {
    return std::uint8_t((a + b + 1) >> 1);
}

} // namespace

bool convertBlockPortably(const std::uint8_t *pixels, std::ptrdiff_t stride, const Nv12Block &previous,
                          const Nv12Block &out) {
    bool changed = false;
    std::uint8_t row[blockEdge];
    for (int y = 0; y < blockEdge; ++y) {
        const std::uint8_t *line = pixels + y * stride;
        for (int x = 0; x < blockEdge; ++x) {
            const std::uint8_t *p = line + x * bytesPerPixel;
            row[x] = std::uint8_t((lumaB * p[0] + lumaG * p[1] + lumaR * p[2] + lumaOffset) >> 8);
        }
        changed |= std::memcmp(row, previous.luma + y * previous.stride, blockEdge) != 0;
        std::memcpy(out.luma + y * out.stride, row, blockEdge);
    }
    for (int y = 0; y < blockEdge / 2; ++y) {
        const std::uint8_t *upper = pixels + 2 * y * stride;
        const std::uint8_t *lower = upper + stride;
        for (int x = 0; x < blockEdge; x += 2) {
            int c[3];
            for (int i = 0; i < 3; ++i) {
                const int left = x * bytesPerPixel + i;
                const int right = left + bytesPerPixel;
                c[i] = mean(mean(upper[left], lower[left]), mean(upper[right], lower[right]));
            }
            row[x] = std::uint8_t((cbB * c[0] + cbG * c[1] + cbR * c[2] + chromaOffset) >> 8);
            row[x + 1] = std::uint8_t((crB * c[0] + crG * c[1] + crR * c[2] + chromaOffset) >> 8);
        }
        changed |= std::memcmp(row, previous.chroma + y * previous.stride, blockEdge) != 0;
        std::memcpy(out.chroma + y * out.stride, row, blockEdge);
    }
    return changed;
}

#if defined(__x86_64__)
namespace {

/// The luma weights do not fit signed bytes, which the multiplication wants for one side: so the weights are
/// the unsigned side and the pixels, less 128, the signed one. The offset puts the 128 times all weights
/// back.
constexpr int signedLumaOffset = lumaOffset + 128 * (lumaB + lumaG + lumaR);

[[gnu::target("avx2")]] __m256i lumaOfEight(__m256i bgrx) {
    const __m256i weights = _mm256_set1_epi32(lumaB | lumaG << 8 | lumaR << 16);
    return _mm256_maddubs_epi16(weights, _mm256_xor_si256(bgrx, _mm256_set1_epi8(char(-128))));
}

[[gnu::target("avx2")]] bool convertBlockAvx2(const std::uint8_t *pixels, std::ptrdiff_t stride,
                                              const Nv12Block &previous, const Nv12Block &out) {
    const auto weights = [](int b, int g, int r) {
        return int((unsigned(b) & 0xff) | (unsigned(g) & 0xff) << 8 | (unsigned(r) & 0xff) << 16);
    };
    const __m256i cb = _mm256_set1_epi32(weights(cbB, cbG, cbR));
    const __m256i cr = _mm256_set1_epi32(weights(crB, crG, crR));
    const __m256i toLuma = _mm256_set1_epi16(short(signedLumaOffset));
    const __m256i toChroma = _mm256_set1_epi16(short(chromaOffset));
    const __m256i lumaOrder = _mm256_setr_epi32(0, 4, 1, 5, 2, 6, 3, 7);
    const __m128i interleave = _mm_setr_epi8(0, 8, 2, 10, 4, 12, 6, 14, -1, -1, -1, -1, -1, -1, -1, -1);
    const __m256i interleaveBoth = _mm256_broadcastsi128_si256(interleave);
    __m128i difference = _mm_setzero_si128();

    for (int y = 0; y < blockEdge / 2; ++y) {
        const auto *upper = reinterpret_cast<const __m256i *>(pixels + 2 * y * stride);
        const auto *lower = reinterpret_cast<const __m256i *>(pixels + (2 * y + 1) * stride);
        const __m256i a0 = _mm256_loadu_si256(upper);
        const __m256i a1 = _mm256_loadu_si256(upper + 1);
        const __m256i b0 = _mm256_loadu_si256(lower);
        const __m256i b1 = _mm256_loadu_si256(lower + 1);

        const __m256i lumaA = _mm256_srli_epi16(
            _mm256_add_epi16(_mm256_hadd_epi16(lumaOfEight(a0), lumaOfEight(a1)), toLuma), 8);
        const __m256i lumaB2 = _mm256_srli_epi16(
            _mm256_add_epi16(_mm256_hadd_epi16(lumaOfEight(b0), lumaOfEight(b1)), toLuma), 8);
        // The 256-bit operations work within halves; this puts the pixels back in order: upper row, lower
        // row.
        const __m256i luma = _mm256_permutevar8x32_epi32(_mm256_packus_epi16(lumaA, lumaB2), lumaOrder);
        const __m128i lumaUpper = _mm256_castsi256_si128(luma);
        const __m128i lumaLower = _mm256_extracti128_si256(luma, 1);

        const __m256i v0 = _mm256_avg_epu8(a0, b0);
        const __m256i v1 = _mm256_avg_epu8(a1, b1);
        const __m256 f0 = _mm256_castsi256_ps(v0);
        const __m256 f1 = _mm256_castsi256_ps(v1);
        const __m256i means = _mm256_avg_epu8(_mm256_castps_si256(_mm256_shuffle_ps(f0, f1, 0x88)),
                                              _mm256_castps_si256(_mm256_shuffle_ps(f0, f1, 0xdd)));
        const __m256i sums =
            _mm256_hadd_epi16(_mm256_maddubs_epi16(means, cb), _mm256_maddubs_epi16(means, cr));
        const __m256i planes = _mm256_srli_epi16(_mm256_add_epi16(sums, toChroma), 8);
        const __m256i pairs = _mm256_shuffle_epi8(planes, interleaveBoth);
        const __m128i chroma =
            _mm_unpacklo_epi32(_mm256_castsi256_si128(pairs), _mm256_extracti128_si256(pairs, 1));

        const auto at = [](std::uint8_t *p) { return reinterpret_cast<__m128i *>(p); };
        const __m128i oldUpper = _mm_loadu_si128(at(previous.luma + 2 * y * previous.stride));
        const __m128i oldLower = _mm_loadu_si128(at(previous.luma + (2 * y + 1) * previous.stride));
        const __m128i oldChroma = _mm_loadu_si128(at(previous.chroma + y * previous.stride));
        difference = _mm_or_si128(difference, _mm_or_si128(_mm_xor_si128(oldUpper, lumaUpper),
                                                           _mm_or_si128(_mm_xor_si128(oldLower, lumaLower),
                                                                        _mm_xor_si128(oldChroma, chroma))));
        _mm_storeu_si128(at(out.luma + 2 * y * out.stride), lumaUpper);
        _mm_storeu_si128(at(out.luma + (2 * y + 1) * out.stride), lumaLower);
        _mm_storeu_si128(at(out.chroma + y * out.stride), chroma);
    }
    return !_mm_testz_si128(difference, difference);
}

} // namespace
#endif

BlockConverter fastestBlockConverter() {
#if defined(__x86_64__)
    if (__builtin_cpu_supports("avx2"))
        return convertBlockAvx2;
#endif
    return convertBlockPortably;
}

} // namespace vantrell
