// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Overlay/SelectionView.h"

#include "Overlay/OverlayAccessibility.h"
#include "Overlay/OverlayText.h"
#include "Overlay/QtGeometry.h"
#include "Panels/PanelFont.h"
#include "Panels/PanelShell.h"
#include "Platform/DisplayLayout.h"

#include <QAccessible>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPaintEvent>
#include <QPainter>
#include <QScreen>

#include <algorithm>
#include <cmath>

namespace vantrell {

namespace {

/// From the display's edges to labels.
constexpr double margin = 12;
/// From the selection to its size.
constexpr double sizeGap = 10;
constexpr double hintTop = 24;

QString sizeText(const QSize &pixels) {
    return QStringLiteral("%1 × %2").arg(pixels.width()).arg(pixels.height());
}

Qt::CursorShape resizeCursor(const AreaZone::Resize &zone, const Rect &selection) {
    if (!zone.anchorY)
        return Qt::SizeHorCursor;
    if (!zone.anchorX)
        return Qt::SizeVerCursor;
    const bool isLeft = *zone.anchorX != selection.x, isTop = *zone.anchorY != selection.y;
    return isLeft == isTop ? Qt::SizeFDiagCursor : Qt::SizeBDiagCursor;
}

} // namespace

SelectionView::SelectionView(const Display &display, QScreen *screen, bool isBlended)
    : m_display(display), m_isBlended(isBlended), m_hasServer(OverlayCanvas::hasServer()),
      m_area({display.frame.width, display.frame.height}) {
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
    const QRect part =
        picture.rect().translated(corner) & QRect(0, 0, m_display.pixels.width, m_display.pixels.height);
    if ((!m_canvas && m_hasServer) || part.isEmpty())
        return;
    const QImage own = picture.copy(part.translated(-corner));
    if (m_canvas)
        m_canvas->setPicture(own, part.topLeft());
    else
        m_picture = own.convertToFormat(QImage::Format_RGB32);
    m_loupePicture = {};
    update(pointsCovering(part, scale()));
}

void SelectionView::setTool(ToolMode tool) {
    m_tool = tool;
    m_area.release();
    m_isMovedExternally = m_isPicking = false;
    m_notice.clear();
    placeButtons();
    updateCursor();
    refresh();
}

void SelectionView::setSelection(const std::optional<Rect> &rect) {
    m_area.setRect(rect ? std::optional(m_area.clampedToBounds(*rect)) : std::nullopt);
    placeButtons();
    refresh();
}

void SelectionView::showMovedSelection(const std::optional<Rect> &rect) {
    m_area.setRect(rect ? std::optional(m_area.clampedToBounds(*rect)) : std::nullopt);
    m_area.captureButtonRect = m_area.recordButtonRect = std::nullopt;
    m_buttons.reset();
    refresh();
}

void SelectionView::selectMiddle() {
    m_area.selectMiddle();
    placeButtons();
    refresh();
}

void SelectionView::followBar() {
    if (m_hasServer || !m_isBlended)
        return;
    const QRegion gap = gapForBar().toAlignedRect();
    PanelShell::instance().setShape(*this, {},
                                    QRegion(0, 0, m_display.pixels.width, m_display.pixels.height) -
                                        pixelsCovering(gap, scale()));
    refresh();
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
    const auto rect = m_area.committed();
    if (m_tool != ToolMode::area || !rect || !onOutcome)
        return;
    onOutcome({SelectionOutcome::Region{*rect, m_display, record}});
}

bool SelectionView::canAccept() const {
    switch (m_tool) {
    case ToolMode::area:
        return m_buttons.has_value();
    case ToolMode::window:
        return m_litWindow || m_desktopPicks;
    case ToolMode::screen:
        break;
    }
    return true;
}

void SelectionView::accept(bool record) {
    if (m_tool == ToolMode::area)
        commitSelection(record);
    else if (m_tool == ToolMode::window && canAccept() && onPicked)
        onPicked(record);
    else if (m_tool == ToolMode::screen && onOutcome)
        onOutcome({SelectionOutcome::WholeDisplay{m_display, record}});
}

void SelectionView::setDesktopPicks(bool picks) {
    m_desktopPicks = picks;
    placeButtons();
    refresh();
}

void SelectionView::setWindows(const WindowPicker &picker, const QImage &icon, const QRegion &visiblePart) {
    m_hasWindows = !picker.windows().empty();
    const WindowDescription *lit = picker.lit();
    m_litWindow = lit ? std::optional(*lit) : std::nullopt;
    m_litPart = visiblePart.translated(-m_display.pixels.x, -m_display.pixels.y) &
                QRect(0, 0, m_display.pixels.width, m_display.pixels.height);
    m_windowIcon = icon;
    refresh();
}

void SelectionView::setLit(bool isLit) {
    m_isLit = isLit;
    refresh();
}

void SelectionView::setNotice(const QString &notice) {
    m_notice = notice;
    refresh();
}

void SelectionView::setHelpShown(bool isShown) {
    m_isHelpShown = isShown;
    refresh();
}

void SelectionView::setLoupePicture(const QImage &picture, const QPoint &corner) {
    m_loupePicture = picture;
    m_loupeCorner = corner;
    refresh();
}

// What is shown

QRect SelectionView::devicePixels(const Rect &rect) const {
    return toQt(inPixelsOf(m_display, rect)).translated(-m_display.pixels.x, -m_display.pixels.y);
}

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
        fetchLoupePixels(m_scene.loupe->shownPixels());
}

