// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "App/MenuEntry.h"
#include "Overlay/CameraBubbleState.h"
#include "Overlay/RecordingHUDState.h"
#include "Overlay/SelectionOutcome.h"
#include "Overlay/ToolBarState.h"
#include "Overlay/ToolMode.h"
#include "Platform/Display.h"
#include "Support/Task.h"

#include <functional>
#include <memory>
#include <optional>
#include <stop_token>
#include <string>
#include <vector>

namespace vantrell {

/// All that the application shows. Main thread.
class UserInterface {
public:
    enum class StatusIcon { logo = 1, recording, uploading };
    struct Status {
        StatusIcon icon = StatusIcon::logo;
        /// What the icon stands for, in words.
        std::string description;
        /// Opened by a click; while recording only by a right one.
        std::vector<MenuEntry> menu;
        bool operator==(const Status &) const = default;
    };

    virtual ~UserInterface() = default;

    /// A state of its own for each time the bar is shown.
    virtual void showCaptureBar(std::shared_ptr<ToolBarState> state) = 0;
    virtual void hideCaptureBar() = 0;

    /// `completion` is called once, when nothing of the overlay is on the screen any more.
    virtual void beginSelection(ToolMode tool,
                                std::function<void(SelectionOutcome, ToolMode)> completion) = 0;
    virtual void setSelectionTool(ToolMode tool) = 0;
    /// Ends it with that outcome; nothing when there is none.
    virtual void finishSelection(SelectionOutcome outcome) = 0;
    virtual bool isSelecting() const = 0;

    /// False when it was cancelled. Nothing of it is on the screen when it returns.
    virtual Task<bool> countDown(int seconds, Display display, std::stop_token stop) = 0;

    /// What is recorded, as far as the interface has to keep out of it.
    struct Recorded {
        Display display;
        /// In the desktop's pixels; absent: a window, of which nothing that lies above it is recorded.
        std::optional<PixelRect> place;
    };
    /// From when it returns until `hideHUD` nothing of the interface is in what is recorded.
    virtual Task<> leavePicture(Recorded recorded, std::stop_token stop) = 0;
    virtual void showHUD(std::shared_ptr<RecordingHUDState> state, const Display &display) = 0;
    /// False also where there was no place for it.
    virtual bool isHUDVisible() const = 0;
    /// Also when none was shown: nothing is recorded any more.
    virtual void hideHUD() = 0;

    virtual void showCameraBubble(std::shared_ptr<CameraBubbleState> state, const Display &display) = 0;
    virtual void hideCameraBubble() = 0;

    virtual void showShelf(bool visible) = 0;
    /// The keyboard works the shelf's cards.
    virtual void focusShelf() = 0;
    /// Somebody can see a card.
    virtual bool isShelfVisible() const = 0;

    /// A question in a window of its own: the index of the button, the last one's when it was dismissed.
    virtual Task<int> ask(std::string message, std::string informative, std::vector<std::string> buttons,
                          std::stop_token stop) = 0;

    /// The icon in the tray.
    virtual void setStatus(Status status) = 0;
    /// How the icon is shown: "StatusNotifierItem", "XEmbed"; none while there is no tray.
    virtual std::optional<std::string> trayHost() const = 0;

    /// The user chose an entry of a menu.
    std::function<void(const MenuEntry &)> onMenu;
    /// The user asked for another tool with a key, in the middle of a selection.
    std::function<void(ToolMode)> onToolWanted;
    /// A left click on the icon while recording.
    std::function<void()> onStatusClick;
    /// A left click on the icon where its menu cannot come up.
    std::function<void()> onStatusOpen;
    /// A tray came or went.
    std::function<void()> onTrayChange;
    /// The entries of the menu that panels carry, as they are now.
    std::function<std::vector<MenuEntry>()> panelMenu;
};

} // namespace vantrell
