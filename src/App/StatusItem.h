// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "App/TrayHost.h"
#include "App/UserInterface.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>

class QMenu;
class QSystemTrayIcon;

namespace vantrell {

/// The icon in the tray with its menu; found again when a tray comes later. Main thread.
class StatusItem {
public:
    StatusItem();
    ~StatusItem();
    StatusItem(const StatusItem &) = delete;
    StatusItem &operator=(const StatusItem &) = delete;

    void set(UserInterface::Status status);
    std::optional<std::string> host() const { return m_host.kind(); }

    std::function<void(const MenuEntry &)> onMenu;
    /// A left click while recording.
    std::function<void()> onClick;
    /// A left click while there is no place for the menu to come up at.
    std::function<void()> onOpen;
    std::function<void()> onHostChange;

private:
    void hostChanged();
    void show();
    void refresh();
    void activated(int reason);

    UserInterface::Status m_status;
    TrayHost m_host;
    /// Of what kind the icon was made; it cannot become another.
    std::optional<std::string> m_shownBy;
    std::unique_ptr<QMenu> m_menu;
    std::unique_ptr<QSystemTrayIcon> m_icon;
};

} // namespace vantrell
