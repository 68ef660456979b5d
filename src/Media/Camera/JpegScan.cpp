// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Media/Camera/JpegScan.h"

#include <algorithm>
#include <cstdlib>

namespace vantrell {

namespace {

constexpr std::uint8_t stuffing = 0;
constexpr std::uint8_t firstMark = 0xd0;
constexpr std::size_t marks = 8;
constexpr std::uint8_t end = 0xd9;

constexpr int mostMean = 2047;
/// Of zeros, and then none but zeros.
constexpr int longestRun = 15;

/// What the blocks between two questions for the end may take at most, and a whole window.
constexpr std::size_t padding =
    JpegScan::mostBlocks * JpegHeader::coefficients * JpegCodes::mostBits / 8 + 2 * sizeof(std::uint64_t);

} // namespace

bool JpegScan::open(std::span<const std::uint8_t> scan) {
    m_position = 0;
    m_mark = 0;
    m_means = {};
    m_marks.clear();
    m_bytes.resize(std::max(m_bytes.size(), scan.size() + padding));
    std::uint8_t *to = m_bytes.data();
    const auto place = [&] { return std::size_t(to - m_bytes.data()); };
    while (!scan.empty()) {
        const auto *const special =
            static_cast<const std::uint8_t *>(std::memchr(scan.data(), 0xff, scan.size()));
        const std::size_t plain = special ? std::size_t(special - scan.data()) : scan.size();
        if (plain + 2 > scan.size())
            return false;
        to = std::copy_n(scan.data(), plain, to);
        const std::uint8_t kind = scan[plain + 1];
        scan = scan.subspan(plain + 2);
        if (kind == stuffing) {
            *to++ = 0xff;
            continue;
        }
        const bool isMark = kind == firstMark + m_marks.size() % marks;
        if (!isMark && kind != end)
            return false;
        m_marks.push_back(place());
        if (kind == end) {
            std::fill_n(to, padding, std::uint8_t(0));
            return true;
        }
    }
    return false;
}

bool JpegScan::passMark() {
    if (m_mark + 1 == m_marks.size() || !isAtMark())
        return false;
    m_position = m_marks[m_mark++] * 8;
    m_means = {};
    return true;
}

bool JpegScan::read(const JpegHeader &header, std::size_t component, JpegBlock &block) {
    const JpegHeader::Steps &steps = header.steps(component);
    std::size_t position = m_position;
    std::uint64_t window = windowAt(position);
    int left = leastOfWindow;
    const auto read = [&](const JpegCodes &codes) {
        if (left < JpegCodes::mostBits) {
            window = windowAt(position);
            left = leastOfWindow;
        }
        const JpegCodes::Number number = codes.read(window);
        window <<= number.bits();
        left -= int(number.bits());
        position += number.bits();
        return number;
    };
    const JpegCodes::Number mean = read(header.firstCodes(component));
    int &sum = m_means[component];
    sum += mean.value();
    if (mean.bits() == 0 || std::abs(sum) > mostMean)
        return false;
    block.mean = std::clamp(sum * steps[0], -JpegBlock::largest, JpegBlock::largest);

    const JpegCodes &codes = header.otherCodes(component);
    int count = 0;
    for (std::size_t place = 1; place < JpegHeader::coefficients; ++place) {
        const JpegCodes::Number number = read(codes);
        place += number.zeros();
        if (number.value() == 0) {
            if (number.bits() > 0 && number.zeros() == 0)
                break;
            if (number.zeros() != longestRun)
                return false;
            continue;
        }
        if (place >= JpegHeader::coefficients)
            return false;
        block.parts[std::size_t(count++)] = {std::int16_t(number.value() * steps[place]),
                                             std::uint8_t(place)};
    }
    block.count = count;
    m_position = position;
    return true;
}

} // namespace vantrell