OverlayScene SelectionView::scene() const {
    OverlayScene scene;
    if (m_tool == ToolMode::area)
        addArea(scene);
    else if (m_tool == ToolMode::window)
        addWindow(scene);
    else
        addScreen(scene);
    addHints(scene);
    scene.gap = gapForBar();
    return scene;
}

void SelectionView::addArea(OverlayScene &scene) const {
    const auto rect = m_isMovedExternally ? std::nullopt : m_area.rect();
    if (!rect || rect->width <= 0 || rect->height <= 0)
        return;
    const Rect shown = integral(*rect);
    scene.outline = devicePixels(shown);
    scene.lit = scene.outline;
    const bool isDrawn = isDragging() && std::holds_alternative<Drag::Draw>(m_area.drag()->kind);
    scene.hasHandles = !isDrawn;
    scene.buttons = m_buttons;

    OverlayLabel size = OverlayLabel::sized(sizeText(scene.outline.size()), m_display.frame.width);
    const double above = shown.y - sizeGap - size.frame.height();
    const double x =
        std::clamp(shown.x, margin, std::max(margin, m_display.frame.width - size.frame.width() - margin));
    size.moveTo({above >= margin ? x : x + (shown.x < margin ? 0 : margin),
                 above >= margin ? above : std::max(margin, shown.y + margin)});
    scene.labels.push_back(size);
    scene.loupe = loupe(scene.outline);
}

std::optional<Loupe> SelectionView::loupe(const QRect &selected) const {
    const bool hasPixels = m_isBlended ? bool(onPixelsWanted) : m_canvas || !m_picture.isNull();
    if (!hasPixels || !isDragging() || std::holds_alternative<Drag::Move>(m_area.drag()->kind))
        return std::nullopt;
    // The edge that follows the pointer, which it need not touch.
    const auto nearest = [](double at, int low, int high) {
        return std::abs(at - low) < std::abs(at - high) ? low : high;
    };
    const QPoint at(int(std::lround(m_mouse.x * scale())), int(std::lround(m_mouse.y * scale())));
    const auto *resize = std::get_if<Drag::Resize>(&m_area.drag()->kind);
    const bool followsX = !resize || resize->anchorX, followsY = !resize || resize->anchorY;
    Loupe loupe;
    loupe.middle = {followsX ? nearest(at.x(), selected.left(), selected.left() + selected.width()) : at.x(),
                    followsY ? nearest(at.y(), selected.top(), selected.top() + selected.height()) : at.y()};
    loupe.selection = selected;
    loupe.frame = Loupe::placed(m_mouse, m_area.bounds());
    loupe.picture = m_loupePicture;
    loupe.pictureCorner = m_loupeCorner;
    return loupe;
}

