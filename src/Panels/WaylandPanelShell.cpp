// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Panels/WaylandPanelShell.h"

#include "Panels/LayerProbe.h"
#include "Panels/LayerWindow.h"
#include "Panels/WaylandLink.h"

#include <QGuiApplication>
#include <QMenu>
#include <QScreen>
#include <QWidget>
#include <QWindow>

#include <algorithm>
#include <chrono>

namespace vantrell {

namespace {

using namespace std::chrono_literals;

constexpr auto roomsLast = 1000ms;

} // namespace

WaylandPanelShell::WaylandPanelShell(WaylandLink &link)
    : m_link(link), m_hasLayers(link.layerShell() && link.windowBase()) {
    m_roomsAge.setSingleShot(true);
    m_roomsAge.setInterval(roomsLast);
    QObject::connect(&m_roomsAge, &QTimer::timeout, &m_roomsAge, [this] { m_rooms.clear(); });
    if (m_hasLayers)
        QObject::connect(qGuiApp, &QGuiApplication::focusWindowChanged, &m_roomsAge,
                         [this](const QWindow *now) { keepWithBorrower(now); });
}

Qt::WindowFlags WaylandPanelShell::flags(Role role) const {
    Qt::WindowFlags flags = Qt::FramelessWindowHint | Qt::NoDropShadowWindowHint;
    // Qt leaves it to the layer shell what becomes of these.
    if (m_hasLayers)
        return flags | Qt::Tool | Qt::BypassWindowManagerHint;
    if (role == Role::overlay)
        return flags | Qt::Window;
    return flags | (role == Role::tip ? Qt::ToolTip : Qt::Tool);
}

void WaylandPanelShell::adopt(QWidget &window, Role role, QWidget *owner) {
    // Menus make their flags themselves.
    if (m_hasLayers && role == Role::menu && !window.windowFlags().testFlag(Qt::BypassWindowManagerHint))
        window.setWindowFlag(Qt::BypassWindowManagerHint);
    window.winId();
    QWindow *handle = window.windowHandle();
    LayerWindow *layer = LayerWindow::of(handle);
    if (m_hasLayers && !layer)
        layer = new LayerWindow(*handle, role, m_link);
    if (!owner)
        return;
    QWidget &panel = *owner->window();
    if (!layer) {
        handle->setTransientParent(panel.windowHandle());
        return;
    }
    layer->setOwner(panel.windowHandle());
    if (auto *menu = qobject_cast<QMenu *>(&window))
        lendToMenusOf(panel, *menu);
}

void WaylandPanelShell::attach(QWidget &window, QWidget &below) {
    // Qt tells the compositor of a window's parent only before it is shown.
    if (!m_hasLayers)
        WaylandLink::setParent(window.windowHandle(), below.windowHandle());
}

/// A menu is worked with keys too, and gets them as its panel does.
void WaylandPanelShell::lendToMenusOf(QWidget &panel, QMenu &menu) {
    const bool hasIt = std::ranges::any_of(m_borrowers, [&](const auto &one) { return one == &panel; });
    if (hasIt)
        return;
    lendKeyboard(panel);
    QObject::connect(&menu, &QMenu::aboutToHide, &panel, [this, &panel] { takeKeyboardBack(panel); });
}

QRect WaylandPanelShell::room(const QScreen &screen) const {
    const QRect whole = screen.geometry();
    if (!m_hasLayers)
        return screen.availableGeometry();
    QRect &room = m_rooms[&screen];
    if (room.isEmpty() || !whole.contains(room)) {
        room = askForRoom(screen);
        m_roomsAge.start();
    }
    return room;
}

QRect WaylandPanelShell::askForRoom(const QScreen &screen) const {
    const QRect whole = screen.geometry();
    const QSize room = probeRoom(m_link, screen);
    if (room == whole.size())
        return m_plasma.of(screen).value_or(whole);
    // The compositor tells how much room there is, not where: what is missing may be on either side.
    const int across = std::clamp(whole.width() - room.width(), 0, whole.width() / 4);
    const int down = std::clamp(whole.height() - room.height(), 0, whole.height() / 4);
    return whole.adjusted(across, down, -across, -down);
}

void WaylandPanelShell::raise(QWidget &window) {
    if (LayerWindow *layer = LayerWindow::of(window.windowHandle()))
        m_order.raise(*layer);
    else
        window.raise();
}

void WaylandPanelShell::setShape(QWidget &window, const QRegion &, const QRegion &touchable) {
    QWindow *handle = window.windowHandle();
    if (!handle)
        return;
    const double scale = window.devicePixelRatioF();
    QRegion points = touchable;
    if (scale != 1) {
        points = {};
        for (const QRect &rect : touchable)
            points += QRectF(rect.x() / scale, rect.y() / scale, rect.width() / scale, rect.height() / scale)
                          .toAlignedRect();
    }
    handle->setMask(points);
}

void WaylandPanelShell::pruneBorrowers() {
    std::erase_if(m_borrowers, [](const auto &window) { return !window || !window->isVisible(); });
}

bool WaylandPanelShell::lendKeyboard(QWidget &window) {
    pruneBorrowers();
    for (const auto &borrower : m_borrowers) {
        if (LayerWindow *layer = LayerWindow::of(borrower->windowHandle()); layer && borrower != &window)
            layer->setKeyboard(false);
    }
    std::erase_if(m_borrowers, [&](const auto &one) { return one == &window; });
    m_borrowers.emplace_back(&window);
    if (LayerWindow *layer = LayerWindow::of(window.windowHandle()))
        layer->setKeyboard(true);
    else
        window.activateWindow();
    return true;
}

void WaylandPanelShell::takeKeyboardBack(QWidget &window) {
    if (LayerWindow *layer = LayerWindow::of(window.windowHandle()))
        layer->setKeyboard(false);
    std::erase_if(m_borrowers, [&](const auto &one) { return one == &window; });
    pruneBorrowers();
    if (!m_borrowers.empty())
        if (LayerWindow *layer = LayerWindow::of(m_borrowers.back()->windowHandle()))
            layer->setKeyboard(true);
}

/// Some compositors give the keyboard to whatever surface is clicked, also to one that asked for none. Who
/// has borrowed it asks anew, once the click is over: a button that loses the focus is not clicked.
void WaylandPanelShell::keepWithBorrower(const QWindow *now) {
    LayerWindow *clicked = LayerWindow::of(now);
    if (clicked && clicked->isLayer() && !clicked->hasKeyboard() && !m_borrowers.empty())
        clicked->afterClick([this, clicked] { returnKeyboard(*clicked); });
}

void WaylandPanelShell::returnKeyboard(const LayerWindow &clicked) {
    pruneBorrowers();
    const QWindow *focus = QGuiApplication::focusWindow();
    if (clicked.hasKeyboard() || LayerWindow::of(focus) != &clicked || m_borrowers.empty())
        return;
    const auto back =
        std::ranges::find_if(m_borrowers, [&](const auto &one) { return one->windowHandle() == focus; });
    if (back != m_borrowers.end()) {
        lendKeyboard(**back);
    } else if (LayerWindow *borrower = LayerWindow::of(m_borrowers.back()->windowHandle())) {
        borrower->setKeyboard(false);
        borrower->setKeyboard(true);
    }
}

bool WaylandPanelShell::beginDrag(QWidget &window) {
    return !m_hasLayers && window.windowHandle()->startSystemMove();
}

std::optional<QPoint> WaylandPanelShell::dragged(const QWidget &window, const Drag &drag) {
    const LayerWindow *layer = LayerWindow::of(window.windowHandle());
    return m_drag.place(window.pos(), drag, !layer || layer->isSettled());
}

void WaylandPanelShell::sync() {
    m_link.roundtrip();
}

} // namespace vantrell
