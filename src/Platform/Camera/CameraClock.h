// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include <optional>

namespace vantrell {

/// Times of a camera's pictures, whatever its driver tells: a time that is none, that jumps, or that belongs
/// to another clock is replaced by the moment of arrival, less what pictures of this camera are usually under
/// way. Thread-bound.
class CameraClock {
public:
    /// Host seconds. `told` is the driver's time; the result rises from call to call.
    double hostTime(std::optional<double> told, double arrival);

private:
    double m_underWay = 0;
    std::optional<double> m_last;
};

} // namespace vantrell
