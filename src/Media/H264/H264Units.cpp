// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Media/H264/H264Units.h"

#include <algorithm>
#include <array>

namespace vantrell {

namespace {

constexpr std::array<std::uint8_t, 3> startCode{0, 0, 1};

void appendSized(std::vector<std::uint8_t> &bytes, H264Unit unit) {
    bytes.push_back(std::uint8_t(unit.size() >> 8));
    bytes.push_back(std::uint8_t(unit.size() & 0xff));
    bytes.insert(bytes.end(), unit.begin(), unit.end());
}

} // namespace

H264UnitType typeOf(H264Unit unit) {
    return H264UnitType(unit.front() & 0x1f);
}

std::vector<H264Unit> splitByteStream(std::span<const std::uint8_t> stream) {
    std::vector<H264Unit> units;
    auto begin = std::ranges::search(stream, startCode).end();
    while (begin != stream.end()) {
        const auto next = std::ranges::search(std::ranges::subrange(begin, stream.end()), startCode);
        // A longer start code begins with a zero, and a unit never ends with one.
        auto end = next.begin();
        while (end != begin && end[-1] == 0)
            --end;
        if (end != begin)
            units.emplace_back(begin, end);
        begin = next.end();
    }
    return units;
}

std::vector<H264Unit> splitSized(std::span<const std::uint8_t> data) {
    constexpr std::size_t lengthBytes = 4;
    std::vector<H264Unit> units;
    while (data.size() > lengthBytes) {
        const std::size_t length = std::size_t(data[0]) << 24 | std::size_t(data[1]) << 16 |
                                   std::size_t(data[2]) << 8 | std::size_t(data[3]);
        data = data.subspan(lengthBytes);
        if (length == 0 || length > data.size())
            break;
        units.push_back(data.first(length));
        data = data.subspan(length);
    }
    return units;
}

std::vector<std::uint8_t> avcConfiguration(H264Unit sequenceParameters, H264Unit pictureParameters) {
    constexpr std::uint8_t lengthOfFourBytes = 0xff;
    constexpr std::uint8_t oneSet = 0xe1;
    constexpr std::uint8_t highProfile = 100;
    const std::uint8_t profile = sequenceParameters[1];
    std::vector<std::uint8_t> bytes{
        1, profile, sequenceParameters[2], sequenceParameters[3], lengthOfFourBytes, oneSet};
    appendSized(bytes, sequenceParameters);
    bytes.push_back(1);
    appendSized(bytes, pictureParameters);
    // From the high profile on: chroma format 4:2:0, 8 bits and no extension sets.
    if (profile >= highProfile)
        bytes.insert(bytes.end(), {0xfd, 0xf8, 0xf8, 0});
    return bytes;
}

} // namespace vantrell
