// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Auth/SecretStore.h"

#include "Auth/SecretSession.h"

namespace vantrell {

namespace {

using Kind = KeychainError::Kind;

bool isLocked(const GObjectPtr<SecretItem> &item) {
    return secret_item_get_locked(item.get()) != FALSE;
}

std::unexpected<KeychainError> locked(const char *what) {
    return std::unexpected(KeychainError{Kind::locked, what});
}

std::expected<void, KeychainError> removeUnlocked(SecretSession &session, const std::string &account) {
    const auto items = session.search(account);
    if (!items)
        return std::unexpected(items.error());
    bool lockedRemain = false;
    for (const auto &item : *items) {
        if (isLocked(item))
            lockedRemain = true;
        else if (const auto removed = session.removeItem(item.get()); !removed)
            return removed;
    }
    if (lockedRemain)
        return locked("the entry is in a locked keyring");
    return {};
}

std::expected<void, KeychainError> expectOpenDefault(SecretSession &session) {
    const auto collection = session.defaultCollection();
    if (!collection)
        return std::unexpected(collection.error());
    if (!*collection)
        return std::unexpected(KeychainError{Kind::noKeyring, "no default keyring"});
    if (secret_collection_get_locked(collection->get()))
        return locked("the default keyring is locked");
    return {};
}

/// Locked keyrings of some services show no entries, so "nothing stored" is believed only when the default
/// keyring is open or does not exist.
std::expected<void, KeychainError> believeMissing(SecretSession &session) {
    const auto open = expectOpenDefault(session);
    return open || open.error().kind == Kind::noKeyring ? std::expected<void, KeychainError>() : open;
}

} // namespace

std::expected<std::optional<std::string>, KeychainError> SecretStore::read(const std::string &account,
                                                                           Deadline deadline) {
    BoundedGlibCalls calls(m_stop.get_token(), deadline);
    auto session = SecretSession::open(calls);
    if (!session)
        return std::unexpected(session.error());
    const auto items = session->search(account);
    if (!items)
        return std::unexpected(items.error());
    for (const auto &item : *items) {
        if (isLocked(item))
            continue;
        auto secret = session->secretOf(item.get());
        if (!secret)
            return std::unexpected(secret.error());
        return std::optional(std::move(*secret));
    }
    if (!items->empty())
        return locked("the entry is in a locked keyring");
    if (const auto missing = believeMissing(*session); !missing)
        return std::unexpected(missing.error());
    return std::nullopt;
}

std::expected<void, KeychainError> SecretStore::write(const std::string &account, const std::string &value,
                                                      Deadline deadline) {
    BoundedGlibCalls calls(m_stop.get_token(), deadline);
    auto session = SecretSession::open(calls);
    if (!session)
        return std::unexpected(session.error());
    // Checked here, since storing into a locked keyring would ask for the password, each time.
    if (const auto writable = expectOpenDefault(*session); !writable)
        return writable;
    // An older entry that cannot be removed does not keep the new one out.
    (void)removeUnlocked(*session, account);
    return session->store(account, value);
}

std::expected<void, KeychainError> SecretStore::expectWritable(Deadline deadline) {
    BoundedGlibCalls calls(m_stop.get_token(), deadline);
    auto session = SecretSession::open(calls);
    if (!session)
        return std::unexpected(session.error());
    return expectOpenDefault(*session);
}

std::expected<void, KeychainError> SecretStore::remove(const std::string &account, Deadline deadline) {
    BoundedGlibCalls calls(m_stop.get_token(), deadline);
    auto session = SecretSession::open(calls);
    if (!session)
        return std::unexpected(session.error());
    if (const auto removed = removeUnlocked(*session, account); !removed)
        return removed;
    return believeMissing(*session);
}

std::expected<void, KeychainError> SecretStore::unlock(const std::string &account) {
    BoundedGlibCalls calls(m_stop.get_token(), std::nullopt);
    auto session = SecretSession::open(calls);
    if (!session)
        return std::unexpected(session.error());
    const auto collection = session->defaultCollection();
    if (!collection)
        return std::unexpected(collection.error());
    const auto items = session->search(account);
    if (!items)
        return std::unexpected(items.error());

    std::vector<GDBusProxy *> closed;
    if (*collection && secret_collection_get_locked(collection->get()))
        closed.push_back(G_DBUS_PROXY(collection->get()));
    for (const auto &item : *items) {
        if (isLocked(item))
            closed.push_back(G_DBUS_PROXY(item.get()));
    }
    if (!closed.empty())
        return session->unlock(closed);
    return *collection ? std::expected<void, KeychainError>() : session->createDefaultCollection();
}

} // namespace vantrell
