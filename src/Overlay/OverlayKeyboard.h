// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Panels/DesktopLink.h"

#include <QMetaObject>
#include <QPointer>
#include <QTimer>
#include <QWidget>

namespace vantrell {

/// The keyboard while the overlay is up: its windows, which no window manager manages, take the input focus
/// and give it back to the window that had it.
///
/// The focus and not a grab: a grab would keep lockers from locking and hot keys from being heard, and here
/// nothing has to be set free when the process dies. Main thread.
class OverlayKeyboard {
public:
    OverlayKeyboard();
    ~OverlayKeyboard();
    OverlayKeyboard(const OverlayKeyboard &) = delete;
    OverlayKeyboard &operator=(const OverlayKeyboard &) = delete;

    /// `window` is on the screen. Called again, another of our windows takes it over.
    void take(QWidget &window);
    /// To the window that had it; not when the user has given it to another application's window meanwhile.
    void giveBack();

private:
    void takeAgain();

    QPointer<QWidget> m_holder;
    DesktopLink::WindowId m_before = 0;
    bool m_isTaken = false;
    int m_timesTaken = 0;
    QTimer m_again;
    QMetaObject::Connection m_focusChanges;
};

} // namespace vantrell
