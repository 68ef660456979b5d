// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Panels/PanelShape.h"

#include <QImage>
#include <QLinearGradient>
#include <QPainter>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <vector>

namespace vantrell {

namespace {

constexpr double shadowStrength = 0.42;
constexpr double shadowDrop = 7;
constexpr double shadowBlur = 9;

/// Averages each byte with its `reach` neighbours on both sides, over lines that are `step` bytes apart.
void averageLine(std::uint8_t *line, int count, qsizetype step, int reach, std::vector<std::uint8_t> &copy) {
    copy.resize(std::size_t(count));
    for (int i = 0; i < count; ++i)
        copy[std::size_t(i)] = line[i * step];
    const auto at = [&](int i) { return i < 0 || i >= count ? 0 : int(copy[std::size_t(i)]); };
    int sum = 0;
    for (int i = -reach; i <= reach; ++i)
        sum += at(i);
    for (int i = 0; i < count; ++i) {
        line[i * step] = std::uint8_t(sum / (2 * reach + 1));
        sum += at(i + reach + 1) - at(i - reach);
    }
}

/// Three averages one after another are very nearly the bell curve.
void blur(QImage &alpha, int reach) {
    std::vector<std::uint8_t> copy;
    for (int pass = 0; pass < 3; ++pass) {
        for (int y = 0; y < alpha.height(); ++y)
            averageLine(alpha.scanLine(y), alpha.width(), 1, reach, copy);
        for (int x = 0; x < alpha.width(); ++x)
            averageLine(alpha.bits() + x, alpha.height(), alpha.bytesPerLine(), reach, copy);
    }
}

} // namespace

QPainterPath roundedPath(const QRectF &rect, double radius) {
    const double room = std::min(rect.width(), rect.height()) / 2;
    QPainterPath path;
    path.addRoundedRect(rect, std::min(radius, room), std::min(radius, room));
    return path;
}

void drawShadow(QPainter &painter, const QSize &window, const QRectF &form, double radius, double scale) {
    // Blurred coarsely: nothing in a shadow is sharp.
    const double coarse = scale / 2;
    QImage alpha(QSize(int(std::ceil(window.width() * coarse)), int(std::ceil(window.height() * coarse))),
                 QImage::Format_Alpha8);
    alpha.fill(0);
    {
        QPainter inner(&alpha);
        inner.setRenderHint(QPainter::Antialiasing);
        inner.scale(coarse, coarse);
        inner.fillPath(roundedPath(form.translated(0, shadowDrop), radius), Qt::black);
    }
    blur(alpha, std::max(1, int(std::lround(shadowBlur * coarse))));
    QImage shadow(alpha.size(), QImage::Format_ARGB32_Premultiplied);
    for (int y = 0; y < alpha.height(); ++y) {
        const std::uint8_t *from = alpha.constScanLine(y);
        auto *to = reinterpret_cast<QRgb *>(shadow.scanLine(y));
        for (int x = 0; x < alpha.width(); ++x)
            to[x] = qRgba(0, 0, 0, int(from[x] * shadowStrength));
    }
    painter.save();
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    painter.drawImage(QRectF(QPointF(0, 0), QSizeF(alpha.size()) / coarse), shadow);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setCompositionMode(QPainter::CompositionMode_DestinationOut);
    painter.fillPath(roundedPath(form, radius), Qt::black);
    painter.restore();
}

QPixmap PanelShape::picture(const Theme &theme, bool isBlended) const {
    QPixmap picture(QSize(int(std::ceil(window.width() * scale)), int(std::ceil(window.height() * scale))));
    picture.setDevicePixelRatio(scale);
    picture.fill(Qt::transparent);
    QPainter painter(&picture);
    painter.setRenderHint(QPainter::Antialiasing);
    QColor ground = theme.panel;
    if (isBlended) {
        drawShadow(painter, window, panel, radius, scale);
        painter.fillPath(roundedPath(panel, radius), ground);
    } else {
        ground.setAlpha(255);
        // The window's shape cuts it; at odd scales an edge of its own would be half transparent.
        painter.fillRect(QRectF(QPointF(0, 0), QSizeF(window)), ground);
    }
    const bool isStrong = theme.hairline.alpha() == 255;
    const double width = isStrong ? 1.5 : std::max(1.0, std::floor(scale)) / scale;
    QBrush line(theme.hairline);
    if (!theme.isLight && !isStrong) {
        QLinearGradient fromAbove(panel.topLeft(), panel.bottomLeft());
        QColor below = theme.hairline;
        below.setAlphaF(below.alphaF() * 0.35F);
        fromAbove.setColorAt(0, theme.hairline);
        fromAbove.setColorAt(std::min(1.0, 14 / std::max(1.0, panel.height())), below);
        line = fromAbove;
    }
    painter.setPen(QPen(line, width));
    painter.drawPath(
        roundedPath(panel.adjusted(width / 2, width / 2, -width / 2, -width / 2), radius - width / 2));
    return picture;
}

QRegion PanelShape::region() const {
    const QRectF pixels(panel.topLeft() * scale, panel.size() * scale);
    const double corner = std::min(radius * scale, std::min(pixels.width(), pixels.height()) / 2);
    QRegion region;
    const int top = int(std::lround(pixels.top()));
    const int bottom = int(std::lround(pixels.bottom()));
    for (int y = top; y < bottom; ++y) {
        // How far the round corner stands back in the middle of this line.
        const double into = std::min(y + 0.5 - pixels.top(), pixels.bottom() - y - 0.5);
        const double up = std::max(0.0, corner - into);
        const double back = corner - std::sqrt(std::max(0.0, corner * corner - up * up));
        const int left = int(std::lround(pixels.left() + back));
        const int right = int(std::lround(pixels.right() - back));
        region += QRect(left, y, std::max(0, right - left), 1);
    }
    return region;
}

} // namespace vantrell
