// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include <cstdint>

namespace vantrell::testing::clockface {

/// The host time (seconds) as a number that a picture can carry: milliseconds, from the beginning again after
/// 17 minutes.
std::uint32_t numberAt(double hostTime);

/// Milliseconds from one such number to another, which are less than 8 minutes apart.
double between(std::uint32_t earlier, std::uint32_t later);

} // namespace vantrell::testing::clockface
