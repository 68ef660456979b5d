// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Auth/SecretSession.h"

namespace vantrell {

namespace {

using Kind = KeychainError::Kind;

constexpr char serviceName[] = "app.vantrell.capture.apikey";
constexpr char itemLabel[] = "Vantrell Capture";

const SecretSchema *schema() {
    static const SecretSchema shape = {
        "app.vantrell.capture.Key",
        // An entry that the user made by hand with the two attributes counts as well.
        SECRET_SCHEMA_DONT_MATCH_NAME,
        {{"service", SECRET_SCHEMA_ATTRIBUTE_STRING}, {"account", SECRET_SCHEMA_ATTRIBUTE_STRING}},
        0,
        nullptr,
        nullptr,
        nullptr,
        nullptr,
        nullptr,
        nullptr,
        nullptr};
    return &shape;
}

struct HashTableUnref {
    void operator()(GHashTable *table) const { g_hash_table_unref(table); }
};
using Attributes = std::unique_ptr<GHashTable, HashTableUnref>;

Attributes attributesOf(const std::string &account) {
    return Attributes(
        secret_attributes_build(schema(), "service", serviceName, "account", account.c_str(), nullptr));
}

struct ValueUnref {
    void operator()(SecretValue *value) const { secret_value_unref(value); }
};
using Value = std::unique_ptr<SecretValue, ValueUnref>;

/// Receives a GError and frees it.
class ErrorSlot {
public:
    ErrorSlot() = default;
    ~ErrorSlot() { g_clear_error(&m_error); }
    ErrorSlot(const ErrorSlot &) = delete;
    ErrorSlot &operator=(const ErrorSlot &) = delete;

