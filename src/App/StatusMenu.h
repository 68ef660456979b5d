// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "API/TargetProject.h"
#include "App/MenuEntry.h"
#include "Auth/PairingState.h"

#include <optional>
#include <string>
#include <vector>

namespace vantrell {

/// What the status menu is made from.
struct StatusMenuState {
    int uploadingCount = 0;
    bool hasScreenAccess = true;
    bool isRecording = false;
    bool micEnabled = false;
    PairingState pairing;
    std::vector<TargetProject> projects;
    std::optional<std::string> selectedProjectId;
    std::optional<std::string> availableUpdateVersion;
    bool canCheckForUpdates = true;
    bool launchesAtLogin = false;
    struct Keys {
        std::string area = "Meta+Shift+7";
        std::string window = "Meta+Shift+8";
        std::string toggle = "Meta+Shift+9";
    };
    /// As Qt spells them, or as the desktop that has assigned them does; empty: none.
    Keys keys;
    /// Why there are none, or titles of commands whose hot key another program holds.
    std::vector<std::string> takenHotKeys;
};

/// The whole menu.
std::vector<MenuEntry> statusMenu(const StatusMenuState &state);
/// What a right click on the icon shows while recording.
std::vector<MenuEntry> recordingMenu(const StatusMenuState &state);

std::string uploadingStatusTitle(int uploadingCount);
/// "Upload to…" with the chosen project's name, if it is there.
std::string uploadToTitle(const std::vector<TargetProject> &projects,
                          const std::optional<std::string> &selectedProjectId);

} // namespace vantrell