void SelectionView::fetchLoupePixels(const QRect &shown) {
    const QRect whole(0, 0, m_display.pixels.width, m_display.pixels.height);
    const QRect wanted = shown & whole;
    if (wanted.isEmpty() || m_loupePicture.rect().translated(m_loupeCorner).contains(wanted))
        return;
    // More than is shown, so that not every step of a drag asks.
    constexpr int surroundings = 96;
    const QRect part = wanted.adjusted(-surroundings, -surroundings, surroundings, surroundings) & whole;
    if (m_isBlended && onPixelsWanted)
        onPixelsWanted(part);
    else if (m_canvas)
        setLoupePicture(m_canvas->pixels(part), part.topLeft());
    else if (!m_picture.isNull())
        setLoupePicture(m_picture.copy(part), part.topLeft());
}

void SelectionView::addWindow(OverlayScene &scene) const {
    if (m_desktopPicks)
        scene.buttons = m_buttons;
    if (!m_litWindow)
        return;
    scene.lit = m_litPart;
    const PixelRect &all = m_litWindow->pixels;
    const QRect whole = toQt(all).translated(-m_display.pixels.x, -m_display.pixels.y);
    const QRect seen = whole & QRect(0, 0, m_display.pixels.width, m_display.pixels.height);
    if (seen.isEmpty())
        return;
    scene.outline = whole;
    scene.isOutlineStrong = true;
    // In the middle of what can be seen of it.
    const QRectF ground = QRectF(m_litPart.isEmpty() ? seen : m_litPart.boundingRect());
    const QString application = oneLine(QString::fromStdString(m_litWindow->applicationName.value_or("")));
    const QString title = oneLine(QString::fromStdString(m_litWindow->title.value_or("")));
    OverlayLabel name = OverlayLabel::sized(application.isEmpty() ? title : application,
                                            std::min(480.0, m_display.frame.width - 2 * margin),
                                            application.isEmpty() ? QString() : title, m_windowIcon);
    const double x = ground.center().x() / scale() - name.frame.width() / 2;
    name.moveTo({std::round(std::clamp(
                     x, margin, std::max(margin, m_display.frame.width - margin - name.frame.width()))),
                 std::round(ground.center().y() / scale() - name.frame.height() / 2)});
    scene.labels.push_back(name);
}

void SelectionView::addScreen(OverlayScene &scene) const {
    if (!m_isLit)
        return;
    const QRect whole(0, 0, m_display.pixels.width, m_display.pixels.height);
    scene.lit = whole;
    scene.isOutlineStrong = true;
    const int inset = int(std::lround(4 * scale()));
    scene.outline = whole.adjusted(inset, inset, -inset, -inset);
    OverlayLabel name = OverlayLabel::sized(oneLine(QString::fromStdString(m_display.name)),
                                            m_display.frame.width - 2 * margin,
                                            sizeText({m_display.pixels.width, m_display.pixels.height}));
    name.moveTo({std::round((m_display.frame.width - name.frame.width()) / 2),
                 std::round((m_display.frame.height - name.frame.height()) / 2)});
    scene.labels.push_back(name);
}

