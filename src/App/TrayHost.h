// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace vantrell {

/// Who shows tray icons on this desktop, and whether anybody does. Main thread.
class TrayHost {
public:
    TrayHost();
    ~TrayHost();
    TrayHost(const TrayHost &) = delete;
    TrayHost &operator=(const TrayHost &) = delete;

    /// "StatusNotifierItem" where a host is on the session bus, else "XEmbed" where a tray is on the display.
    std::optional<std::string> kind() const;

    /// A host came or went.
    std::function<void()> onChange;

private:
    struct Watchers;
    void look();

    bool m_isOnBus = false;
    bool m_isOnDisplay = false;
    std::unique_ptr<Watchers> m_watchers;
};

} // namespace vantrell
