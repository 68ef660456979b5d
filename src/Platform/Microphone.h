// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Support/PlatformError.h"

#include <expected>
#include <optional>
#include <string>
#include <vector>

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

/// That there is a microphone to record: the one with the id or, without one, any.
std::expected<void, PlatformError> requireMicrophone(const std::vector<Microphone> &connected,
                                                     const std::optional<std::string> &id);

} // namespace vantrell
