// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Auth/BoundedGlibCalls.h"
#include "Auth/KeychainError.h"

#include <chrono>
#include <expected>
#include <optional>
#include <stop_token>
#include <string>

namespace vantrell {

/// The entries of this application in the desktop's Secret Service, under one service name. Every call
/// blocks, at most until its deadline, so it belongs on a worker thread. Thread-safe. Nothing is kept between
/// calls: each finds the service as it is now, so a service that was restarted is simply used again.
///
/// Only `unlock` ever shows a dialog.
class SecretStore {
public:
    using Deadline = BoundedGlibCalls::Deadline;

    /// The stored text, or nothing when there is no entry. Nothing that is locked is reported as missing.
    std::expected<std::optional<std::string>, KeychainError> read(const std::string &account,
                                                                  Deadline deadline);
    /// Replaces the entry.
    std::expected<void, KeychainError> write(const std::string &account, const std::string &value,
                                             Deadline deadline);
    /// Success means that there is no entry afterwards.
    std::expected<void, KeychainError> remove(const std::string &account, Deadline deadline);

    /// Whether a write would find an open keyring to go to.
    std::expected<void, KeychainError> expectWritable(Deadline deadline);

    /// Asks the user for the keyring's password, or to create a default keyring where there is none. Returns
    /// when the user has answered, which may take for ever: `cancel` ends it.
    std::expected<void, KeychainError> unlock(const std::string &account);

    /// Ends every running and future call.
    void cancel() { m_stop.request_stop(); }

private:
    std::stop_source m_stop;
};

} // namespace vantrell
