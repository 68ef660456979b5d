// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include <string>

namespace vantrell {

/// One microphone, as it was when it was listed.
struct Microphone {
    /// Stays the same while the device comes and goes; what a recording pins and what the command line takes.
    std::string id;
    /// For people.
    std::string name;
    /// The one that a recording takes and follows when none is pinned.
    bool isDefault = false;

    bool operator==(const Microphone &) const = default;
};

} // namespace vantrell
