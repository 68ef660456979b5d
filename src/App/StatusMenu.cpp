// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "App/StatusMenu.h"

#include <algorithm>
#include <utility>

namespace vantrell {

namespace {

constexpr const char *quitKey = "Ctrl+Q";

using Entries = std::vector<MenuEntry>;

void separate(Entries &entries) {
    if (!entries.empty() && !entries.back().isSeparator())
        entries.emplace_back();
}

void note(Entries &entries, std::string title) {
    entries.push_back({.title = std::move(title), .isEnabled = false});
}

void add(Entries &entries, std::string title, MenuAction action, std::string key = {}) {
    entries.push_back({.title = std::move(title), .action = action, .key = std::move(key)});
}

void addCheck(Entries &entries, std::string title, MenuAction action, bool isChecked) {
    entries.push_back(
        {.title = std::move(title), .action = action, .isChecked = isChecked, .isCheckable = true});
}

Entries projectMenu(const StatusMenuState &state) {
    Entries entries;
    for (const TargetProject &project : state.projects)
        entries.push_back({.title = project.name.empty() ? project.id : project.name,
                           .action = MenuAction::selectProject,
                           .isChecked = project.id == state.selectedProjectId,
                           .isCheckable = true,
                           .payload = project.id});
    if (entries.empty())
        note(entries, "No projects yet. Create one in Vantrell");
    separate(entries);
    add(entries, "Refresh Projects", MenuAction::refreshProjects);
    return entries;
}

void addConnection(Entries &entries, const StatusMenuState &state) {
    switch (state.pairing.kind) {
    case PairingState::Kind::paired:
        entries.push_back(
            {.title = uploadToTitle(state.projects, state.selectedProjectId), .submenu = projectMenu(state)});
        separate(entries);
        add(entries, "Disconnect from Vantrell", MenuAction::unpair);
        break;
    case PairingState::Kind::unpaired:
        add(entries, "Connect to Vantrell…", MenuAction::pair);
        break;
    case PairingState::Kind::waitingForApproval:
        note(entries, "Waiting for approval in browser…");
        add(entries, "Reopen Approval Page", MenuAction::reopenApproval);
        add(entries, "Cancel Pairing", MenuAction::cancelPairing);
        break;
    }
}

void addCapturing(Entries &entries, const StatusMenuState &state) {
    if (state.isRecording) {
        add(entries, "Stop Recording", MenuAction::toggleRecording, state.keys.toggle);
    } else {
        add(entries, "Capture Area", MenuAction::captureArea, state.keys.area);
        add(entries, "Capture Window", MenuAction::captureWindow, state.keys.window);
        add(entries, "Capture Full Screen", MenuAction::captureScreen);
        separate(entries);
        add(entries, "Start Recording…", MenuAction::toggleRecording, state.keys.toggle);
        addCheck(entries, "Record Microphone", MenuAction::toggleMic, state.micEnabled);
        for (const std::string &taken : state.takenHotKeys)
            note(entries, taken);
    }
    separate(entries);
}

} // namespace

std::string uploadingStatusTitle(int uploadingCount) {
    if (uploadingCount == 1)
        return "Uploading 1 capture…";
    return "Uploading " + std::to_string(uploadingCount) + " captures…";
}

std::string uploadToTitle(const std::vector<TargetProject> &projects,
                          const std::optional<std::string> &selectedProjectId) {
    const auto found = std::ranges::find(projects, selectedProjectId, &TargetProject::id);
    return found == projects.end() ? "Upload to…" : "Upload to: " + found->name;
}

std::vector<MenuEntry> statusMenu(const StatusMenuState &state) {
    Entries entries;
    if (state.uploadingCount >= 1) {
        note(entries, uploadingStatusTitle(state.uploadingCount));
        separate(entries);
    }
    if (!state.hasScreenAccess) {
        note(entries, "Screen Recording permission needed");
        add(entries, "Enable Screen Recording…", MenuAction::requestPermission);
        separate(entries);
    }
    addCapturing(entries, state);
    addConnection(entries, state);
    add(entries, "Open Vantrell", MenuAction::openVantrell);
    add(entries,
        state.availableUpdateVersion ? "Update to " + *state.availableUpdateVersion : "Check for Updates…",
        MenuAction::checkForUpdates);
    entries.back().isEnabled = state.canCheckForUpdates;
    addCheck(entries, "Launch at Login", MenuAction::toggleLaunchAtLogin, state.launchesAtLogin);
    separate(entries);
    add(entries, "Quit Vantrell Capture", MenuAction::quit, quitKey);
    return entries;
}

std::vector<MenuEntry> recordingMenu(const StatusMenuState &state) {
    Entries entries;
    note(entries, "Recording in progress");
    if (state.uploadingCount >= 1)
        note(entries, uploadingStatusTitle(state.uploadingCount));
    separate(entries);
    add(entries, "Stop Recording", MenuAction::toggleRecording, state.keys.toggle);
    separate(entries);
    add(entries, "Quit Vantrell Capture", MenuAction::quit, quitKey);
    return entries;
}

} // namespace vantrell
