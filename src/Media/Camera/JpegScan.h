// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Media/Camera/JpegCodes.h"
#include "Media/Camera/JpegHeader.h"
#include "Media/Camera/JpegTransform.h"

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>
#include <vector>

namespace vantrell {

/// Reads the blocks of a JPEG picture one after the other. Thread-bound.
class JpegScan {
public:
    /// Copies what lies behind the header, without what only keeps it apart from marks. False when it has no
    /// end.
    bool open(std::span<const std::uint8_t> scan);

    /// The next block of a component. False when it is faulty. Beyond the end it reads zeros: ask `isWithin`
    /// at least every `mostBlocks`.
    bool read(const JpegHeader &header, std::size_t component, JpegBlock &block);
    static constexpr std::size_t mostBlocks = 8;

    /// Nothing was read beyond the next mark.
    bool isWithin() const { return m_position <= m_marks[m_mark] * 8; }
    /// Goes on behind the next mark. False when there is none, or when something was left out before it.
    bool passMark();
    /// Everything has been read.
    bool isAtEnd() const { return m_mark + 1 == m_marks.size() && isAtMark(); }

private:
    bool isAtMark() const { return (m_position + 7) / 8 == m_marks[m_mark]; }
    /// What comes at a bit, from the highest one on.
    std::uint64_t windowAt(std::size_t position) const {
        std::uint64_t bytes = 0;
        std::memcpy(&bytes, m_bytes.data() + position / 8, sizeof bytes);
        if constexpr (std::endian::native == std::endian::little)
            bytes = std::byteswap(bytes);
        return bytes << position % 8;
    }

    /// So many bits a window has at least.
    static constexpr int leastOfWindow = 57;

    std::vector<std::uint8_t> m_bytes;
    /// Where marks were, the picture's end being the last one.
    std::vector<std::size_t> m_marks;
    std::size_t m_mark = 0;
    /// In bits.
    std::size_t m_position = 0;
    /// What the mean of the block before was, without its quantizer.
    std::array<int, JpegHeader::components> m_means{};
};

} // namespace vantrell
