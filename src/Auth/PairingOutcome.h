// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include <string>

namespace vantrell {

/// How a pairing ended, for those who tell the user more than the new state.
enum class PairingOutcome {
    approved = 1,
    denied,
    /// The service ended it, or nobody approved it in time.
    expired,
    /// Another device has used the code.
    claimed,
    /// Approved, but the keyring did not take the key: it is lost.
    notStored,
    /// Approved, and the key is in use, but so far only this process has it: the keyring is closed.
    notStoredYet,
};

/// The sentence for the user.
std::string description(PairingOutcome outcome);

} // namespace vantrell
