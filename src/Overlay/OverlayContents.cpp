// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Overlay/OverlayContents.h"

#include "Overlay/OverlayText.h"
#include "Overlay/QtGeometry.h"
#include "Panels/PanelFont.h"
#include "Platform/DisplayLayout.h"

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

OverlayContents::OverlayContents(const Display &on) : display(on), area({on.frame.width, on.frame.height}) {}

std::optional<Rect> OverlayContents::shownSelection() const {
    return isMovedExternally ? std::nullopt : area.rect();
}

QRect OverlayContents::devicePixels(const Rect &rect) const {
    return toQt(inPixelsOf(display, rect)).translated(-display.pixels.x, -display.pixels.y);
}

void OverlayContents::placeButtons(const Rect &bar) {
    takeButtons();
    std::optional<Rect> beside;
    if (tool == ToolMode::area && area.rect() && !isDragging())
        beside = integral(*area.rect());
    else if (tool == ToolMode::window && desktopPicks)
        beside = Rect{area.bounds().width / 2, area.bounds().height / 2, 0, 0};
    if (!beside)
        return;
    buttons = ActionButtons::placed(*beside, area.bounds(), bar);
    area.captureButtonRect = buttons->captureButton;
    area.recordButtonRect = buttons->recordButton;
}

void OverlayContents::takeButtons() {
    buttons.reset();
    area.captureButtonRect = area.recordButtonRect = std::nullopt;
}

std::optional<ActionButtons::Kind> OverlayContents::buttonAt(const Point &at) const {
    const AreaZone zone = area.areaZone(at);
    if (zone.is<AreaZone::CaptureButton>())
        return ActionButtons::Kind::capture;
    if (zone.is<AreaZone::RecordButton>())
        return ActionButtons::Kind::record;
    return std::nullopt;
}

std::optional<Qt::CursorShape> OverlayContents::cursorAt(const Point &at) const {
    if (tool != ToolMode::area)
        return Qt::PointingHandCursor;
    if (isDragging())
        return std::nullopt;
    if (buttonAt(at))
        return Qt::PointingHandCursor;
    const AreaZone zone = area.areaZone(at);
    if (zone.is<AreaZone::Move>())
        return Qt::SizeAllCursor;
    if (const auto *resize = std::get_if<AreaZone::Resize>(&zone.kind))
        return resizeCursor(*resize, *area.rect());
    return Qt::CrossCursor;
}

OverlayScene OverlayContents::scene() const {
    OverlayScene scene;
    if (tool == ToolMode::area)
        addArea(scene);
    else if (tool == ToolMode::window)
        addWindow(scene);
    else
        addScreen(scene);
    addHints(scene);
    return scene;
}

void OverlayContents::addArea(OverlayScene &scene) const {
    const auto rect = shownSelection();
    if (!rect || rect->width <= 0 || rect->height <= 0)
        return;
    const Rect shown = integral(*rect);
    scene.outline = devicePixels(shown);
    scene.lit = scene.outline;
    const bool isDrawn = isDragging() && std::holds_alternative<Drag::Draw>(area.drag()->kind);
    scene.hasHandles = !isDrawn;
    scene.buttons = buttons;

    OverlayLabel size = OverlayLabel::sized(sizeText(scene.outline.size()), display.frame.width);
    const double above = shown.y - sizeGap - size.frame.height();
    const double x =
        std::clamp(shown.x, margin, std::max(margin, display.frame.width - size.frame.width() - margin));
    size.moveTo({above >= margin ? x : x + (shown.x < margin ? 0 : margin),
                 above >= margin ? above : std::max(margin, shown.y + margin)});
    scene.labels.push_back(size);
}

void OverlayContents::addWindow(OverlayScene &scene) const {
    if (desktopPicks)
        scene.buttons = buttons;
    if (!litWindow)
        return;
    scene.lit = litPart;
    const PixelRect &all = litWindow->pixels;
    const QRect whole = toQt(all).translated(-display.pixels.x, -display.pixels.y);
    const QRect seen = whole & wholeDisplay();
    if (seen.isEmpty())
        return;
    scene.outline = whole;
    scene.isOutlineStrong = true;
    // In the middle of what can be seen of it.
    const QRectF ground = QRectF(litPart.isEmpty() ? seen : litPart.boundingRect());
    const QString application = oneLine(QString::fromStdString(litWindow->applicationName.value_or("")));
    const QString title = oneLine(QString::fromStdString(litWindow->title.value_or("")));
    OverlayLabel name = OverlayLabel::sized(application.isEmpty() ? title : application,
                                            std::min(480.0, display.frame.width - 2 * margin),
                                            application.isEmpty() ? QString() : title, windowIcon);
    const double x = ground.center().x() / display.scale - name.frame.width() / 2;
    name.moveTo({std::round(std::clamp(x, margin,
                                       std::max(margin, display.frame.width - margin - name.frame.width()))),
                 std::round(ground.center().y() / display.scale - name.frame.height() / 2)});
    scene.labels.push_back(name);
}

void OverlayContents::addScreen(OverlayScene &scene) const {
    if (!isLit)
        return;
    const QRect whole = wholeDisplay();
    scene.lit = whole;
    scene.isOutlineStrong = true;
    const int inset = int(std::lround(4 * display.scale));
    scene.outline = whole.adjusted(inset, inset, -inset, -inset);
    OverlayLabel name =
        OverlayLabel::sized(oneLine(QString::fromStdString(display.name)), display.frame.width - 2 * margin,
                            sizeText({display.pixels.width, display.pixels.height}));
    name.moveTo({std::round((display.frame.width - name.frame.width()) / 2),
                 std::round((display.frame.height - name.frame.height()) / 2)});
    scene.labels.push_back(name);
}

QString OverlayContents::hint() const {
    if (!notice.isEmpty())
        return notice;
    if (tool == ToolMode::area)
        return overlayText("Drag anywhere to select an area");
    if (tool == ToolMode::screen)
        return overlayText("Click a screen to record it");
    if (desktopPicks)
        return overlayText("Click, then choose a window in the desktop's dialog");
    return hasWindows ? overlayText("Click a window to record it")
                      : overlayText("There is no window to record");
}

void OverlayContents::addHints(OverlayScene &scene) const {
    if (isDragging())
        return;
    if (isHelpShown) {
        scene.help = KeysHelp::of(tool);
        scene.help->moveTo({std::round((display.frame.width - scene.help->frame.width()) / 2), hintTop});
        return;
    }
    OverlayLabel words = OverlayLabel::sized(hint(), display.frame.width - 2 * margin);
    OverlayLabel keys = OverlayLabel::sized(QStringLiteral("?"), display.frame.width, overlayText("Keys"));
    const double gap = 6;
    const double width = words.frame.width() + gap + keys.frame.width();
    const double x = std::round((display.frame.width - width) / 2);
    words.moveTo({x, hintTop});
    keys.moveTo({x + words.frame.width() + gap, hintTop});
    // Nothing of ours on what is selected.
    const auto selected = shownSelection();
    const QRectF frame = words.frame | keys.frame;
    if (tool == ToolMode::area && selected && notice.isEmpty() &&
        frame.adjusted(-gap, -gap, gap, gap).intersects(toQt(*selected)))
        return;
    scene.labels.push_back(words);
    scene.labels.push_back(keys);
}

} // namespace vantrell
