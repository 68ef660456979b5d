// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Overlay/CaptureBar.h"

#include "Overlay/CaptureBarWindow.h"
#include "Panels/BackdropMonitor.h"
#include "Panels/PanelPlacement.h"
#include "Panels/PanelTip.h"

#include <QApplication>
#include <QMenu>
#include <QScreen>

#include <utility>

namespace vantrell {

namespace {

/// From the display's lower edge, where nobody has put it elsewhere.
constexpr int barDistance = 36;

/// Where it is clear of what is avoided: as it lies, else beside that, or above it where there is no room
/// beside.
QPoint clearPlace(const QRect &bar, const QRect &room, const QRect &avoided) {
    constexpr int gap = 12;
    if (avoided.isEmpty() || !bar.intersects(avoided.marginsAdded({gap, gap, gap, gap})))
        return bar.topLeft();
    const int left = avoided.left() - gap - bar.width(), top = avoided.top() - gap - bar.height();
    if (left >= room.left())
        return {left, bar.top()};
    return top >= room.top() ? QPoint(bar.left(), top) : bar.topLeft();
}

/// In the middle of the lower edge, but clear of what is avoided.
QPoint usualPlace(const QRect &room, const QSize &size, const QRect &avoided) {
    // A desktop that places windows itself begins at the top: menus have to open towards the free side.
    if (!PanelShell::instance().placesWindows())
        return {room.center().x() - size.width() / 2, room.top() + barDistance};
    const QPoint usual(room.center().x() - size.width() / 2, room.bottom() + 1 - barDistance - size.height());
    return clearPlace(QRect(usual, size), room, avoided);
}

} // namespace

struct CaptureBar::Panel {
    explicit Panel(Services services)
        : window(new CaptureBarWindow(services.audio, services.cameras, services.clock)),
          placement(services.settings, "bar"),
          backdrop(*window, services.stills, services.clock, [this](bool isLight) {
              if (state)
                  state->onLightBackdrop = isLight;
          }) {
        window->onMoved = [this](QRect frame) {
            placement.save(frame);
            backdrop.start();
        };
    }

    ~Panel() {
        hide();
        window->onMoved = nullptr;
        window->onPlaced = nullptr;
        // A control of it may be on the stack.
        window->deleteLater();
    }

    void hide() {
        backdrop.stop();
        observation.reset();
        window->release();
        window->hide();
        state.reset();
        isAside = false;
    }

    /// A control that becomes wider moves the bar's ends, not its middle, while there is room for that.
    void refresh(const QRect &taken) {
        const QRect before = window->panelFrame();
        window->refresh();
        const QSize size = window->panelRect().size();
        if (size == before.size())
            return;
        const QRect after(before.topLeft() + QPoint((before.width() - size.width()) / 2, 0), size);
        // Who has put it over something wants it there.
        const bool keepsOff = !before.intersects(taken);
        const QRect room = PanelShell::instance().room(*screenAt(before.center()));
        window->placePanel(keepsOff ? clearPlace(after, room, taken) : after.topLeft());
    }

    CaptureBarWindow *window;
    PanelPlacement placement;
    std::shared_ptr<ToolBarState> state;
    Observation observation;
    BackdropMonitor backdrop;
    bool isAside = false;
};

CaptureBar::CaptureBar(Services services) : m_panel(std::make_unique<Panel>(services)) {
    m_panel->window->onPlaced = [this] {
        if (onPlaced)
            onPlaced();
    };
}

CaptureBar::~CaptureBar() = default;

void CaptureBar::show(std::shared_ptr<ToolBarState> state, const std::optional<std::string> &displayId,
                      std::function<std::unique_ptr<QMenu>()> menu) {
    Panel &panel = *m_panel;
    const QScreen *screen = displayId ? screenOf(*displayId, QCursor::pos()) : screenAt(QCursor::pos());
    panel.state = state;
    panel.window->show(state, std::move(menu), PanelShell::instance().room(*screen).width());
    panel.observation = state->observe([this] { m_panel->refresh(avoided ? avoided() : QRect()); });
    const QRect room = PanelShell::instance().room(*screen);
    const QSize size = panel.window->panelRect().size();
    const QPoint first = usualPlace(room, size, avoided ? avoided() : QRect());
    panel.window->placePanel(panel.placement.restore(*screen, size).value_or(first));
    panel.window->showPanel();
    panel.backdrop.start();
}

void CaptureBar::hide() {
    m_panel->hide();
}

bool CaptureBar::isVisible() const {
    return m_panel->window->isVisible();
}

void CaptureBar::raise(QWidget &overlay) {
    if (!isVisible())
        return;
    // It would stay below.
    hideTipOf(*m_panel->window);
    PanelShell::instance().attach(*m_panel->window, overlay);
    m_panel->window->raisePanel();
}

bool CaptureBar::setAside() {
    if (!isVisible())
        return false;
    m_panel->isAside = true;
    m_panel->window->hide();
    return true;
}

void CaptureBar::comeBack() {
    if (std::exchange(m_panel->isAside, false))
        m_panel->window->showPanel();
}

void CaptureBar::takeKeyboard() {
    if (isVisible())
        m_panel->window->takeKeyboard();
}

bool CaptureBar::isCursorOverBar() const {
    if (!isVisible())
        return false;
    const QWidget *menu = QApplication::activePopupWidget();
    return m_panel->window->panelFrame().contains(QCursor::pos()) ||
           (menu && menu->geometry().contains(QCursor::pos()));
}

QRect CaptureBar::frame() const {
    return isVisible() ? m_panel->window->panelFrame() : QRect();
}

} // namespace vantrell
