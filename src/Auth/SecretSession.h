// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Auth/BoundedGlibCalls.h"
#include "Auth/KeychainError.h"

#include <libsecret/secret.h>

#include <expected>
#include <optional>
#include <string>
#include <vector>

namespace vantrell {

/// One open session with the Secret Service, for one operation. Thread-bound: the worker thread that made it.
/// Secrets cross the bus encrypted.
class SecretSession {
public:
    template <typename T>
    using Result = std::expected<T, KeychainError>;

    /// Connects, starting the service through the bus where the desktop has it installed.
    static Result<SecretSession> open(BoundedGlibCalls &calls);

    using Items = std::vector<GObjectPtr<SecretItem>>;
    /// The account's entries in all keyrings, the locked ones included.
    Result<Items> search(const std::string &account);
    Result<std::string> secretOf(SecretItem *item);
    Result<void> removeItem(SecretItem *item);
    /// Where new entries go; null when there is none.
    Result<GObjectPtr<SecretCollection>> defaultCollection();
    /// Into the default collection.
    Result<void> store(const std::string &account, const std::string &value);

    /// These two may show a dialog.
    Result<void> unlock(const std::vector<GDBusProxy *> &objects);
    Result<void> createDefaultCollection();

private:
    explicit SecretSession(BoundedGlibCalls &calls) : m_calls(&calls) {}

    Result<void> connect();
    /// The service has its name, without starting it.
    bool isOwned();
    std::unexpected<KeychainError> failure(const GError *error) const;
    std::unexpected<KeychainError> abandoned() const;

    BoundedGlibCalls *m_calls;
    bool m_wasThere = false;
    GObjectPtr<GDBusConnection> m_bus;
    GObjectPtr<SecretService> m_service;
};

} // namespace vantrell