    operator GError **() { return &m_error; }
    const GError *get() const { return m_error; }

private:
    GError *m_error = nullptr;
};

Kind kindOfBusError(int code) {
    switch (code) {
    case G_DBUS_ERROR_SERVICE_UNKNOWN:
    case G_DBUS_ERROR_NAME_HAS_NO_OWNER:
    case G_DBUS_ERROR_NO_SERVER:
    case G_DBUS_ERROR_FILE_NOT_FOUND:
    // Installed for starting through the bus, but it did not start.
    case G_DBUS_ERROR_SPAWN_EXEC_FAILED:
    case G_DBUS_ERROR_SPAWN_FORK_FAILED:
    case G_DBUS_ERROR_SPAWN_CHILD_EXITED:
    case G_DBUS_ERROR_SPAWN_CHILD_SIGNALED:
    case G_DBUS_ERROR_SPAWN_FAILED:
    case G_DBUS_ERROR_SPAWN_SETUP_FAILED:
    case G_DBUS_ERROR_SPAWN_CONFIG_INVALID:
    case G_DBUS_ERROR_SPAWN_SERVICE_INVALID:
    case G_DBUS_ERROR_SPAWN_SERVICE_NOT_FOUND:
        return Kind::absent;
    case G_DBUS_ERROR_NO_REPLY:
    case G_DBUS_ERROR_TIMEOUT:
    case G_DBUS_ERROR_TIMED_OUT:
    case G_DBUS_ERROR_DISCONNECTED:
        return Kind::notAnswering;
    default:
        return Kind::refused;
    }
}

Kind kindOfInputError(int code, const BoundedGlibCalls &calls) {
    switch (code) {
    case G_IO_ERROR_CANCELLED:
        return calls.isOutOfTime() ? Kind::notAnswering : Kind::cancelled;
    case G_IO_ERROR_CLOSED:
    case G_IO_ERROR_CONNECTION_CLOSED: // the same code as a broken pipe
    case G_IO_ERROR_TIMED_OUT:
        return Kind::notAnswering;
    default:
        return Kind::refused;
    }
}

Kind kindOf(const GError *error, const BoundedGlibCalls &calls) {
    if (error->domain == G_DBUS_ERROR)
        return kindOfBusError(error->code);
    if (error->domain == G_IO_ERROR)
        return kindOfInputError(error->code, calls);
    return g_error_matches(error, SECRET_ERROR, SECRET_ERROR_IS_LOCKED) ? Kind::locked : Kind::refused;
}

} // namespace

std::unexpected<KeychainError> SecretSession::failure(const GError *error) const {
    // Some calls fail without an error when the user closes their dialog.
    if (!error)
        return std::unexpected(KeychainError{Kind::locked, "dismissed"});
    Kind kind = kindOf(error, *m_calls);
    // It was there when this session began.
    if (kind == Kind::absent && m_wasThere)
        kind = Kind::notAnswering;
    return std::unexpected(KeychainError{kind, error->message});
}

std::unexpected<KeychainError> SecretSession::abandoned() const {
    const Kind kind = m_calls->isOutOfTime() ? Kind::notAnswering : Kind::cancelled;
    return std::unexpected(KeychainError{kind, "no answer in time"});
}

SecretSession::Result<void> SecretSession::connect() {
    for (;;) {
        const auto connected =
            m_calls->run([](GCancellable *cancellable, GAsyncReadyCallback done, gpointer data) {
                g_bus_get(G_BUS_TYPE_SESSION, cancellable, done, data);
            });
        if (!connected)
            return abandoned();
        ErrorSlot error;
        m_bus.reset(g_bus_get_finish(connected.get(), error));
        if (m_bus)
            return {};
        // The connection is the process's: another's cancelling of its making reaches this call as well.
        if (g_error_matches(error.get(), G_IO_ERROR, G_IO_ERROR_CANCELLED) && !m_calls->isCancelled())
            continue;
        // Whatever keeps the bus from being reached, without one there is no service either.
        const Kind kind = kindOf(error.get(), *m_calls);
        const bool givenUp = kind == Kind::notAnswering || kind == Kind::cancelled;
        return std::unexpected(KeychainError{givenUp ? kind : Kind::absent, error.get()->message});
    }
}

SecretSession::Result<SecretSession> SecretSession::open(BoundedGlibCalls &calls) {
    SecretSession session(calls);
    if (const auto connected = session.connect(); !connected)
        return std::unexpected(connected.error());
    // By default the library ends the process with SIGTERM when the bus goes away.
    g_dbus_connection_set_exit_on_close(session.m_bus.get(), FALSE);

    session.m_wasThere = session.isOwned();
    ErrorSlot error;
    const auto opened = calls.run([](GCancellable *cancellable, GAsyncReadyCallback done, gpointer data) {
        secret_service_open(SECRET_TYPE_SERVICE, nullptr, SECRET_SERVICE_OPEN_SESSION, cancellable, done,
                            data);
    });
    if (!opened)
        return session.abandoned();
    session.m_service.reset(secret_service_open_finish(opened.get(), error));
    if (!session.m_service)
        return session.failure(error.get());
    return session;
}

bool SecretSession::isOwned() {
    const auto answered =
        m_calls->run([this](GCancellable *cancellable, GAsyncReadyCallback done, gpointer data) {
            g_dbus_connection_call(m_bus.get(), "org.freedesktop.DBus", "/org/freedesktop/DBus",
                                   "org.freedesktop.DBus", "NameHasOwner",
                                   g_variant_new("(s)", "org.freedesktop.secrets"), G_VARIANT_TYPE("(b)"),
                                   G_DBUS_CALL_FLAGS_NONE, -1, cancellable, done, data);
        });
    GVariant *answer =
        answered ? g_dbus_connection_call_finish(m_bus.get(), answered.get(), nullptr) : nullptr;
    if (!answer)
        return false;
    gboolean owned = FALSE;
    g_variant_get(answer, "(b)", &owned);
    g_variant_unref(answer);
    return owned != FALSE;
}

SecretSession::Result<SecretSession::Items> SecretSession::search(const std::string &account) {
    const Attributes attributes = attributesOf(account);
    const auto found = m_calls->run([&](GCancellable *cancellable, GAsyncReadyCallback done, gpointer data) {
        secret_service_search(m_service.get(), schema(), attributes.get(), SECRET_SEARCH_ALL, cancellable,
                              done, data);
    });
    if (!found)
        return abandoned();
    ErrorSlot error;
    GList *list = secret_service_search_finish(m_service.get(), found.get(), error);
    if (error.get())
        return failure(error.get());
    Items items;
    for (const GList *link = list; link; link = link->next)
        items.emplace_back(SECRET_ITEM(link->data));
    g_list_free(list);
    return items;
}

SecretSession::Result<std::string> SecretSession::secretOf(SecretItem *item) {
    const auto loaded =
        m_calls->run([item](GCancellable *cancellable, GAsyncReadyCallback done, gpointer data) {
            secret_item_load_secret(item, cancellable, done, data);
        });
    if (!loaded)
        return abandoned();
    ErrorSlot error;
    if (!secret_item_load_secret_finish(item, loaded.get(), error))
        return failure(error.get());
    const Value value(secret_item_get_secret(item));
    const gchar *text = value ? secret_value_get_text(value.get()) : nullptr;
    if (!text || !g_utf8_validate(text, -1, nullptr))
        return std::unexpected(KeychainError{Kind::refused, "the stored value is not text"});
    return std::string(text);
}

SecretSession::Result<void> SecretSession::removeItem(SecretItem *item) {
    const auto removed =
        m_calls->run([item](GCancellable *cancellable, GAsyncReadyCallback done, gpointer data) {
            secret_item_delete(item, cancellable, done, data);
        });
    if (!removed)
        return abandoned();
    ErrorSlot error;
    if (!secret_item_delete_finish(item, removed.get(), error))
        return failure(error.get());
    return {};
}

SecretSession::Result<GObjectPtr<SecretCollection>> SecretSession::defaultCollection() {
    const auto found =
        m_calls->run([this](GCancellable *cancellable, GAsyncReadyCallback done, gpointer data) {
            secret_collection_for_alias(m_service.get(), SECRET_COLLECTION_DEFAULT, SECRET_COLLECTION_NONE,
                                        cancellable, done, data);
        });
    if (!found)
        return abandoned();
    ErrorSlot error;
    GObjectPtr<SecretCollection> collection(secret_collection_for_alias_finish(found.get(), error));
    if (error.get())
        return failure(error.get());
    return collection;
}

SecretSession::Result<void> SecretSession::store(const std::string &account, const std::string &value) {
    const Attributes attributes = attributesOf(account);
    const Value secret(secret_value_new(value.data(), gssize(value.size()), "text/plain"));
    const auto stored = m_calls->run([&](GCancellable *cancellable, GAsyncReadyCallback done, gpointer data) {
        secret_service_store(m_service.get(), schema(), attributes.get(), SECRET_COLLECTION_DEFAULT,
                             itemLabel, secret.get(), cancellable, done, data);
    });
    if (!stored)
        return abandoned();
    ErrorSlot error;
    if (!secret_service_store_finish(m_service.get(), stored.get(), error))
        return failure(error.get());
    return {};
}

SecretSession::Result<void> SecretSession::unlock(const std::vector<GDBusProxy *> &objects) {
    GList *list = nullptr;
    for (GDBusProxy *object : objects)
        list = g_list_prepend(list, object);
    const auto answered =
        m_calls->runDialog([&](GCancellable *cancellable, GAsyncReadyCallback done, gpointer data) {
            secret_service_unlock(m_service.get(), list, cancellable, done, data);
        });
    g_list_free(list);
    if (!answered)
        return abandoned();
    ErrorSlot error;
    const gint unlocked = secret_service_unlock_finish(m_service.get(), answered.get(), nullptr, error);
    if (error.get() || unlocked < int(objects.size()))
        return failure(error.get());
    return {};
}

SecretSession::Result<void> SecretSession::createDefaultCollection() {
    const auto answered =
        m_calls->runDialog([this](GCancellable *cancellable, GAsyncReadyCallback done, gpointer data) {
            secret_collection_create(m_service.get(), "Default keyring", SECRET_COLLECTION_DEFAULT,
                                     SECRET_COLLECTION_CREATE_NONE, cancellable, done, data);
        });
    if (!answered)
        return abandoned();
    ErrorSlot error;
    const GObjectPtr<SecretCollection> created(secret_collection_create_finish(answered.get(), error));
    if (!created)
        return std::unexpected(
            KeychainError{Kind::noKeyring, error.get() ? error.get()->message : "dismissed"});
    return {};
}

} // namespace vantrell
