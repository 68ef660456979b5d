// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Platform/Bus/BusClient.h"
#include "Platform/Notifier.h"

#include <QDBusConnection>

#include <cstdint>
#include <functional>
#include <map>
#include <string>

namespace vantrell {

/// Notifications by whoever has org.freedesktop.Notifications on the session bus. Main thread. That may come
/// and go: what stays is shown again by the next one, the rest went with the old one.
class DesktopNotifier final : public Notifier {
public:
    explicit DesktopNotifier(QDBusConnection session);
    /// Takes what stays off the screen.
    ~DesktopNotifier() override;

    /// False until the desktop has answered what it can, shortly after the start.
    bool isAvailable() const override { return m_hasActions; }
    Id show(Notification notification, std::function<void(const std::string &key)> onAction) override;
    void withdraw(Id id) override;

private:
    struct Shown {
        Notification notification;
        std::function<void(const std::string &key)> onAction;
        /// The daemon's number, zero until it has answered.
        std::uint32_t number = 0;
    };

    void askCapabilities();
    void send(Id id);
    void close(std::uint32_t number);
    std::map<Id, Shown>::iterator find(std::uint32_t number);
    void acted(std::uint32_t number, const std::string &key);

    bool m_hasActions = false;
    bool m_understandsMarkup = false;
    Id m_lastId = 0;
    /// Counts the daemons: an answer of an older one means nothing.
    int m_daemon = 0;
    std::map<Id, Shown> m_shown;
    BusClient m_client;
};

} // namespace vantrell
