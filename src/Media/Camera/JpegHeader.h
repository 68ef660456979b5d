// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Media/Camera/JpegCodes.h"
#include "Support/Geometry.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace vantrell {

/// Reads what stands before the pixels of a JPEG picture as nearly all cameras make them: one scan of 8 bits
/// in three components, with colours at half the width, and at the full or at half the height. Keeps its
/// tables, which are mostly the same in each picture. Thread-bound.
class JpegHeader {
public:
    static constexpr std::size_t components = 3;
    static constexpr std::size_t coefficients = 64;
    using Steps = std::array<std::uint8_t, coefficients>;

    JpegHeader();

    /// False when the picture is of another kind, or faulty.
    bool read(std::span<const std::uint8_t> picture);

    PixelSize size() const { return m_size; }
    /// How many rows of blocks a unit has of brightness, always two abreast, and of each colour.
    int lumaRows() const { return m_lumaRows; }
    int chromaRows() const { return m_chromaRows; }
    /// Of brightness and the two colours; in the order of the file.
    const Steps &steps(std::size_t component) const { return m_steps[m_chosen[component].steps]; }
    const JpegCodes &firstCodes(std::size_t component) const {
        return m_codes[m_chosen[component].first].codes;
    }
    const JpegCodes &otherCodes(std::size_t component) const {
        return m_codes[m_chosen[component].other].codes;
    }
    /// Whole units of pixels between two marks at which reading can begin anew; 0: there are none.
    int unitsBetweenMarks() const { return m_interval; }
    /// Everything behind the header.
    std::span<const std::uint8_t> scan() const { return m_scan; }

private:
    static constexpr std::size_t kinds = 4;
    struct Chosen {
        std::size_t steps = 0;
        /// Place in `m_codes`.
        std::size_t first = 0;
        std::size_t other = kinds;
    };
    struct Codes {
        std::vector<std::uint8_t> asWritten;
        JpegCodes codes;
    };

    bool readSegment(std::uint8_t marker, std::span<const std::uint8_t> segment);
    bool readSteps(std::span<const std::uint8_t> segment);
    bool readCodes(std::span<const std::uint8_t> segment);
    bool readFrame(std::span<const std::uint8_t> segment);
    bool readScan(std::span<const std::uint8_t> segment);

    PixelSize m_size;
    int m_lumaRows = 0;
    int m_chromaRows = 0;
    int m_interval = 0;
    std::array<std::uint8_t, components> m_names{};
    std::array<Chosen, components> m_chosen{};
    std::array<Steps, kinds> m_steps{};
    /// Those of first coefficients, then those of the others.
    std::array<Codes, 2 * kinds> m_codes;
    std::span<const std::uint8_t> m_scan;
};

} // namespace vantrell
