// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Media/H264/SkipSlices.h"

namespace vantrell {

namespace {

/// Macroblocks from one remembered state to the next.
constexpr int markInterval = 64;

/// The coarsest quantizer: the context of mb_skip_flag then begins most inclined to "skipped".
constexpr int skipQuantizer = 51;

/// Of mb_skip_flag in slices of predicted blocks, with cabac_init_idc 0: Table 9-13, ctxIdx 11. It stays this
/// context, since neighbours count for nothing when they are skipped or not in the slice
/// (clause 9.3.3.1.1.1).
const CabacContext skipContext = CabacContext::initial(23, 33, skipQuantizer);

} // namespace

std::span<const std::uint8_t> SkipSlices::data(int blocks) {
    if (m_marks.empty())
        m_marks.push_back({.encoder = {}, .context = skipContext});
    const auto mark = std::size_t((blocks - 1) / markInterval);
    while (m_marks.size() <= mark) {
        Mark next = m_marks.back();
        for (int i = 0; i < markInterval; ++i) {
            next.encoder.encode(m_longest, next.context, true);
            next.encoder.end(m_longest, false);
        }
        next.bits = m_longest.position();
        m_marks.push_back(next);
    }
    auto [encoder, context, bits] = m_marks[mark];
    m_data.beginWith(m_longest.bytes(), bits);
    for (int i = int(mark) * markInterval; i < blocks; ++i) {
        encoder.encode(m_data, context, true);
        encoder.end(m_data, i == blocks - 1);
    }
    return m_data.bytes();
}

void SkipSlices::append(std::vector<std::uint8_t> &stream, const StreamLayout &layout, int firstBlock,
                        int blocks, std::uint32_t frameNumber) {
    appendSlice(stream, layout,
                {.firstBlock = firstBlock, .frameNumber = frameNumber, .quantizer = skipQuantizer},
                data(blocks));
}

} // namespace vantrell
