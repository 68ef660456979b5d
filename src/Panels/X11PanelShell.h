// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Panels/PanelShell.h"

namespace vantrell {

/// X11: windows out of a window manager's reach, which take the input focus themselves. Also where there is
/// no desktop at all. Main thread.
class X11PanelShell final : public PanelShell {
public:
    Qt::WindowFlags flags(Role role) const override;
    void adopt(QWidget &window, Role role, QWidget *owner) override;
    bool placesWindows() const override { return true; }
    bool keepsOutOfPictures() const override { return true; }
    bool knowsPointer() const override { return true; }
    bool canFade() const override;
    QRect room(const QScreen &screen) const override;
    void raise(QWidget &window) override;
    void setShape(QWidget &window, const QRegion &visible, const QRegion &touchable) override;
    bool lendKeyboard(QWidget &) override { return false; }
    void takeKeyboardBack(QWidget &) override {}
    bool beginDrag(QWidget &) override { return false; }
    std::optional<QPoint> dragged(const QWidget &, const Drag &drag) override {
        return drag.windowAtPress + drag.now - drag.pressed;
    }
    void sync() override;
};

} // namespace vantrell
