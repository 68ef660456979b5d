// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "App/PanelInterface.h"

#include "App/MenuBuilder.h"
#include "Overlay/CountdownPanel.h"
#include "Panels/Alert.h"
#include "Panels/PanelShell.h"
#include "Panels/Theme.h"
#include "Platform/DisplayLayout.h"

#include <QApplication>
#include <QMenu>

#include <chrono>

namespace vantrell {

namespace {

using namespace std::chrono_literals;

/// How long the screen shows a window that has gone: a picture or two, or until it has faded away where the
/// desktop treats it as an ordinary one.
constexpr auto paintTime = 80ms;
constexpr auto fadeTime = 350ms;

/// Of all windows that are on the screen.
std::vector<QRect> visibleFrames() {
    std::vector<QRect> frames;
    for (const QWidget *window : QApplication::topLevelWidgets())
        if (window->isVisible())
            frames.push_back(window->geometry());
    return frames;
}

} // namespace

PanelInterface::PanelInterface(Services services)
    : m_services(services), m_shelfPanel({services.shelf, *services.platform.capture, *services.desktop.files,
                                          services.platform.stills.get(), &services.clock}) {
    setDesktopAppearance(services.desktop.appearance.get());
    m_statusItem.onMenu = [this](const MenuEntry &entry) {
        if (onMenu)
            onMenu(entry);
    };
    m_statusItem.onClick = [this] {
        if (onStatusClick)
            onStatusClick();
    };
    m_statusItem.onOpen = [this] {
        if (onStatusOpen)
            onStatusOpen();
    };
    m_statusItem.onHostChange = [this] {
        if (onTrayChange)
            onTrayChange();
    };
}

PanelInterface::~PanelInterface() {
    // It tells the overlay where it is until the end.
    m_captureBar.reset();
    setDesktopAppearance(nullptr);
}

std::unique_ptr<QMenu> PanelInterface::makePanelMenu() {
    auto menu = std::make_unique<QMenu>();
    if (panelMenu)
        fillMenu(*menu, panelMenu(), [this](const MenuEntry &entry) {
            if (onMenu)
                onMenu(entry);
        });
    return menu;
}

void PanelInterface::showCaptureBar(std::shared_ptr<ToolBarState> state) {
    if (!m_captureBar) {
        m_captureBar = std::make_unique<CaptureBar>(
            CaptureBar::Services{*m_services.platform.audio, *m_services.platform.cameras,
                                 *m_services.platform.stills, m_services.settings.store(), m_services.clock});
        m_captureBar->avoided = [this] { return m_shelfPanel.frame(); };
        m_captureBar->onPlaced = [this] {
            if (m_overlay)
                m_overlay->followBar();
        };
    }
    m_captureBar->show(std::move(state), std::nullopt, [this] { return makePanelMenu(); });
}

void PanelInterface::hideCaptureBar() {
    if (m_captureBar)
        m_captureBar->hide();
}

void PanelInterface::beginSelection(ToolMode tool,
                                    std::function<void(SelectionOutcome, ToolMode)> completion) {
    m_overlay = std::make_unique<SelectionOverlayController>(SelectionOverlayController::Services{
        *m_services.platform.capture, *m_services.platform.stills, m_services.settings.store()});
    m_overlay->onToolWanted = [this](ToolMode wanted) {
        if (onToolWanted)
            onToolWanted(wanted);
    };
    m_overlay->onBarWanted = [this] {
        if (m_captureBar)
            m_captureBar->takeKeyboard();
    };
    m_overlay->onShown = [this](QWidget &overlay) {
        if (m_captureBar)
            m_captureBar->raise(overlay);
    };
    m_overlay->onPictureWanted = [this] { return m_captureBar && m_captureBar->setAside(); };
    m_overlay->onPictureTaken = [this] {
        if (m_captureBar)
            m_captureBar->comeBack();
    };
    m_overlay->barFrame = [this] { return m_captureBar ? m_captureBar->frame() : QRect(); };
    m_overlay->begin(
        tool, [this] { return m_captureBar && m_captureBar->isCursorOverBar(); },
        [this, completion = std::move(completion)](SelectionOutcome outcome, ToolMode used) {
            // Out of the way first: it is asked whether there still is an overlay.
            const auto ended = std::move(m_overlay);
            if (m_captureBar && outcome.isCancelled())
                m_captureBar->comeBack();
            const auto told = completion;
            told(std::move(outcome), used);
        });
}

void PanelInterface::setSelectionTool(ToolMode tool) {
    if (m_overlay)
        m_overlay->setTool(tool);
}

void PanelInterface::finishSelection(SelectionOutcome outcome) {
    if (m_overlay)
        m_overlay->finish(std::move(outcome));
}

Task<bool> PanelInterface::countDown(int seconds, Display display, std::stop_token stop) {
    return vantrell::countDown(seconds, std::move(display), m_services.clock, std::move(stop));
}

Task<> PanelInterface::leavePicture(Recorded recorded, std::stop_token stop) {
    if (!recorded.place)
        co_return;
    const Rect place = inPointsOf(recorded.display, *recorded.place);
    PanelShell &shell = PanelShell::instance();
    const std::vector<QRect> before = visibleFrames();
    // It is still there when it was not the bar that the recording was started from.
    hideCaptureBar();
    shell.setInPicture(QRectF(place.x, place.y, place.width, place.height).toAlignedRect());
    if (visibleFrames() == before)
        co_return;
    shell.sync();
    co_await m_services.clock.sleep(shell.placesWindows() ? paintTime : fadeTime, stop);
}

void PanelInterface::showHUD(std::shared_ptr<RecordingHUDState> state, const Display &display) {
    m_hud = std::make_unique<RecordingHUD>(
        RecordingHUD::Services{*m_services.platform.stills, m_services.settings.store(), m_services.clock},
        std::move(state));
    m_isHUDVisible = m_hud->show(display);
}

void PanelInterface::hideHUD() {
    if (m_hud)
        m_hud->hide();
    PanelShell::instance().setInPicture({});
    if (!m_hud)
        return;
    // One of its buttons may be in the middle of calling this.
    QMetaObject::invokeMethod(
        QCoreApplication::instance(), [hud = std::shared_ptr(std::move(m_hud))] {}, Qt::QueuedConnection);
}

void PanelInterface::showCameraBubble(std::shared_ptr<CameraBubbleState> state, const Display &display) {
    if (!m_cameraBubble)
        m_cameraBubble = std::make_unique<CameraBubble>(m_services.settings.store(), m_services.clock);
    m_cameraBubble->show(std::move(state), display, m_hud ? m_hud->frame() : QRect());
}

void PanelInterface::hideCameraBubble() {
    if (m_cameraBubble)
        m_cameraBubble->hide();
}

Task<int> PanelInterface::ask(std::string message, std::string informative, std::vector<std::string> buttons,
                              std::stop_token stop) {
    return vantrell::ask(std::move(message), std::move(informative), std::move(buttons), std::move(stop));
}

} // namespace vantrell
