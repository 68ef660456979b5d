// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "App/UpdateError.h"

namespace vantrell {

std::string UpdateError::description() const {
    switch (kind) {
    case Kind::unreachable:
        return "The server with the updates cannot be reached";
    case Kind::untrusted:
        return "The list of updates is not from Vantrell";
    case Kind::damaged:
        return "The update arrived damaged";
    case Kind::notPlaced:
        return platform ? "The update could not be put in place: " + platform->description()
                        : "The update could not be put in place";
    case Kind::cancelled:
        return "The update was cancelled";
    }
    return {};
}

} // namespace vantrell