void SelectionView::addHints(OverlayScene &scene) const {
    if (isDragging())
        return;
    if (m_isHelpShown) {
        scene.help = KeysHelp::of(m_tool);
        scene.help->moveTo({std::round((m_display.frame.width - scene.help->frame.width()) / 2), hintTop});
        return;
    }
    QString text = m_notice;
    if (text.isEmpty() && m_tool == ToolMode::area)
        text = overlayText("Drag anywhere to select an area");
    else if (text.isEmpty() && m_tool == ToolMode::window && m_desktopPicks)
        text = overlayText("Click, then choose a window in the desktop's dialog");
    else if (text.isEmpty() && m_tool == ToolMode::window)
        text = m_hasWindows ? overlayText("Click a window to record it")
                            : overlayText("There is no window to record");
    else if (text.isEmpty())
        text = overlayText("Click a screen to record it");
    OverlayLabel hint = OverlayLabel::sized(text, m_display.frame.width - 2 * margin);
    OverlayLabel keys = OverlayLabel::sized(QStringLiteral("?"), m_display.frame.width, overlayText("Keys"));
    const double gap = 6;
    const double width = hint.frame.width() + gap + keys.frame.width();
    const double x = std::round((m_display.frame.width - width) / 2);
    hint.moveTo({x, hintTop});
    keys.moveTo({x + hint.frame.width() + gap, hintTop});
    // Nothing of ours on what is selected.
    const auto selected = m_isMovedExternally ? std::nullopt : m_area.rect();
    const QRectF frame = hint.frame | keys.frame;
    if (m_tool == ToolMode::area && selected && m_notice.isEmpty() &&
        frame.adjusted(-gap, -gap, gap, gap).intersects(toQt(*selected)))
        return;
    scene.labels.push_back(hint);
    scene.labels.push_back(keys);
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
    m_mouse = {snapped(event.position().x(), m_display.frame.width),
               snapped(event.position().y(), m_display.frame.height)};
    m_isMouseInside = true;
}

std::optional<ActionButtons::Kind> SelectionView::buttonAt(const Point &at) const {
    const AreaZone zone = m_area.areaZone(at);
    if (zone.is<AreaZone::CaptureButton>())
        return ActionButtons::Kind::capture;
    if (zone.is<AreaZone::RecordButton>())
        return ActionButtons::Kind::record;
    return std::nullopt;
}

void SelectionView::mousePressEvent(QMouseEvent *event) {
    note(*event);
    if (event->button() != Qt::LeftButton || isDragging())
        return;
    setNotice({});
    if (m_tool != ToolMode::area && !buttonAt(m_mouse)) {
        m_isPicking = true;
        return;
    }
    if (const auto button = buttonAt(m_mouse)) {
        m_buttons->pressed = button;
        refresh();
        return;
    }
    m_area.press(m_mouse);
    // What lies below may have changed since the last drag.
    m_loupePicture = {};
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
    if (m_buttons && event->buttons() == Qt::NoButton) {
        const auto hovered = buttonAt(m_mouse);
        if (m_buttons->hovered != hovered) {
            m_buttons->hovered = hovered;
            refresh();
        }
    }
    updateCursor();
    if (onPointerMoved)
        onPointerMoved();
}

