// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Media/H264/CopySlices.h"

#include <algorithm>
#include <cstdlib>

namespace vantrell {

namespace {

/// The context of mb_skip_flag then begins most inclined to "skipped", and nothing else depends on it.
constexpr int copyQuantizer = 51;
constexpr int quartersOfPixel = 4;

// ctxIdx of the syntax elements' first bins, with cabac_init_idc 0: Tables 9-13, 9-14 and 9-18.
constexpr int skipFlag = 11;
constexpr int blockType = 14;
constexpr int differenceRight = 40;
constexpr int differenceDown = 47;
constexpr int lumaPattern = 73;
constexpr int chromaPattern = 77;

struct ContextStart {
    int index;
    int slope;
    int offset;
};
constexpr std::array<ContextStart, 19> starts{{
    {11, 23, 33},   {12, 23, 2},   {13, 21, 0},    {14, 1, 9},    {15, 0, 49},   {16, -37, 118}, {40, -3, 69},
    {47, 0, 58},    {48, -3, 76},  {49, -10, 94},  {50, 5, 54},   {51, 4, 69},   {52, -3, 81},   {53, 0, 88},
    {73, -27, 126}, {74, -28, 98}, {75, -25, 101}, {76, -23, 67}, {77, -28, 82},
}};

int median(int a, int b, int c) {
    return std::max(std::min(a, b), std::min(std::max(a, b), c));
}

template <typename Block>
int motionOf(const Block *block) {
    return block ? block->motion : 0;
}

/// Clause 8.4.1.3, of a whole macroblock.
template <typename Neighbours>
int predictedMotion(const Neighbours &around) {
    if (!around.above && !around.corner)
        return motionOf(around.left);
    if (!around.left && !around.above)
        return motionOf(around.corner);
    if (!around.left && !around.corner)
        return motionOf(around.above);
    return median(motionOf(around.left), motionOf(around.above), motionOf(around.corner));
}

/// Clause 8.4.1.1
template <typename Neighbours>
int skippedMotion(const Neighbours &around) {
    const bool stands =
        !around.left || !around.above || around.left->motion == 0 || around.above->motion == 0;
    return stands ? 0 : predictedMotion(around);
}

} // namespace

CopySlices::Neighbours CopySlices::neighboursOf(int index, int column, int columns) const {
    const auto at = [this](bool isInPicture, int place) {
        return isInPicture && place >= 0 ? &m_blocks[std::size_t(place)] : nullptr;
    };
    const Block *corner = at(column + 1 < columns, index - columns + 1);
    return {at(column > 0, index - 1), at(true, index - columns),
            corner ? corner : at(column > 0, index - columns - 1)};
}

void CopySlices::append(std::vector<std::uint8_t> &stream, const StreamLayout &layout, int firstBlock,
                        std::span<const std::int16_t> distances, int usual, std::uint32_t frameNumber) {
    for (const auto &[index, slope, offset] : starts)
        m_contexts[std::size_t(index)] = CabacContext::initial(slope, offset, copyQuantizer);
    m_encoder = {};
    m_data.clear();
    m_blocks.clear();
    // Those behind are looked up while they are added.
    m_blocks.reserve(distances.size());
    const int last = int(distances.size()) - 1;
    for (int i = 0; i <= last; ++i) {
        const Neighbours around = neighboursOf(i, (firstBlock + i) % layout.columns, layout.columns);
        const int skipped = skippedMotion(around);
        std::int16_t distance = distances[std::size_t(i)];
        if (distance == anyDistance)
            distance = skipped == usual * quartersOfPixel ? std::int16_t(usual) : std::int16_t(0);
        Block block{.motion = distance * quartersOfPixel};
        block.isSkipped = block.motion == skipped;
        if (!block.isSkipped)
            block.difference = block.motion - predictedMotion(around);
        write(block, around);
        m_encoder.end(m_data, i == last);
        m_blocks.push_back(block);
    }
    appendSlice(stream, layout,
                {.firstBlock = firstBlock, .frameNumber = frameNumber, .quantizer = copyQuantizer},
                m_data.bytes());
}

// macroblock_layer, clause 7.3.5; which context each bin takes: clause 9.3.3.1.1.
void CopySlices::write(const Block &block, const Neighbours &around) {
    const auto encode = [this](int context, bool bin) {
        m_encoder.encode(m_data, m_contexts[std::size_t(context)], bin);
    };
    const bool hasLeft = around.left;
    const bool hasAbove = around.above;
    encode(skipFlag + (hasLeft && !around.left->isSkipped) + (hasAbove && !around.above->isSkipped),
           block.isSkipped);
    if (block.isSkipped)
        return;
    for (int bin = 0; bin < 3; ++bin)
        encode(blockType + bin, false);
    encode(differenceRight, false);
    writeDifference(block.difference, (hasLeft ? std::abs(around.left->difference) : 0) +
                                          (hasAbove ? std::abs(around.above->difference) : 0));
    // coded_block_pattern: nothing, as of all around and of the parts before.
    encode(lumaPattern + hasLeft + 2 * hasAbove, false);
    encode(lumaPattern + 1 + 2 * hasAbove, false);
    encode(lumaPattern + hasLeft + 2, false);
    encode(lumaPattern + 3, false);
    encode(chromaPattern, false);
}

// UEG3 with signedValFlag 1 and uCoff 9, clause 9.3.2.3
void CopySlices::writeDifference(int difference, int around) {
    constexpr int most = 9;
    constexpr int lastContext = 6;
    const int size = std::abs(difference);
    int context = around < 3 ? 0 : around > 32 ? 2 : 1;
    for (int bin = 0; bin < most; ++bin) {
        m_encoder.encode(m_data, m_contexts[std::size_t(differenceDown + context)], bin < size);
        if (bin >= size)
            break;
        context = std::min(bin + 3, lastContext);
    }
    if (size >= most) {
        int rest = size - most;
        int bits = 3;
        for (; rest >= 1 << bits; ++bits) {
            m_encoder.bypass(m_data, true);
            rest -= 1 << bits;
        }
        m_encoder.bypass(m_data, false);
        while (bits-- > 0)
            m_encoder.bypass(m_data, rest >> bits & 1);
    }
    if (size > 0)
        m_encoder.bypass(m_data, difference < 0);
}

} // namespace vantrell
