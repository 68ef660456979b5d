// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include <string>
#include <utility>

namespace vantrell {

/// How this device stands to the user's account.
struct PairingState {
    enum class Kind {
        /// A pairing is under way; the user must open the approval page.
        waitingForApproval = 1,
        unpaired,
        /// An API key is stored.
        paired,
    };

    Kind kind = Kind::unpaired;
    /// Only while waiting.
    std::string approvalURL;

    static PairingState waitingForApproval(std::string approvalURL) {
        return {Kind::waitingForApproval, std::move(approvalURL)};
    }
    static PairingState unpaired() { return {Kind::unpaired, {}}; }
    static PairingState paired() { return {Kind::paired, {}}; }

    bool operator==(const PairingState &) const = default;
};

} // namespace vantrell
