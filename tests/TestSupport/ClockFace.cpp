// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "TestSupport/ClockFace.h"

#include "TestSupport/FrameCode.h"

namespace vantrell::testing::clockface {

namespace {

constexpr auto all = std::int64_t(framecode::numbers);

} // namespace

std::uint32_t numberAt(double hostTime) {
    return std::uint32_t(std::int64_t(hostTime * 1000) % all);
}

double between(std::uint32_t earlier, std::uint32_t later) {
    const std::int64_t apart = (std::int64_t(later) - earlier + all) % all;
    return double(apart > all / 2 ? apart - all : apart);
}

} // namespace vantrell::testing::clockface
