// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "TestSupport/Account/KeyringPrompter.h"

#include "TestSupport/RunTask.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusObjectPath>

#include <algorithm>
#include <stdexcept>

namespace vantrell::testing {

namespace {

constexpr char prompterName[] = "org.gnome.keyring.SystemPrompter";
constexpr char prompterPath[] = "/org/gnome/keyring/Prompter";

} // namespace

KeyringPrompter::KeyringPrompter(SessionBus &bus) : m_bus(bus) {
    QDBusConnection connection = m_bus.connection();
    if (!connection.registerVirtualObject(QLatin1String(prompterPath), this) ||
        !connection.registerService(QLatin1String(prompterName)))
        throw std::runtime_error("the prompter cannot be put on the bus");
}

KeyringPrompter::~KeyringPrompter() {
    QDBusConnection connection = m_bus.connection();
    connection.unregisterService(QLatin1String(prompterName));
    connection.unregisterObject(QLatin1String(prompterPath));
}

bool KeyringPrompter::handleMessage(const QDBusMessage &message, const QDBusConnection &connection) {
    connection.send(message.createReply());
    const Client client{message.service(), message.arguments().value(0).value<QDBusObjectPath>().path()};
    if (message.member() == QLatin1String("BeginPrompting")) {
        m_clients.push_back(client);
        if (m_clients.size() == 1)
            answer("");
    } else if (message.member() == QLatin1String("PerformPrompt")) {
        m_isOpen = true;
        ++m_shown;
    } else if (message.member() == QLatin1String("StopPrompting")) {
        callBack(client, "PromptDone");
        const bool wasFirst = !m_clients.empty() && m_clients.front() == client;
        std::erase(m_clients, client);
        if (wasFirst)
            m_isOpen = false;
        if (wasFirst && !m_clients.empty())
            answer("");
    }
    return true;
}

void KeyringPrompter::dismiss() {
    const Client client = m_clients.front();
    m_isOpen = false;
    answer("no");
    if (!eventually([&] { return std::ranges::find(m_clients, client) == m_clients.end(); }))
        throw std::runtime_error("the keyring does not close its dialog");
}

void KeyringPrompter::typePassword(SecretServiceSession &keyring) {
    // Typed in here it would have to be enciphered; this is what the daemon then does with it.
    keyring.unlock();
    dismiss();
}

void KeyringPrompter::answer(const char *reply) {
    callBack(m_clients.front(), "PromptReady", {QString::fromLatin1(reply), QVariantMap(), QString()});
}

void KeyringPrompter::callBack(const Client &client, const char *method, const QVariantList &arguments) {
    QDBusMessage message = QDBusMessage::createMethodCall(
        client.service, client.path, QStringLiteral("org.gnome.keyring.internal.Prompter.Callback"),
        QLatin1String(method));
    message.setArguments(arguments);
    m_bus.connection().send(message);
}

} // namespace vantrell::testing
