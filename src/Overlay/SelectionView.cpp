// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Overlay/SelectionView.h"

#include "Overlay/AreaKey.h"
#include "Overlay/OverlayAccessibility.h"
#include "Overlay/QtGeometry.h"
#include "Panels/PanelShell.h"

#include <QAccessible>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPaintEvent>
#include <QPainter>
#include <QScreen>

#include <cmath>

namespace vantrell {

SelectionView::SelectionView(const Display &display, QScreen *screen, bool isBlended)
    : m_isBlended(isBlended), m_hasServer(OverlayCanvas::hasServer()), m_contents(display) {
    installOverlayAccessibility();
    setWindowFlags(PanelShell::instance().flags(PanelShell::Role::overlay));
    setAttribute(Qt::WA_PaintOnScreen, m_hasServer);
    setAttribute(Qt::WA_OpaquePaintEvent);
    setAttribute(Qt::WA_NoSystemBackground);
    setAttribute(Qt::WA_InputMethodEnabled, false);
    if (isBlended)
        setAttribute(Qt::WA_TranslucentBackground);
    setAccessibleName(QStringLiteral("Vantrell capture overlay"));
    setMouseTracking(true);
    setFocusPolicy(Qt::StrongFocus);
    if (screen)
        setScreen(screen);
    // A fraction of a point too large rather than a pixel too small.
    setGeometry(int(display.frame.x), int(display.frame.y), int(std::ceil(display.frame.width)),
                int(std::ceil(display.frame.height)));
    setFixedSize(size());
    if (m_hasServer)
        m_canvas = OverlayCanvas::create(*this, display.pixels, isBlended);
    PanelShell::instance().adopt(*this, PanelShell::Role::overlay);
    m_scene = scene();
}

SelectionView::~SelectionView() = default;

void SelectionView::present() {
    if (PanelShell::instance().placesWindows())
        show();
    else
        showFullScreen();
    PanelShell::instance().raise(*this);
}

void SelectionView::freezeScreen() {
    if (m_canvas)
        m_canvas->freezeScreen();
}

void SelectionView::setPicture(const QImage &picture, const QPoint &corner) {
    const QRect part = picture.rect().translated(corner) & m_contents.wholeDisplay();
    if ((!m_canvas && m_hasServer) || part.isEmpty())
        return;
    const QImage own = picture.copy(part.translated(-corner));
    if (m_canvas)
        m_canvas->setPicture(own, part.topLeft());
    else
        m_picture = own.convertToFormat(QImage::Format_RGB32);
    m_loupePixels.forget();
    update(pointsCovering(part, scale()));
}

void SelectionView::setTool(ToolMode tool) {
    m_contents.tool = tool;
    m_contents.area.release();
    m_contents.isMovedExternally = m_isPicking = false;
    m_contents.notice.clear();
    placeButtons();
    updateCursor();
    refresh();
}

void SelectionView::setSelection(const std::optional<Rect> &rect) {
    m_contents.area.setRect(rect ? std::optional(m_contents.area.clampedToBounds(*rect)) : std::nullopt);
    placeButtons();
    refresh();
}

void SelectionView::showMovedSelection(const std::optional<Rect> &rect) {
    m_contents.area.setRect(rect ? std::optional(m_contents.area.clampedToBounds(*rect)) : std::nullopt);
    m_contents.takeButtons();
    refresh();
}

void SelectionView::selectMiddle() {
    m_contents.area.selectMiddle();
    placeButtons();
    refresh();
}

void SelectionView::followBar() {
    // It comes after the overlay, and a remembered selection has its buttons by then.
    placeButtons();
    refresh();
    if (m_hasServer || !m_isBlended)
        return;
    const QRegion gap = gapForBar().toAlignedRect();
    PanelShell::instance().setShape(*this, {},
                                    QRegion(m_contents.wholeDisplay()) - pixelsCovering(gap, scale()));
}

QRectF SelectionView::gapForBar() const {
    if (m_hasServer || !m_isBlended || !barFrame)
        return {};
    return toQt(barFrame()) & QRectF(rect());
}

void SelectionView::dismiss() {
    m_isDismissed = true;
    hide();
}

void SelectionView::commitSelection(bool record) {
    const auto rect = m_contents.area.committed();
    if (m_contents.tool != ToolMode::area || !rect || !onOutcome)
        return;
    onOutcome({SelectionOutcome::Region{*rect, m_contents.display, record}});
}

bool SelectionView::canAccept() const {
    switch (m_contents.tool) {
    case ToolMode::area:
        return m_contents.buttons.has_value();
    case ToolMode::window:
        return m_contents.litWindow || m_contents.desktopPicks;
    case ToolMode::screen:
        break;
    }
    return true;
}

void SelectionView::accept(bool record) {
    if (m_contents.tool == ToolMode::area)
        commitSelection(record);
    else if (m_contents.tool == ToolMode::window && canAccept() && onPicked)
        onPicked(record);
    else if (m_contents.tool == ToolMode::screen && onOutcome)
        onOutcome({SelectionOutcome::WholeDisplay{m_contents.display, record}});
}

void SelectionView::setDesktopPicks(bool picks) {
    m_contents.desktopPicks = picks;
    placeButtons();
    refresh();
}

void SelectionView::setWindows(const WindowPicker &picker, const QImage &icon, const QRegion &visiblePart) {
    m_contents.hasWindows = !picker.windows().empty();
    const WindowDescription *lit = picker.lit();
    m_contents.litWindow = lit ? std::optional(*lit) : std::nullopt;
    m_contents.litPart = visiblePart.translated(-m_contents.display.pixels.x, -m_contents.display.pixels.y) &
                         m_contents.wholeDisplay();
    m_contents.windowIcon = icon;
    refresh();
}

void SelectionView::setLit(bool isLit) {
    m_contents.isLit = isLit;
    refresh();
}

void SelectionView::setNotice(const QString &notice) {
    m_contents.notice = notice;
    refresh();
}

void SelectionView::setHelpShown(bool isShown) {
    m_contents.isHelpShown = isShown;
    refresh();
}

void SelectionView::setLoupePicture(const QImage &picture, const QPoint &corner) {
    m_loupePixels.set(picture, corner);
    refresh();
}

// What is shown

void SelectionView::refresh() {
    OverlayScene next = scene();
    const QRegion changes = next.changesFrom(m_scene, scale());
    m_scene = std::move(next);
    if (!isVisible() || changes.isEmpty())
        return;
    // A drag must not lag behind the pointer by the delay with which Qt collects updates.
    if (isDragging())
        repaint(changes);
    else
        update(changes);
    if (m_scene.loupe)
        fetchLoupePixels(*m_scene.loupe);
}

OverlayScene SelectionView::scene() const {
    OverlayScene scene = m_contents.scene();
    const bool hasPixels = m_isBlended ? bool(onPixelsWanted) : m_canvas || !m_picture.isNull();
    if (hasPixels && m_contents.tool == ToolMode::area && !scene.outline.isEmpty())
        scene.loupe = m_loupePixels.loupe(m_contents, scene.outline, m_mouse);
    scene.gap = gapForBar();
    return scene;
}

void SelectionView::fetchLoupePixels(const Loupe &loupe) {
    const QRect part = m_loupePixels.missing(loupe, m_contents.wholeDisplay());
    if (part.isEmpty())
        return;
    if (m_isBlended && onPixelsWanted)
        onPixelsWanted(part);
    else if (m_canvas)
        setLoupePicture(m_canvas->pixels(part), part.topLeft());
    else if (!m_picture.isNull())
        setLoupePicture(m_picture.copy(part), part.topLeft());
}

void SelectionView::paintEvent(QPaintEvent *event) {
    if (m_canvas) {
        m_canvas->paint(pixelsCovering(event->region(), scale()), m_scene, scale());
    } else if (!m_hasServer) {
        QPainter painter(this);
        m_scene.paint(painter, event->region(), m_picture, scale());
    }
}

// What the pointer does

void SelectionView::note(const QMouseEvent &event) {
    const auto snapped = [](double at, double limit) {
        // The pointer never gets past the last pixel, whose far side is the display's edge.
        return at >= limit - 1 && at <= limit ? limit : std::round(at);
    };
    m_mouse = {snapped(event.position().x(), m_contents.display.frame.width),
               snapped(event.position().y(), m_contents.display.frame.height)};
    m_isMouseInside = true;
}

void SelectionView::mousePressEvent(QMouseEvent *event) {
    note(*event);
    if (event->button() != Qt::LeftButton || isDragging())
        return;
    setNotice({});
    if (m_contents.tool != ToolMode::area && !m_contents.buttonAt(m_mouse)) {
        m_isPicking = true;
        return;
    }
    if (const auto button = m_contents.buttonAt(m_mouse)) {
        m_contents.buttons->pressed = button;
        refresh();
        return;
    }
    m_contents.area.press(m_mouse);
    // What lies below may have changed since the last drag.
    m_loupePixels.forget();
    placeButtons();
    if (onSelectionBegan)
        onSelectionBegan();
    updateCursor();
    refresh();
}

void SelectionView::mouseMoveEvent(QMouseEvent *event) {
    note(*event);
    if (isDragging()) {
        continueDrag(event->modifiers());
        return;
    }
    if (m_contents.buttons && event->buttons() == Qt::NoButton) {
        const auto hovered = m_contents.buttonAt(m_mouse);
        if (m_contents.buttons->hovered != hovered) {
            m_contents.buttons->hovered = hovered;
            refresh();
        }
    }
    updateCursor();
    if (onPointerMoved)
        onPointerMoved();
}

void SelectionView::continueDrag(Qt::KeyboardModifiers modifiers) {
    const bool isMove = std::holds_alternative<Drag::Move>(m_contents.area.drag()->kind);
    const bool isOutside = !contains(grown(m_contents.area.bounds(), 0.5), m_mouse);
    if (isMove && onMoveSelection && (isOutside || m_contents.isMovedExternally)) {
        m_contents.isMovedExternally = isOutside;
        onMoveSelection(m_contents.area.movedTo(m_mouse));
    }
    m_contents.area.dragTo(m_mouse, {.keepsRatio = modifiers.testFlag(Qt::ShiftModifier),
                                     .fromCentre = modifiers.testFlag(Qt::AltModifier),
                                     .movesWhole = m_isSpaceHeld});
    refresh();
}

void SelectionView::mouseReleaseEvent(QMouseEvent *event) {
    note(*event);
    if (event->button() == Qt::RightButton) {
        // Only now: the window below must not be left with half a click.
        if (onOutcome)
            onOutcome({});
        return;
    }
    if (event->button() != Qt::LeftButton)
        return;
    if (isDragging()) {
        endDrag();
        if (std::exchange(m_commitsOnRelease, false))
            commitSelection(true);
        return;
    }
    if (m_contents.buttons && m_contents.buttons->pressed) {
        const auto pressed = std::exchange(m_contents.buttons->pressed, std::nullopt);
        refresh();
        if (pressed == m_contents.buttonAt(m_mouse))
            accept(pressed == ActionButtons::Kind::record);
        return;
    }
    if (std::exchange(m_isPicking, false) && onPicked)
        onPicked(!event->modifiers().testFlag(Qt::ControlModifier));
}

void SelectionView::mouseDoubleClickEvent(QMouseEvent *event) {
    note(*event);
    const bool isInside =
        m_contents.area.rect() && contains(*m_contents.area.rect(), m_mouse) && !m_contents.buttonAt(m_mouse);
    mousePressEvent(event);
    m_commitsOnRelease = m_contents.tool == ToolMode::area && event->button() == Qt::LeftButton && isInside;
}

void SelectionView::endDrag() {
    const bool wasMove = std::holds_alternative<Drag::Move>(m_contents.area.drag()->kind);
    m_contents.area.release();
    if (std::exchange(m_contents.isMovedExternally, false))
        m_contents.area.setRect(std::nullopt);
    else if (m_contents.tool == ToolMode::area && m_contents.area.rect() && onSelectionKept)
        onSelectionKept(*m_contents.area.rect());
    placeButtons();
    updateCursor();
    refresh();
    if (wasMove && onMoveEnded)
        onMoveEnded();
}

void SelectionView::placeButtons() {
    m_contents.placeButtons(barFrame ? barFrame() : Rect());
    QAccessibleEvent changed(this, QAccessible::ObjectReorder);
    QAccessible::updateAccessibility(&changed);
}

void SelectionView::updateCursor() {
    const Qt::CursorShape shape = m_contents.cursorAt(m_mouse).value_or(cursor().shape());
    if (cursor().shape() != shape)
        setCursor(shape);
}

void SelectionView::enterEvent(QEnterEvent *event) {
    QMouseEvent moved(QEvent::MouseMove, event->position(), event->globalPosition(), Qt::NoButton,
                      Qt::NoButton, event->modifiers());
    mouseMoveEvent(&moved);
}

void SelectionView::leaveEvent(QEvent *) {
    m_isMouseInside = false;
    if (m_contents.buttons && m_contents.buttons->hovered) {
        m_contents.buttons->hovered.reset();
        refresh();
    }
    if (!isDragging() && onPointerMoved)
        onPointerMoved();
}

bool SelectionView::event(QEvent *event) {
    // What was on its way when the window went, as the release of the key that ended it, has nobody to go to.
    if (m_isDismissed && (event->isInputEvent() || event->type() == QEvent::Leave))
        return true;
    return QWidget::event(event);
}

// What the keys do

void SelectionView::keyPressEvent(QKeyEvent *event) {
    if (onKey)
        onKey(*event);
}

void SelectionView::keyReleaseEvent(QKeyEvent *event) {
    if (onKey)
        onKey(*event);
}

bool SelectionView::focusNextPrevChild(bool) {
    // Tab is a key like others here.
    return false;
}

bool SelectionView::handleKey(const QKeyEvent &event) {
    if (m_contents.tool != ToolMode::area)
        return false;
    const bool isPress = event.type() == QEvent::KeyPress;
    if (isDragging()) {
        if (event.key() == Qt::Key_Space && !event.isAutoRepeat())
            m_isSpaceHeld = isPress;
        continueDrag(AreaKey::modifiersAfter(event));
        return true;
    }
    m_isSpaceHeld = false;
    const std::optional<AreaKey> key = AreaKey::of(event);
    if (!key)
        return false;
    if (!isPress) {
        // Kept when the key is let go: a held key repeats faster than settings should be written.
        if (!event.isAutoRepeat() && m_contents.area.rect() && onSelectionKept)
            onSelectionKept(*m_contents.area.rect());
        return true;
    }
    if (onSelectionBegan)
        onSelectionBegan();
    key->applyTo(m_contents.area);
    placeButtons();
    refresh();
    return true;
}

} // namespace vantrell
