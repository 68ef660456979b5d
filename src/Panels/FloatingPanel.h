// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Panels/DesktopLink.h"
#include "Panels/PanelShape.h"
#include "Panels/PanelShell.h"
#include "Panels/Theme.h"

#include <QPixmap>
#include <QRect>
#include <QWidget>

#include <functional>
#include <optional>

class QScreen;

namespace vantrell {

/// A window of the application that floats above all others: without a frame, rounded, with one soft shadow
/// where a compositor blends it and a shaped window without one where none does. It never takes the keyboard
/// from the application that is worked with, and is marked as ours, so that recordings leave it out.
///
/// The widget is larger than the panel by `shadowMargin` on every side, also where no shadow is drawn; lay
/// children out inside `panelRect`. The pointer meets the panel only. Main thread.
class FloatingPanel : public QWidget {
public:
    struct Options {
        /// Half the height: a capsule.
        double radius = 14;
        /// The user may drag the panel by any place that is no control.
        bool isMovable = true;
        /// Draws the panel's own shape; else the subclass draws all.
        bool drawsPanel = true;
        PanelShell::Role role = PanelShell::Role::panel;
    };
    explicit FloatingPanel(Options options);
    ~FloatingPanel() override;

    /// Shown above everything without taking the focus; again above everything when it was shown already.
    void showPanel();
    /// Above the other panels.
    void raisePanel() { PanelShell::instance().raise(*this); }
    const Theme &theme() const { return Theme::of(m_onLightBackdrop); }
    void setOnLightBackdrop(bool light);
    QRect panelRect() const;
    int shadowMargin() const { return panelShadowReach; }
    /// Sizes the window so that the panel's own part is that large; its corner stays.
    void resizePanel(const QSize &size);
    /// The panel's own part at `topLeft` of the desktop, in Qt's coordinates; moved inside the screen's
    /// available part. False where that would be in a picture: then it stays where it is.
    bool placePanel(const QPoint &topLeft);
    /// With the shadow it would lie in no picture there.
    bool mayLieAt(const QPoint &topLeft) const;
    /// The panel's own part on the desktop, in Qt's coordinates.
    QRect panelFrame() const;
    /// A compositor blends the panel: what is drawn may be translucent.
    bool isBlended() const { return DesktopLink::instance().isComposited(); }

    /// The user has put it elsewhere: the panel's own part, in Qt's coordinates.
    std::function<void(QRect)> onMoved;
    /// It has another place or size, was shown or hidden, by whomever.
    std::function<void()> onPlaced;

protected:
    bool event(QEvent *event) override;
    void paintEvent(QPaintEvent *event) override;
    void showEvent(QShowEvent *event) override;
    void hideEvent(QHideEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    void changeEvent(QEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;

    /// Another theme, another compositor.
    virtual void appearanceChanged() {}

private:
    struct Drag {
        PanelShell::Drag places;
        bool isMoving = false;
    };

    PanelShape shape() const;
    void shapeWindow();
    void redraw();
    void stayOnScreen();
    void fadeIn();

    const Options m_options;
    bool m_onLightBackdrop = false;
    std::optional<Drag> m_drag;
    QPixmap m_picture;
    Observation m_compositing;
    Observation m_cover;
};

/// The screen that holds the point, or is nearest to it.
QScreen *screenAt(const QPoint &point);
/// Marks a window as the application's own, which captures leave out; for windows that are no FloatingPanel.
void markAsOwnWindow(QWidget &window);

} // namespace vantrell
