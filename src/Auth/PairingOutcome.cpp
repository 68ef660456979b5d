// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Auth/PairingOutcome.h"

namespace vantrell {

std::string description(PairingOutcome outcome) {
    switch (outcome) {
    case PairingOutcome::approved:
        return "Connected to Vantrell";
    case PairingOutcome::denied:
        return "The connection was denied on the approval page";
    case PairingOutcome::expired:
        return "The connection was not approved in time";
    case PairingOutcome::claimed:
        return "The connection's code was already used";
    case PairingOutcome::notStored:
        return "The connection was approved, but could not be stored";
    case PairingOutcome::notStoredYet:
        return "The connection was approved and is stored as soon as the keyring is unlocked";
    }
    return {};
}

} // namespace vantrell
