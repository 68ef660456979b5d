// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "App/StatusItem.h"
#include "App/UserInterface.h"
#include "Overlay/CameraBubble.h"
#include "Overlay/CaptureBar.h"
#include "Overlay/RecordingHUD.h"
#include "Overlay/SelectionOverlayController.h"
#include "Platform/DesktopServices.h"
#include "Platform/Platform.h"
#include "Session/CaptureSettings.h"
#include "Shelf/ShelfStore.h"
#include "ShelfPanel/ShelfPanel.h"
#include "Support/Clock.h"

#include <functional>
#include <memory>
#include <optional>
#include <stop_token>
#include <string>
#include <vector>

namespace vantrell {

/// The application's panels on the screen. Each is made when it is first shown. Main thread.
class PanelInterface : public UserInterface {
public:
    /// All outlive the interface.
    struct Services {
        Platform &platform;
        DesktopServices &desktop;
        CaptureSettings &settings;
        ShelfStore &shelf;
        Clock &clock;
    };

    explicit PanelInterface(Services services);
    ~PanelInterface() override;

    /// The shelf's cards ask for these.
    ShelfPanel &shelfPanel() { return m_shelfPanel; }

    void showCaptureBar(std::shared_ptr<ToolBarState> state) override;
    void hideCaptureBar() override;
    void beginSelection(ToolMode tool, std::function<void(SelectionOutcome, ToolMode)> completion) override;
    void setSelectionTool(ToolMode tool) override;
    void finishSelection(SelectionOutcome outcome) override;
    bool isSelecting() const override { return m_overlay != nullptr; }
    Task<bool> countDown(int seconds, Display display, std::stop_token stop) override;
    Task<> leavePicture(Recorded recorded, std::stop_token stop) override;
    void showHUD(std::shared_ptr<RecordingHUDState> state, const Display &display) override;
    bool isHUDVisible() const override { return m_hud && m_isHUDVisible; }
    void hideHUD() override;
    void showCameraBubble(std::shared_ptr<CameraBubbleState> state, const Display &display) override;
    void hideCameraBubble() override;
    void showShelf(bool visible) override { m_shelfPanel.setVisible(visible); }
    void focusShelf() override { m_shelfPanel.takeKeyboard(); }
    bool isShelfVisible() const override { return m_shelfPanel.isVisible(); }
    Task<int> ask(std::string message, std::string informative, std::vector<std::string> buttons,
                  std::stop_token stop) override;
    void setStatus(Status status) override { m_statusItem.set(std::move(status)); }
    std::optional<std::string> trayHost() const override { return m_statusItem.host(); }

private:
    std::unique_ptr<QMenu> makePanelMenu();

    const Services m_services;
    StatusItem m_statusItem;
    ShelfPanel m_shelfPanel;
    std::unique_ptr<CaptureBar> m_captureBar;
    std::unique_ptr<SelectionOverlayController> m_overlay;
    std::unique_ptr<RecordingHUD> m_hud;
    bool m_isHUDVisible = false;
    std::unique_ptr<CameraBubble> m_cameraBubble;
};

} // namespace vantrell
