// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Overlay/LoupePixels.h"
#include "Overlay/OverlayCanvas.h"
#include "Overlay/OverlayContents.h"
#include "Overlay/SelectionOutcome.h"
#include "Overlay/WindowPicker.h"

#include <QImage>
#include <QWidget>

#include <functional>
#include <memory>
#include <optional>

class QKeyEvent;
class QScreen;

namespace vantrell {

/// The overlay on one display: dims what is not selected, shows the selection and turns what the pointer does
/// there into an outcome. Its window covers the display. Main thread.
class SelectionView : public QWidget {
public:
    /// With `isBlended` a compositor shows the screen through it; else it lies on the picture that it is
    /// given.
    SelectionView(const Display &display, QScreen *screen, bool isBlended);

    ~SelectionView() override;

    const Display &display() const { return m_contents.display; }
    /// The picture that it lies on: of the screen as it is now, and then parts of it that were taken anew,
    /// from that pixel of the display on.
    void freezeScreen();
    void setPicture(const QImage &picture, const QPoint &corner);
    /// None where the X server draws.
    QPaintEngine *paintEngine() const override { return m_hasServer ? nullptr : QWidget::paintEngine(); }
    /// Covers its screen.
    void present();
    void setTool(ToolMode tool);

    /// The bar has come, gone or moved: the buttons keep off it. Some compositors lay whatever is pressed
    /// above all else: there the bar is seen and met through a gap.
    void followBar();

    /// Takes it from the screen; it tells nobody anything any more.
    void dismiss();

    const AreaSelection &area() const { return m_contents.area; }
    /// Points from the display's corner; made to fit.
    void setSelection(const std::optional<Rect> &rect);
    /// Something for the keyboard to begin with.
    void selectMiddle();
    /// A selection that the pointer brings from another display.
    void showMovedSelection(const std::optional<Rect> &rect);
    /// Reports the selection, when there is one.
    void commitSelection(bool record);
    /// With every tool there is one thing to take on this display, or none: the selection, the lit window,
    /// the display itself. For who has no pointer.
    bool canAccept() const;
    void accept(bool record);

    /// The window tool leaves it to the desktop's own dialog which window it is.
    void setDesktopPicks(bool picks);
    /// The windows in the order of the desktop and which of them is lit.
    void setWindows(const WindowPicker &picker, const QImage &icon, const QRegion &visiblePart);
    /// The screen tool would take this display.
    void setLit(bool isLit);
    /// Instead of the hint; empty: the hint.
    void setNotice(const QString &notice);
    void setHelpShown(bool isShown);
    bool isHelpShown() const { return m_contents.isHelpShown; }

    /// A key for the selection; false when it is none of its.
    bool handleKey(const QKeyEvent &event);
    /// A picture of a part of the display for the loupe, from that pixel of the display on.
    void setLoupePicture(const QImage &picture, const QPoint &corner);
    std::optional<Point> pointer() const { return m_isMouseInside ? std::optional(m_mouse) : std::nullopt; }
    bool isDragging() const { return m_contents.isDragging(); }

    /// May destroy the view's owner: nothing of the view is used after it.
    std::function<void(SelectionOutcome)> onOutcome;
    std::function<void()> onSelectionBegan;
    /// The selection is being moved and the pointer has left the display: the selection without the bounds.
    std::function<void(Rect)> onMoveSelection;
    std::function<void()> onMoveEnded;
    /// A selection has been made or changed and is kept.
    std::function<void(Rect)> onSelectionKept;
    std::function<void()> onPointerMoved;
    /// A click picked what is lit.
    std::function<void(bool record)> onPicked;
    std::function<void(QKeyEvent &)> onKey;
    /// The loupe lacks this part of the display's pixels.
    std::function<void(QRect)> onPixelsWanted;
    /// The bar's place on this display, in points from its corner; empty: none.
    std::function<Rect()> barFrame;

protected:
    bool event(QEvent *event) override;
    void paintEvent(QPaintEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    void mouseDoubleClickEvent(QMouseEvent *event) override;
    void enterEvent(QEnterEvent *event) override;
    void leaveEvent(QEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void keyReleaseEvent(QKeyEvent *event) override;
    bool focusNextPrevChild(bool next) override;

private:
    void refresh();
    OverlayScene scene() const;
    void fetchLoupePixels(const Loupe &loupe);
    void updateCursor();
    void continueDrag(Qt::KeyboardModifiers modifiers);
    void endDrag();
    void placeButtons();
    void note(const QMouseEvent &event);
    /// Empty where the bar lies above.
    QRectF gapForBar() const;
    double scale() const { return m_contents.display.scale; }

    const bool m_isBlended;
    const bool m_hasServer;
    std::unique_ptr<OverlayCanvas> m_canvas;
    /// What it lies on where there is no server to keep it.
    QImage m_picture;
    OverlayContents m_contents;
    bool m_isDismissed = false;

    /// In points from the display's corner; whole, and on the edge when it touches the last pixel.
    Point m_mouse;
    bool m_isMouseInside = false;
    bool m_isSpaceHeld = false;
    /// A press that will pick when it is released.
    bool m_isPicking = false;
    bool m_commitsOnRelease = false;

    LoupePixels m_loupePixels;
    OverlayScene m_scene;
};

} // namespace vantrell
