// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include <string>

namespace vantrell {

struct Camera {
    /// Stays the same while the device comes and goes, wherever it is plugged in again; what a recording pins
    /// and what the command line takes.
    std::string id;
    /// For people.
    std::string name;
    /// The one that a recording takes when none is pinned.
    bool isDefault = false;

    bool operator==(const Camera &) const = default;
};

} // namespace vantrell
