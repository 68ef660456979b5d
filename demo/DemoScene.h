// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include <QElapsedTimer>
#include <QRasterWindow>
#include <QTimer>

class QPainter;

namespace vantrell {

/// Something worth recording on an empty virtual desktop: a window with a bouncing ball, a chart that grows
/// and the time in hundredths of a second. Animated at 60 Hz.
class DemoScene final : public QRasterWindow {
public:
    DemoScene();

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    void paintChart(QPainter &painter, const QRectF &area, double seconds) const;
    void paintBall(QPainter &painter, const QRectF &area, double seconds) const;

    QElapsedTimer m_elapsed;
    QTimer m_frame;
};

} // namespace vantrell
