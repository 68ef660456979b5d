// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include <string>

namespace vantrell {

/// Why the desktop's keyring could not be used. None of the kinds says anything about whether a key is
/// stored.
struct KeychainError {
    enum class Kind {
        /// No Secret Service on this desktop, or no session bus at all.
        absent = 1,
        /// It is there and waits for the user's password.
        locked,
        /// It is there and has no keyring that a new entry could go to.
        noKeyring,
        /// It answered with an error.
        refused,
        /// It did not answer in time or went away in the middle.
        notAnswering,
        /// The caller gave up waiting: neither success nor failure.
        cancelled,
    };

    Kind kind;
    /// What the library said, for the log; never holds a secret.
    std::string detail;

    /// The sentence for the user.
    std::string description() const;
    /// The kind in one word, for scripts and the log.
    std::string name() const;
};

} // namespace vantrell
