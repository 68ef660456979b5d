// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

namespace vantrell {

/// A wait ended because its stop was requested: neither success nor failure, never logged as an error.
struct Cancelled {
    bool operator==(const Cancelled &) const = default;
};

} // namespace vantrell
