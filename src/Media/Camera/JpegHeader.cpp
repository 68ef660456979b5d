// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Media/Camera/JpegHeader.h"

#include "Media/Camera/JpegUsualCodes.h"

#include <algorithm>
#include <numeric>

namespace vantrell {

namespace {

enum Marker : std::uint8_t {
    baseline = 0xc0,
    huffmanTables = 0xc4,
    start = 0xd8,
    startOfScan = 0xda,
    quantizers = 0xdb,
    restartInterval = 0xdd,
    firstApplication = 0xe0,
    ofAdobe = 0xee,
    lastApplication = 0xef,
    comment = 0xfe,
};

/// Beyond any camera.
constexpr int largestSide = 8192;

int twoBytes(std::span<const std::uint8_t> at) {
    return at[0] << 8 | at[1];
}

} // namespace

JpegHeader::JpegHeader() {
    readCodes(usualJpegCodes());
}

bool JpegHeader::read(std::span<const std::uint8_t> picture) {
    m_size = {};
    m_interval = 0;
    if (picture.size() < 2 || picture[0] != 0xff || picture[1] != Marker::start)
        return false;
    auto left = picture.subspan(2);
    while (left.size() >= 4 && left[0] == 0xff) {
        const std::uint8_t marker = left[1];
        const auto length = std::size_t(twoBytes(left.subspan(2)));
        if (length < 2 || length + 2 > left.size())
            return false;
        const auto segment = left.subspan(4, length - 2);
        left = left.subspan(length + 2);
        if (marker == Marker::startOfScan) {
            m_scan = left;
            return !m_size.isEmpty() && readScan(segment);
        }
        if (!readSegment(marker, segment))
            return false;
    }
    return false;
}

bool JpegHeader::readSegment(std::uint8_t marker, std::span<const std::uint8_t> segment) {
    switch (marker) {
    case Marker::quantizers:
        return readSteps(segment);
    case Marker::huffmanTables:
        return readCodes(segment);
    case Marker::baseline:
        return readFrame(segment);
    case Marker::restartInterval:
        m_interval = segment.size() >= 2 ? twoBytes(segment) : 0;
        return segment.size() == 2;
    default:
        // What Adobe writes may say that the components are something else.
        return marker == Marker::comment || (marker >= Marker::firstApplication &&
                                             marker <= Marker::lastApplication && marker != Marker::ofAdobe);
    }
}

bool JpegHeader::readSteps(std::span<const std::uint8_t> segment) {
    for (; !segment.empty(); segment = segment.subspan(1 + coefficients)) {
        // Those of more than 8 bits have other numbers.
        if (segment.size() < 1 + coefficients || segment[0] >= kinds)
            return false;
        std::ranges::copy(segment.subspan(1, coefficients), m_steps[segment[0]].begin());
    }
    return true;
}

bool JpegHeader::readCodes(std::span<const std::uint8_t> segment) {
    constexpr std::size_t symbolsAt = 1 + JpegCodes::longestCode;
    while (!segment.empty()) {
        const std::size_t number = segment[0] & 15;
        const std::size_t isOther = segment[0] >> 4;
        if (segment.size() < symbolsAt || number >= kinds || isOther > 1)
            return false;
        const auto counts = segment.subspan<1, JpegCodes::longestCode>();
        const auto size = std::accumulate(counts.begin(), counts.end(), symbolsAt);
        if (size > segment.size())
            return false;
        const auto symbols = segment.first(size).subspan(symbolsAt);
        if (isOther == 0 && std::ranges::any_of(symbols, [](std::uint8_t symbol) { return symbol > 15; }))
            return false;
        Codes &codes = m_codes[isOther * kinds + number];
        if (const auto written = segment.first(size); !std::ranges::equal(written, codes.asWritten)) {
            codes.asWritten.assign(written.begin(), written.end());
            codes.codes = JpegCodes(counts, symbols);
        }
        segment = segment.subspan(size);
    }
    return true;
}

bool JpegHeader::readFrame(std::span<const std::uint8_t> segment) {
    constexpr std::size_t each = 3;
    if (segment.size() != 6 + each * components || segment[0] != 8 || segment[5] != components)
        return false;
    m_size = {twoBytes(segment.subspan(3)), twoBytes(segment.subspan(1))};
    if (std::min(m_size.width, m_size.height) < 1 || std::max(m_size.width, m_size.height) > largestSide)
        return false;
    for (std::size_t i = 0; i < components; ++i) {
        const auto component = segment.subspan(6 + each * i, each);
        if (component[2] >= kinds)
            return false;
        m_names[i] = component[0];
        m_chosen[i].steps = component[2];
    }
    const std::uint8_t luma = segment[7];
    const std::uint8_t chroma = segment[7 + each];
    m_lumaRows = luma & 15;
    m_chromaRows = chroma & 15;
    const bool isUsual = luma >> 4 == 2 && chroma >> 4 == 1 && chroma == segment[7 + 2 * each] &&
                         (m_lumaRows == 1 || m_lumaRows == 2) &&
                         (m_chromaRows == 1 || m_chromaRows == m_lumaRows);
    return isUsual && m_names != std::array<std::uint8_t, components>{'R', 'G', 'B'};
}

bool JpegHeader::readScan(std::span<const std::uint8_t> segment) {
    if (segment.size() != 4 + 2 * components || segment[0] != components)
        return false;
    for (std::size_t i = 0; i < components; ++i) {
        const std::uint8_t codes = segment[2 + 2 * i];
        if (segment[1 + 2 * i] != m_names[i] || (codes >> 4) >= int(kinds) || (codes & 15) >= int(kinds))
            return false;
        m_chosen[i].first = codes >> 4;
        m_chosen[i].other = kinds + (codes & 15);
        if (steps(i)[0] == 0 || firstCodes(i).isEmpty() || otherCodes(i).isEmpty())
            return false;
    }
    const auto range = segment.last(3);
    return range[0] == 0 && range[1] == coefficients - 1 && range[2] == 0;
}

} // namespace vantrell
