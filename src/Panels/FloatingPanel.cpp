// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Panels/FloatingPanel.h"

#include "Panels/PanelTip.h"

#include <QApplication>
#include <QMouseEvent>
#include <QPainter>
#include <QPropertyAnimation>
#include <QScreen>

#include <algorithm>

namespace vantrell {

namespace {

constexpr int fadeMilliseconds = 140;

} // namespace

FloatingPanel::FloatingPanel(Options options)
    : QWidget(nullptr, PanelShell::instance().flags(options.role)), m_options(options),
      m_compositing(DesktopLink::instance().observeCompositing([this] { redraw(); })) {
    setAttribute(Qt::WA_ShowWithoutActivating);
    setAttribute(Qt::WA_TranslucentBackground);
    setAttribute(Qt::WA_QuitOnClose, false);
    // Panels are never the active window.
    setAttribute(Qt::WA_AlwaysShowToolTips);
    setFocusPolicy(Qt::NoFocus);

    const auto follow = [this](QScreen *screen) {
        QObject::connect(screen, &QScreen::availableGeometryChanged, this, [this] { stayOnScreen(); });
    };
    for (QScreen *screen : QGuiApplication::screens())
        follow(screen);
    QObject::connect(qGuiApp, &QGuiApplication::screenAdded, this, follow);
    // When the windows that were on it have been told.
    QObject::connect(
        qGuiApp, &QGuiApplication::screenRemoved, this, [this] { stayOnScreen(); }, Qt::QueuedConnection);
}

FloatingPanel::~FloatingPanel() = default;

void FloatingPanel::showPanel() {
    if (!isVisible()) {
        const bool fades = PanelShell::instance().canFade() && !prefersReducedMotion();
        if (const double first = fades ? 0 : 1; windowOpacity() != first)
            setWindowOpacity(first);
        show();
        if (fades)
            fadeIn();
    }
    raisePanel();
}

void FloatingPanel::fadeIn() {
    auto *fade = new QPropertyAnimation(this, "windowOpacity", this);
    fade->setDuration(fadeMilliseconds);
    fade->setStartValue(0.0);
    fade->setEndValue(1.0);
    fade->setEasingCurve(QEasingCurve::OutCubic);
    fade->start(QAbstractAnimation::DeleteWhenStopped);
}

void FloatingPanel::setOnLightBackdrop(bool light) {
    if (m_onLightBackdrop == light)
        return;
    m_onLightBackdrop = light;
    redraw();
}

QRect FloatingPanel::panelRect() const {
    const int margin = shadowMargin();
    return rect().adjusted(margin, margin, -margin, -margin);
}

void FloatingPanel::resizePanel(const QSize &size) {
    resize(size + QSize(2 * shadowMargin(), 2 * shadowMargin()));
}

bool FloatingPanel::mayLieAt(const QPoint &topLeft) const {
    const PanelShell &shell = PanelShell::instance();
    return !shell.isPictureBlind() &&
           shell.mayLieAt(QRect(topLeft - QPoint(shadowMargin(), shadowMargin()), size()));
}

bool FloatingPanel::placePanel(const QPoint &topLeft) {
    const QSize size = panelRect().size();
    QScreen *screen = screenAt(QRect(topLeft, size).center());
    const QRect room = PanelShell::instance().room(*screen);
    const int x = std::max(room.left(), std::min(topLeft.x(), room.right() + 1 - size.width()));
    const int y = std::max(room.top(), std::min(topLeft.y(), room.bottom() + 1 - size.height()));
    if (!mayLieAt({x, y}))
        return false;
    // First the screen: its scale is what the place is counted in.
    if (this->screen() != screen)
        setScreen(screen);
    move(QPoint(x, y) - QPoint(shadowMargin(), shadowMargin()));
    return true;
}

QRect FloatingPanel::panelFrame() const {
    return panelRect().translated(pos());
}

bool FloatingPanel::event(QEvent *event) {
    if (handleTipEvent(*this, *event))
        return true;
    if (event->type() == QEvent::WinIdChange && internalWinId() != 0) {
        PanelShell::instance().adopt(*this, m_options.role);
        shapeWindow();
    }
    const bool isHandled = QWidget::event(event);
    const bool isPlaced = event->type() == QEvent::Move || event->type() == QEvent::Resize ||
                          event->type() == QEvent::Show || event->type() == QEvent::Hide;
    if (isPlaced && onPlaced)
        onPlaced();
    return isHandled;
}

void FloatingPanel::paintEvent(QPaintEvent *) {
    if (!m_options.drawsPanel)
        return;
    if (m_picture.isNull() || m_picture.devicePixelRatio() != devicePixelRatioF()) {
        m_picture = shape().picture(theme(), isBlended());
        shapeWindow();
    }
    QPainter painter(this);
    painter.setCompositionMode(QPainter::CompositionMode_Source);
    painter.drawPixmap(0, 0, m_picture);
}

void FloatingPanel::showEvent(QShowEvent *event) {
    QWidget::showEvent(event);
    shapeWindow();
    // An ordinary window is made the active one, and Qt would put the focus on one of its controls.
    if (!PanelShell::instance().placesWindows() && !focusWidget())
        setFocus();
    m_cover = DesktopLink::instance().watchForCover(DesktopLink::WindowId(winId()), [this] { raisePanel(); });
}

void FloatingPanel::hideEvent(QHideEvent *event) {
    m_cover.reset();
    m_drag.reset();
    QWidget::hideEvent(event);
    // Wayland's compositors take the pointer from a window that goes without Qt's telling it and its
    // controls.
    QList<QWidget *> pointed = findChildren<QWidget *>();
    pointed.push_back(this);
    for (QWidget *widget : pointed) {
        if (QEvent left(QEvent::Leave); widget->underMouse())
            QCoreApplication::sendEvent(widget, &left);
    }
}

void FloatingPanel::resizeEvent(QResizeEvent *event) {
    QWidget::resizeEvent(event);
    m_picture = {};
    shapeWindow();
    // What has grown must not reach beyond the screen.
    stayOnScreen();
}

void FloatingPanel::stayOnScreen() {
    if (isVisible() && !m_drag)
        placePanel(panelFrame().topLeft());
}

void FloatingPanel::changeEvent(QEvent *event) {
    QWidget::changeEvent(event);
    if (event->type() == QEvent::PaletteChange || event->type() == QEvent::FontChange ||
        event->type() == QEvent::LayoutDirectionChange)
        redraw();
}

void FloatingPanel::mousePressEvent(QMouseEvent *event) {
    if (m_options.isMovable && event->button() == Qt::LeftButton)
        m_drag = Drag{{pos(), event->globalPosition().toPoint(), event->position().toPoint(), {}, {}}};
}

void FloatingPanel::mouseMoveEvent(QMouseEvent *event) {
    if (!m_drag)
        return;
    m_drag->places.now = event->globalPosition().toPoint();
    m_drag->places.nowInside = event->position().toPoint();
    const QPoint way = m_drag->places.now - m_drag->places.pressed;
    if (!m_drag->isMoving && way.manhattanLength() < QApplication::startDragDistance())
        return;
    m_drag->isMoving = true;
    PanelShell &shell = PanelShell::instance();
    if (shell.beginDrag(*this))
        m_drag.reset();
    else if (const auto corner = shell.dragged(*this, m_drag->places))
        placePanel(*corner + QPoint(shadowMargin(), shadowMargin()));
}

void FloatingPanel::mouseReleaseEvent(QMouseEvent *event) {
    if (event->button() != Qt::LeftButton || !m_drag)
        return;
    const bool hasMoved = m_drag->isMoving;
    m_drag.reset();
    if (hasMoved && onMoved)
        onMoved(panelFrame());
}

PanelShape FloatingPanel::shape() const {
    return {size(), QRectF(panelRect()), m_options.radius, devicePixelRatioF()};
}

void FloatingPanel::shapeWindow() {
    if (internalWinId() == 0)
        return;
    const QRegion region = shape().region();
    // Where something blends, the shadow is there too, though nobody can click on it.
    PanelShell::instance().setShape(*this, isBlended() ? QRegion() : region, region);
}

void FloatingPanel::redraw() {
    m_picture = {};
    shapeWindow();
    appearanceChanged();
    update();
    for (QWidget *child : findChildren<QWidget *>())
        child->update();
    // Open menus are windows of their own, in the look of the panel that they belong to.
    for (QWidget *window : QApplication::topLevelWidgets())
        if (window->windowType() == Qt::Popup)
            window->update();
}

QScreen *screenAt(const QPoint &point) {
    if (QScreen *screen = QGuiApplication::screenAt(point))
        return screen;
    const auto distance = [&point](const QScreen *screen) {
        const QRect area = screen->geometry();
        const QPoint nearest(std::clamp(point.x(), area.left(), area.right()),
                             std::clamp(point.y(), area.top(), area.bottom()));
        return (nearest - point).manhattanLength();
    };
    return std::ranges::min(QGuiApplication::screens(), {}, distance);
}

void markAsOwnWindow(QWidget &window) {
    DesktopLink::instance().markAsOwn(DesktopLink::WindowId(window.winId()));
}

} // namespace vantrell
