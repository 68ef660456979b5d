// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include <string>
#include <vector>

namespace vantrell {

/// What an entry of a menu does.
enum class MenuAction {
    none = 1,
    captureArea,
    captureWindow,
    captureScreen,
    toggleRecording,
    toggleMic,
    requestPermission,
    selectProject,
    refreshProjects,
    pair,
    reopenApproval,
    cancelPairing,
    unpair,
    openVantrell,
    checkForUpdates,
    toggleLaunchAtLogin,
    quit,
};

/// One line of a menu. Without an action and a submenu it cannot be chosen.
struct MenuEntry {
    /// Empty: a separator.
    std::string title;
    MenuAction action = MenuAction::none;
    bool isChecked = false;
    bool isCheckable = false;
    bool isEnabled = true;
    /// As Qt spells keys: "Meta+Shift+7".
    std::string key;
    /// What the action is about: a project's id.
    std::string payload;
    std::vector<MenuEntry> submenu;

    bool isSeparator() const { return title.empty(); }
    bool operator==(const MenuEntry &) const = default;
};

} // namespace vantrell
