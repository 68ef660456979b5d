// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "App/StatusMenu.h"

#include <gtest/gtest.h>

namespace vantrell::testing {

namespace {

/// A line an entry: "*" checked, "(...)" not to be chosen, the key behind it, submenus indented.
std::string text(const std::vector<MenuEntry> &entries, const std::string &indent = {}) {
    std::string lines;
    for (const MenuEntry &entry : entries) {
        std::string line = entry.isSeparator() ? "--" : entry.title;
        const bool isPlain =
            entry.action == MenuAction::none && entry.submenu.empty() && !entry.isSeparator();
        if (isPlain || !entry.isEnabled)
            line = "(" + line + ")";
        lines +=
            indent + (entry.isChecked ? "*" : "") + line + (entry.key.empty() ? "" : " " + entry.key) + "\n";
        lines += text(entry.submenu, indent + "  ");
    }
    return lines;
}

constexpr const char *tail =
    "Open Vantrell\nCheck for Updates…\nLaunch at Login\n--\nQuit Vantrell Capture Ctrl+Q\n";
constexpr const char *capturing =
    "Capture Area Meta+Shift+7\nCapture Window Meta+Shift+8\nCapture Full Screen\n--\n"
    "Start Recording… Meta+Shift+9\nRecord Microphone\n--\n";

TEST(StatusMenu, saysHowTheAccountStands) {
    StatusMenuState state;
    EXPECT_EQ(text(statusMenu(state)), std::string(capturing) + "Connect to Vantrell…\n" + tail);

    state.pairing = PairingState::waitingForApproval("https://example.test");
    EXPECT_EQ(text(statusMenu(state)), std::string(capturing) +
                                           "(Waiting for approval in browser…)\nReopen Approval Page\n"
                                           "Cancel Pairing\n" +
                                           tail);

    state.pairing = PairingState::paired();
    const std::string disconnect = "--\nDisconnect from Vantrell\n";
    EXPECT_EQ(text(statusMenu(state)),
              std::string(capturing) +
                  "Upload to…\n  (No projects yet. Create one in Vantrell)\n  --\n  Refresh Projects\n" +
                  disconnect + tail);

    state.projects = {{"a", "Alpha"}, {"b", "Beta"}};
    state.selectedProjectId = "b";
    EXPECT_EQ(text(statusMenu(state)), std::string(capturing) +
                                           "Upload to: Beta\n  Alpha\n  *Beta\n  --\n  Refresh Projects\n" +
                                           disconnect + tail);
    state.selectedProjectId = "gone";
    EXPECT_EQ(statusMenu(state).at(7).title, "Upload to…");
}

TEST(StatusMenu, saysWhatGoesOn) {
    StatusMenuState state;
    state.uploadingCount = 1;
    state.hasScreenAccess = false;
    state.micEnabled = true;
    state.availableUpdateVersion = "2.1";
    state.canCheckForUpdates = false;
    state.launchesAtLogin = true;
    EXPECT_EQ(
        text(statusMenu(state)),
        "(Uploading 1 capture…)\n--\n(Screen Recording permission needed)\nEnable Screen Recording…\n--\n"
        "Capture Area Meta+Shift+7\nCapture Window Meta+Shift+8\nCapture Full Screen\n--\n"
        "Start Recording… Meta+Shift+9\n*Record Microphone\n--\nConnect to Vantrell…\nOpen Vantrell\n"
        "(Update to 2.1)\n*Launch at Login\n--\nQuit Vantrell Capture Ctrl+Q\n");

    StatusMenuState recording;
    recording.isRecording = true;
    recording.uploadingCount = 3;
    EXPECT_EQ(text(recordingMenu(recording)),
              "(Recording in progress)\n(Uploading 3 captures…)\n--\nStop Recording Meta+Shift+9\n--\n"
              "Quit Vantrell Capture Ctrl+Q\n");
    recording.uploadingCount = 0;
    EXPECT_EQ(text(statusMenu(recording)),
              std::string("Stop Recording Meta+Shift+9\n--\nConnect to Vantrell…\n") + tail);
}

} // namespace

} // namespace vantrell::testing
