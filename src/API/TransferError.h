// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "API/APIError.h"
#include "Support/PlatformError.h"

#include <string>
#include <variant>

namespace vantrell {

/// What the server holds cannot become the file: the file changed since the transfer began, or the server
/// holds bytes that were never sent. Going on would mix contents; only a new upload helps.
struct ContentMismatch {
    std::string description() const { return "The file changed while it was being uploaded"; }
    bool operator==(const ContentMismatch &) const = default;
};

/// Why a transfer to storage failed: what the server or the line said, the file on disk, or a mismatch.
using TransferError = std::variant<APIError, PlatformError, ContentMismatch>;

/// The sentence for the user.
inline std::string description(const TransferError &error) {
    return std::visit([](const auto &each) { return std::string(each.description()); }, error);
}

/// The text for the log.
inline std::string logText(const TransferError &error) {
    const auto *api = std::get_if<APIError>(&error);
    return api ? api->logText() : description(error);
}

/// A failed exchange as a failure of the transfer.
TransferError transferErrorOf(const TransportError &error);

} // namespace vantrell
