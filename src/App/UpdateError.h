// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Support/PlatformError.h"

#include <optional>
#include <string>

namespace vantrell {

/// Why there is no update, or why it was not put in place. Whichever it is, the old copy is as it was.
struct UpdateError {
    enum class Kind {
        /// No answer, or none of the server's that is meant.
        unreachable = 1,
        /// The list is none, or is not signed with our key.
        untrusted,
        /// What was downloaded is not what the list describes.
        damaged,
        /// The disk, the folder, the starting.
        notPlaced,
        cancelled,
    };

    Kind kind = Kind::cancelled;
    /// What the platform said, where it was asked.
    std::optional<PlatformError> platform;

    /// The sentence for the user.
    std::string description() const;
};

} // namespace vantrell
