// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Overlay/OverlayScene.h"

#include "Overlay/OverlayColours.h"
#include "Overlay/QtGeometry.h"
#include "Panels/FloatingPanel.h"
#include "Panels/Theme.h"

#include <QImage>
#include <QPainter>

#include <algorithm>
#include <cmath>

namespace vantrell {

namespace {

constexpr double lineWidth = 1.5;
constexpr double strongLineWidth = 3;
constexpr double handleRadius = 5;
/// What a handle takes with the shade around it.
constexpr double handleReach = handleRadius + 2;
/// Handles in the middle of shorter sides would touch those in the corners.
constexpr double shortSide = 40;

QRect scaledOutward(const QRect &rect, double factor) {
    const int left = int(std::floor(rect.x() * factor)), top = int(std::floor(rect.y() * factor));
    const int right = int(std::ceil((rect.x() + rect.width()) * factor));
    const int bottom = int(std::ceil((rect.y() + rect.height()) * factor));
    return {left, top, right - left, bottom - top};
}

QRegion scaledOutward(const QRegion &region, double factor) {
    if (factor == 1)
        return region;
    QRegion scaled;
    for (const QRect &rect : region)
        scaled += scaledOutward(rect, factor);
    return scaled;
}

} // namespace

QRegion pointsCovering(const QRegion &pixels, double scale) {
    return scaledOutward(pixels, 1 / scale);
}
QRegion pixelsCovering(const QRegion &points, double scale) {
    return scaledOutward(points, scale);
}

int OverlayScene::outlineWidth(double scale) const {
    return std::max(1, int(std::lround((isOutlineStrong ? strongLineWidth : lineWidth) * scale)));
}

/// With the shade, a pixel wide, on its outer side.
QRegion OverlayScene::outlineStrips(double scale) const {
    if (outline.isEmpty())
        return {};
    const int width = outlineWidth(scale) + 1;
    return QRegion(outline.adjusted(-width, -width, width, width)) - outline;
}

std::vector<QPointF> OverlayScene::handles(double scale) const {
    if (!hasHandles || outline.isEmpty())
        return {};
    const QRectF frame(outline.x() / scale, outline.y() / scale, outline.width() / scale,
                       outline.height() / scale);
    std::vector<QPointF> places{frame.topLeft(), frame.topRight(), frame.bottomLeft(), frame.bottomRight()};
    if (frame.width() >= shortSide)
        places.insert(places.end(),
                      {{frame.center().x(), frame.top()}, {frame.center().x(), frame.bottom()}});
    if (frame.height() >= shortSide)
        places.insert(places.end(),
                      {{frame.left(), frame.center().y()}, {frame.right(), frame.center().y()}});
    return places;
}

QRegion OverlayScene::chrome(double scale) const {
    QRegion region = pointsCovering(outlineStrips(scale), scale);
    const auto add = [&](const QRectF &frame) { region += frame.toAlignedRect().adjusted(-1, -1, 1, 1); };
    for (const QPointF &handle : handles(scale))
        add({handle.x() - handleReach, handle.y() - handleReach, 2 * handleReach, 2 * handleReach});
    for (const OverlayLabel &label : labels)
        add(label.frame);
    if (buttons)
        add(toQt(buttons->panel));
    if (loupe)
        add(loupe->frame);
    if (help)
        add(help->frame);
    return region;
}

QRegion OverlayScene::chromePixels(double scale) const {
    return pixelsCovering(chrome(scale), scale);
}

QRegion OverlayScene::changesFrom(const OverlayScene &before, double scale) const {
    if (*this == before)
        return {};
    const QRegion gaps = gap == before.gap ? QRegion() : QRegion((gap | before.gap).toAlignedRect());
    return pointsCovering(lit.xored(before.lit), scale) + chrome(scale) + before.chrome(scale) + gaps;
}

void OverlayScene::paint(QPainter &painter, const QRegion &part, const QImage &picture, double scale) const {
    const QRegion pixels = pixelsCovering(part, scale);
    painter.save();
    painter.scale(1 / scale, 1 / scale);
    painter.setCompositionMode(QPainter::CompositionMode_Source);
    if (picture.isNull()) {
        for (const QRect &rect : pixels - lit)
            painter.fillRect(rect, overlayColours::dimming);
        for (const QRect &rect : pixels &lit)
            painter.fillRect(rect, Qt::transparent);
    } else {
        for (const QRect &rect : pixels)
            painter.drawImage(rect.topLeft(), picture, rect);
        painter.setCompositionMode(QPainter::CompositionMode_SourceOver);
        for (const QRect &rect : pixels - lit)
            painter.fillRect(rect, overlayColours::dimming);
    }
    painter.restore();
    painter.save();
    painter.setClipRegion(part);
    for (const QRect &there : chromePixels(scale) & pixels)
        draw(painter, there, scale);
    if (!gap.isEmpty()) {
        painter.setRenderHint(QPainter::Antialiasing);
        painter.setCompositionMode(QPainter::CompositionMode_Clear);
        painter.setPen(Qt::NoPen);
        painter.setBrush(Qt::black);
        const double radius = FloatingPanel::Options().radius;
        painter.drawRoundedRect(gap, radius, radius);
    }
    painter.restore();
}

void OverlayScene::draw(QPainter &painter, const QRect &part, double scale) const {
    const QRectF shown = pointsCovering(part, scale).boundingRect();
    const auto isShown = [&](const QRectF &frame) { return frame.intersects(shown); };
    const Theme &theme = Theme::dark();
    painter.save();
    if (!outline.isEmpty()) {
        painter.save();
        painter.scale(1 / scale, 1 / scale);
        const int width = outlineWidth(scale);
        const QRegion strips = outlineStrips(scale);
        const QRegion line = QRegion(outline.adjusted(-width, -width, width, width)) - outline;
        for (const QRect &rect : (strips - line) & part)
            painter.fillRect(rect, overlayColours::outlineShade);
        for (const QRect &rect : line &part)
            painter.fillRect(rect, isOutlineStrong ? theme.accent : overlayColours::outline);
        painter.restore();
    }
    painter.setRenderHint(QPainter::Antialiasing);
    for (const QPointF &handle : handles(scale)) {
        if (!shown.adjusted(-handleReach, -handleReach, handleReach, handleReach).contains(handle))
            continue;
        painter.setPen(QPen(overlayColours::outlineShade, 1));
        painter.setBrush(overlayColours::outline);
        painter.drawEllipse(handle, handleRadius + 0.5, handleRadius + 0.5);
    }
    for (const OverlayLabel &label : labels)
        if (isShown(label.frame))
            label.draw(painter);
    if (buttons && isShown(toQt(buttons->panel)))
        buttons->draw(painter, scale);
    if (loupe && isShown(loupe->frame))
        loupe->draw(painter);
    if (help && isShown(help->frame))
        help->draw(painter);
    painter.restore();
}

} // namespace vantrell
