// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Overlay/OverlayKeyboard.h"

#include "Panels/PanelShell.h"

#include <QApplication>
#include <QWindow>

#include <chrono>
#include <utility>

namespace vantrell {

namespace {

using namespace std::chrono_literals;

constexpr auto focusPatience = 60ms;
/// Against somebody who insists on the focus as we do.
constexpr int mostFocusAttempts = 30;

} // namespace

OverlayKeyboard::OverlayKeyboard() {
    m_again.setSingleShot(true);
    QObject::connect(&m_again, &QTimer::timeout, &m_again, [this] { takeAgain(); });
}

OverlayKeyboard::~OverlayKeyboard() {
    giveBack();
}

void OverlayKeyboard::take(QWidget &window) {
    if (PanelShell::instance().lendKeyboard(window)) {
        m_isTaken = true;
        m_holder = &window;
        return;
    }
    DesktopLink &desktop = DesktopLink::instance();
    if (!std::exchange(m_isTaken, true)) {
        m_before = desktop.focusedWindow();
        m_timesTaken = 0;
        // A window that opens meanwhile gets the focus from its window manager, below the overlay: what is
        // typed would go where nobody sees it.
        m_focusChanges = QObject::connect(qApp, &QGuiApplication::focusWindowChanged, &m_again, [this] {
            if (!QGuiApplication::focusWindow())
                m_again.start(focusPatience);
        });
    }
    m_holder = &window;
    desktop.focus(DesktopLink::WindowId(window.winId()));
    // A window manager may have been about to move the focus when we took it.
    m_again.start(focusPatience);
}

void OverlayKeyboard::takeAgain() {
    if (!m_holder || QGuiApplication::focusWindow() || QApplication::activePopupWidget() ||
        ++m_timesTaken > mostFocusAttempts)
        return;
    DesktopLink::instance().focus(DesktopLink::WindowId(m_holder->winId()));
    m_again.start(focusPatience);
}

void OverlayKeyboard::giveBack() {
    if (!std::exchange(m_isTaken, false))
        return;
    if (m_holder)
        PanelShell::instance().takeKeyboardBack(*m_holder);
    QObject::disconnect(m_focusChanges);
    m_again.stop();
    m_holder.clear();
    DesktopLink &desktop = DesktopLink::instance();
    desktop.sync();
    // Nobody has it where the server had to choose, which are the numbers below those of windows.
    constexpr DesktopLink::WindowId firstWindow = 2;
    const DesktopLink::WindowId now = desktop.focusedWindow();
    if (now < firstWindow || QWidget::find(WId(now)))
        desktop.focus(m_before);
}

} // namespace vantrell
