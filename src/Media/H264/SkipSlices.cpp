// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Media/H264/SkipSlices.h"

#include <algorithm>
#include <array>

namespace vantrell {

namespace {

/// Macroblocks from one remembered state to the next.
constexpr int markInterval = 64;

/// The coarsest quantizer: the context of mb_skip_flag then begins most inclined to "skipped".
constexpr int skipQuantizer = 51;

/// Of mb_skip_flag in slices of predicted blocks, with cabac_init_idc 0: Table 9-13, ctxIdx 11. It stays this
/// context, since neighbours count for nothing when they are skipped or not in the slice
/// (clause 9.3.3.1.1.1).
constexpr int contextSlope = 23;
constexpr int contextOffset = 33;
constexpr int preState = (contextSlope * skipQuantizer >> 4) + contextOffset;
static_assert(preState > 63 && preState <= 126, "the more probable symbol is one");
constexpr int firstState = preState - 64;
constexpr int lastState = 62;

/// rangeTabLPS, Table 9-44, from `firstState` on.
constexpr int firstRow = 42;
static_assert(firstState == firstRow);
constexpr std::array<std::array<std::uint8_t, 4>, lastState - firstRow + 1> lessProbableRanges{{
    {16, 20, 23, 27}, {15, 19, 22, 25}, {14, 18, 21, 24}, {14, 17, 20, 23}, {13, 16, 19, 22},
    {12, 15, 18, 21}, {12, 14, 17, 20}, {11, 14, 16, 19}, {11, 13, 15, 18}, {10, 12, 15, 17},
    {10, 12, 14, 16}, {9, 11, 13, 15},  {9, 11, 12, 14},  {8, 10, 12, 14},  {8, 9, 11, 13},
    {7, 9, 11, 12},   {7, 9, 10, 12},   {7, 8, 10, 11},   {6, 8, 9, 11},    {6, 7, 9, 10},
    {6, 7, 8, 9},
}};

} // namespace

// PutBit, clause 9.3.4.2
void SkipSlices::putBit(Coder &coder, BitWriter &out, bool bit) {
    if (coder.isFirstBit)
        coder.isFirstBit = false;
    else
        out.bit(bit);
    for (; coder.outstanding > 0; --coder.outstanding)
        out.bit(!bit);
}

// RenormE, clause 9.3.4.2
void SkipSlices::renormalise(Coder &coder, BitWriter &out) {
    for (; coder.range < 256; coder.range <<= 1, coder.low <<= 1) {
        if (coder.low < 256) {
            putBit(coder, out, false);
        } else if (coder.low >= 512) {
            coder.low -= 512;
            putBit(coder, out, true);
        } else {
            coder.low -= 256;
            ++coder.outstanding;
        }
    }
}

// mb_skip_flag 1, the more probable symbol: EncodeDecision, clause 9.3.4.2
void SkipSlices::skip(Coder &coder, BitWriter &out) {
    coder.range -= lessProbableRanges[std::size_t(firstState + coder.state - firstRow)][coder.range >> 6 & 3];
    coder.state = std::min(coder.state + 1, lastState - firstState);
    renormalise(coder, out);
}

// end_of_slice_flag 0: EncodeTerminate, clause 9.3.4.5
void SkipSlices::continueSlice(Coder &coder, BitWriter &out) {
    coder.range -= 2;
    renormalise(coder, out);
}

// end_of_slice_flag 1 and EncodeFlush, clause 9.3.4.5, whose last bit is the rbsp_stop_one_bit
void SkipSlices::endSlice(Coder &coder, BitWriter &out) {
    coder.range -= 2;
    coder.low += coder.range;
    coder.range = 2;
    renormalise(coder, out);
    putBit(coder, out, coder.low >> 9 & 1);
    out.bits((coder.low >> 7 & 3) | 1, 2);
    out.alignWith(false);
}

std::span<const std::uint8_t> SkipSlices::data(int blocks) {
    if (m_marks.empty())
        m_marks.emplace_back();
    const auto mark = std::size_t((blocks - 1) / markInterval);
    while (m_marks.size() <= mark) {
        Coder coder = m_marks.back();
        for (int i = 0; i < markInterval; ++i) {
            skip(coder, m_longest);
            continueSlice(coder, m_longest);
        }
        coder.bits = m_longest.position();
        m_marks.push_back(coder);
    }
    Coder coder = m_marks[mark];
    m_data.beginWith(m_longest.bytes(), coder.bits);
    for (int i = int(mark) * markInterval; i < blocks - 1; ++i) {
        skip(coder, m_data);
        continueSlice(coder, m_data);
    }
    skip(coder, m_data);
    endSlice(coder, m_data);
    return m_data.bytes();
}

void SkipSlices::append(std::vector<std::uint8_t> &stream, const StreamLayout &layout, int firstBlock,
                        int blocks, std::uint32_t frameNumber) {
    appendSlice(stream, layout,
                {.firstBlock = firstBlock, .frameNumber = frameNumber, .quantizer = skipQuantizer},
                data(blocks));
}

} // namespace vantrell
