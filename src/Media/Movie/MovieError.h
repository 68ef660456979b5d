// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Support/PlatformError.h"

#include <string>

namespace vantrell {

/// What can be wrong with a movie's bytes rather than with the disk: the codes of the error domain "movie".
enum class MovieFault {
    notAJournal = 1,
    /// The writer has been finished.
    finished,
    /// Boxes or tables that contradict themselves, each other or the file's size.
    damaged,
    /// The file became shorter while it was read.
    shrank,
};

inline PlatformError movieError(MovieFault fault, const std::string &text) {
    return PlatformError{"movie", int(fault), text};
}

} // namespace vantrell
