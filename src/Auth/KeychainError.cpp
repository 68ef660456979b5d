// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Auth/KeychainError.h"

namespace vantrell {

std::string KeychainError::description() const {
    switch (kind) {
    case Kind::absent:
        return "This desktop has no keyring (Secret Service), such as GNOME Keyring, KWallet or KeePassXC";
    case Kind::locked:
        return "The keyring is locked; unlock it to use the connection";
    case Kind::noKeyring:
        return "The keyring has no default keyring to store the connection in; create one and try again";
    case Kind::refused:
        return "The keyring refused access to the connection";
    case Kind::notAnswering:
        return "The keyring does not answer";
    case Kind::cancelled:
        return "The keyring was not waited for";
    }
    return {};
}

std::string KeychainError::name() const {
    switch (kind) {
    case Kind::absent:
        return "absent";
    case Kind::locked:
        return "locked";
    case Kind::noKeyring:
        return "noKeyring";
    case Kind::refused:
        return "refused";
    case Kind::notAnswering:
        return "notAnswering";
    case Kind::cancelled:
        return "cancelled";
    }
    return {};
}

} // namespace vantrell
