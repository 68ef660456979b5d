// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Support/Observers.h"

#include <QPoint>
#include <QRect>
#include <QRegion>
#include <Qt>

#include <functional>
#include <optional>
#include <utility>

class QScreen;
class QWidget;

namespace vantrell {

/// How this session's desktop takes the windows of the panels: who places them, what of them the pointer
/// meets, and how they come to the keyboard. X11 leaves all of it to the application; a Wayland compositor
/// does as well where it has the layer shell, and else treats them as ordinary windows. Main thread.
class PanelShell {
public:
    enum class Role {
        /// Lies above other windows, without the keyboard.
        panel = 1,
        /// Covers its screen.
        overlay,
        /// Opened by a panel; goes when the user turns to something else.
        menu,
        /// A word about a panel, which the pointer does not meet.
        tip,
    };

    /// Before the application object is made: how Qt shall treat windows that the shell takes care of.
    static void prepare();
    /// The one of this process; made when it is first asked for.
    static PanelShell &instance();
    virtual ~PanelShell() = default;
    PanelShell(const PanelShell &) = delete;
    PanelShell &operator=(const PanelShell &) = delete;

    /// What a window of that kind is made with.
    virtual Qt::WindowFlags flags(Role role) const = 0;
    /// Before the window is shown for the first time. `owner` is the panel that a menu or a tip belongs to.
    virtual void adopt(QWidget &window, Role role, QWidget *owner = nullptr) = 0;
    /// Where the panels are ordinary windows to the desktop, it keeps the one above the other from now on.
    virtual void attach(QWidget &, QWidget &) {}
    /// Windows lie where the application puts them; else the desktop chooses.
    virtual bool placesWindows() const = 0;
    /// Windows of this process can be left out of pictures.
    virtual bool keepsOutOfPictures() const = 0;
    /// The pointer's place is known wherever it is.
    virtual bool knowsPointer() const = 0;
    /// A window's opacity can be changed while it is shown.
    virtual bool canFade() const = 0;
    /// Where on the screen nothing of the desktop's own lies, in Qt's coordinates.
    virtual QRect room(const QScreen &screen) const = 0;
    /// Above the other panels.
    virtual void raise(QWidget &window) = 0;
    /// What of the window there is at all, and what of it the pointer meets, in the device's pixels from its
    /// corner; an empty region: everything.
    virtual void setShape(QWidget &window, const QRegion &visible, const QRegion &touchable) = 0;

    /// The desktop gives the window the keyboard until it is taken back; false where windows take the input
    /// focus themselves. The last borrower has it, and after it the one before.
    virtual bool lendKeyboard(QWidget &window) = 0;
    virtual void takeKeyboardBack(QWidget &window) = 0;

    /// The desktop moves the window with the pointer that has been pressed in it; false where the application
    /// does.
    virtual bool beginDrag(QWidget &window) = 0;
    /// A window that is dragged, by the places that the desktop has told of the pointer: on the desktop as Qt
    /// counts them, and in the window.
    struct Drag {
        QPoint windowAtPress;
        QPoint pressed;
        QPoint pressedInside;
        QPoint now;
        QPoint nowInside;
    };
    /// Where its corner belongs; none while that cannot be told.
    virtual std::optional<QPoint> dragged(const QWidget &window, const Drag &drag) = 0;
    /// Returns when the desktop has done all that was asked for.
    virtual void sync() = 0;

    /// What of the desktop is being recorded with everything on it, in Qt's coordinates: no panel lies there
    /// until it is empty again. Nothing where windows are kept out of pictures, or have no place to be told.
    void setInPicture(const QRegion &region);
    bool mayLieAt(const QRect &frame) const { return !m_inPicture.intersects(frame); }
    /// Some place is recorded, and what lies there cannot be told.
    bool isPictureBlind() const { return !m_inPicture.isEmpty() && !placesWindows(); }
    [[nodiscard]] Observation observePicture(std::function<void()> changed) {
        return m_picture.observe(std::move(changed));
    }

protected:
    PanelShell() = default;

private:
    QRegion m_inPicture;
    Observers m_picture;
};

} // namespace vantrell
