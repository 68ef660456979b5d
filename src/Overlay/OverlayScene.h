// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Overlay/ActionButtons.h"
#include "Overlay/KeysHelp.h"
#include "Overlay/Loupe.h"
#include "Overlay/OverlayLabel.h"

#include <QRegion>

#include <optional>
#include <vector>

class QImage;
class QPainter;

namespace vantrell {

/// All that the overlay shows on one display at a moment: compared with the one before, it tells which strips
/// have to be painted. A value type.
struct OverlayScene {
    /// What is not dimmed, in the display's pixels.
    QRegion lit;
    /// The line around it lies outside of it, so that it covers nothing of what is selected. In the display's
    /// pixels; empty: none.
    QRect outline;
    /// In the accent's colour, and inside where the display ends.
    bool isOutlineStrong = false;
    bool hasHandles = false;
    std::vector<OverlayLabel> labels;
    std::optional<ActionButtons> buttons;
    std::optional<Loupe> loupe;
    std::optional<KeysHelp> help;
    /// Nothing is drawn on the capture bar, which may lie below. In points; empty: there is none.
    QRectF gap;

    bool operator==(const OverlayScene &) const = default;

    /// What has to be painted again after `before`, in the view's points.
    QRegion changesFrom(const OverlayScene &before, double scale) const;
    /// Where more than the dimming is drawn, in the display's pixels.
    QRegion chromePixels(double scale) const;
    /// All but the dimming, in the painter's points; at least what lies in that part of the display's pixels.
    void draw(QPainter &painter, const QRect &part, double scale) const;
    /// The whole of it, the dimming too, in that part of the view: what was there is replaced. It lies on the
    /// picture of the display, or on what the compositor shows through it when that is null. In points.
    void paint(QPainter &painter, const QRegion &part, const QImage &picture, double scale) const;

private:
    QRegion chrome(double scale) const;
    QRegion outlineStrips(double scale) const;
    std::vector<QPointF> handles(double scale) const;
    int outlineWidth(double scale) const;
};

/// The smallest region of points that covers a region of pixels, and the other way round.
QRegion pointsCovering(const QRegion &pixels, double scale);
QRegion pixelsCovering(const QRegion &points, double scale);

} // namespace vantrell