void SelectionView::continueDrag(Qt::KeyboardModifiers modifiers) {
    const bool isMove = std::holds_alternative<Drag::Move>(m_area.drag()->kind);
    const bool isOutside = !contains(grown(m_area.bounds(), 0.5), m_mouse);
    if (isMove && onMoveSelection && (isOutside || m_isMovedExternally)) {
        m_isMovedExternally = isOutside;
        onMoveSelection(m_area.movedTo(m_mouse));
    }
    m_area.dragTo(m_mouse, {.keepsRatio = modifiers.testFlag(Qt::ShiftModifier),
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
    if (m_buttons && m_buttons->pressed) {
        const auto pressed = std::exchange(m_buttons->pressed, std::nullopt);
        refresh();
        if (pressed == buttonAt(m_mouse))
            accept(pressed == ActionButtons::Kind::record);
        return;
    }
    if (std::exchange(m_isPicking, false) && onPicked)
        onPicked(!event->modifiers().testFlag(Qt::ControlModifier));
}

void SelectionView::mouseDoubleClickEvent(QMouseEvent *event) {
    note(*event);
    const bool isInside = m_area.rect() && contains(*m_area.rect(), m_mouse) && !buttonAt(m_mouse);
    mousePressEvent(event);
    m_commitsOnRelease = m_tool == ToolMode::area && event->button() == Qt::LeftButton && isInside;
}

void SelectionView::endDrag() {
    const bool wasMove = std::holds_alternative<Drag::Move>(m_area.drag()->kind);
    m_area.release();
    if (std::exchange(m_isMovedExternally, false))
        m_area.setRect(std::nullopt);
    else if (m_tool == ToolMode::area && m_area.rect() && onSelectionKept)
        onSelectionKept(*m_area.rect());
    placeButtons();
    updateCursor();
    refresh();
    if (wasMove && onMoveEnded)
        onMoveEnded();
}

void SelectionView::placeButtons() {
    m_buttons.reset();
    m_area.captureButtonRect = m_area.recordButtonRect = std::nullopt;
    std::optional<Rect> beside;
    if (m_tool == ToolMode::area && m_area.rect() && !isDragging())
        beside = integral(*m_area.rect());
    else if (m_tool == ToolMode::window && m_desktopPicks)
        beside = Rect{m_area.bounds().width / 2, m_area.bounds().height / 2, 0, 0};
    if (beside) {
        m_buttons = ActionButtons::placed(*beside, m_area.bounds(), barFrame ? barFrame() : Rect());
        m_area.captureButtonRect = m_buttons->captureButton;
        m_area.recordButtonRect = m_buttons->recordButton;
    }
    QAccessibleEvent changed(this, QAccessible::ObjectReorder);
    QAccessible::updateAccessibility(&changed);
}

void SelectionView::updateCursor() {
    const auto shape = [this] {
        if (m_tool != ToolMode::area)
            return Qt::PointingHandCursor;
        const AreaZone zone = m_area.areaZone(m_mouse);
        if (isDragging())
            return cursor().shape();
        if (zone.is<AreaZone::CaptureButton>() || zone.is<AreaZone::RecordButton>())
            return Qt::PointingHandCursor;
        if (zone.is<AreaZone::Move>())
            return Qt::SizeAllCursor;
        if (const auto *resize = std::get_if<AreaZone::Resize>(&zone.kind))
            return resizeCursor(*resize, *m_area.rect());
        return Qt::CrossCursor;
    }();
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
    if (m_buttons && m_buttons->hovered) {
        m_buttons->hovered.reset();
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
    if (m_tool != ToolMode::area)
        return false;
    const bool isPress = event.type() == QEvent::KeyPress;
    const int key = event.key();
    if (isDragging()) {
        if (key == Qt::Key_Space && !event.isAutoRepeat())
            m_isSpaceHeld = isPress;
        Qt::KeyboardModifiers modifiers = event.modifiers();
        // A modifier's own event tells the modifiers as they were before it.
        if (key == Qt::Key_Shift)
            modifiers.setFlag(Qt::ShiftModifier, isPress);
        if (key == Qt::Key_Alt)
            modifiers.setFlag(Qt::AltModifier, isPress);
        continueDrag(modifiers);
        return true;
    }
    m_isSpaceHeld = false;
    const double step = event.modifiers().testFlag(Qt::ShiftModifier) ? 10 : 1;
    const double across = key == Qt::Key_Left ? -step : key == Qt::Key_Right ? step : 0;
    const double down = key == Qt::Key_Up ? -step : key == Qt::Key_Down ? step : 0;
    const bool isAll = key == Qt::Key_A && event.modifiers().testFlag(Qt::ControlModifier);
    if (across == 0 && down == 0 && !isAll)
        return false;
    if (!isPress) {
        // Kept when the key is let go: a held key repeats faster than settings should be written.
        if (!event.isAutoRepeat() && m_area.rect() && onSelectionKept)
            onSelectionKept(*m_area.rect());
        return true;
    }
    if (onSelectionBegan)
        onSelectionBegan();
    if (isAll)
        m_area.setRect(m_area.bounds());
    else if (!m_area.rect())
        m_area.selectMiddle();
    else if (event.modifiers().testFlag(Qt::AltModifier))
        m_area.stretchBy(across, down);
    else
        m_area.moveBy(across, down);
    placeButtons();
    refresh();
    return true;
}

} // namespace vantrell
