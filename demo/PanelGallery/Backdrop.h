// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include <QWidget>

namespace vantrell::gallery {

/// What lies behind the panels: a dark or a light desktop with a window on it, over the whole screen.
class Backdrop final : public QWidget {
public:
    explicit Backdrop(bool isLight);

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    const bool m_isLight;
};

} // namespace vantrell::gallery
