// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

namespace vantrell::testing {

/// Faults of the calls that change files (pwrite, fsync, fdatasync, ftruncate, fallocate, unlink), for the
/// whole process: the executable's own definitions stand before the C library's. Counting begins with
/// `arm`; the count covers all threads.
struct SystemCallFaults {
    enum class Kind {
        none,
        /// Every call from the given one on fails, as on a full disk; `unlink` does not.
        failFrom,
        /// The given call alone fails.
        failOnce,
        /// The process is killed instead of the given call; a write gets half of its bytes out first.
        kill,
    };

    static void arm(Kind kind, int call, int error = 0);
    static void disarm();
    /// Calls since `arm`.
    static int callCount();
};

} // namespace vantrell::testing
