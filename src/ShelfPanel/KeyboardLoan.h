// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Panels/DesktopLink.h"

#include <QWidget>

#include <optional>

namespace vantrell {

/// A panel's keyboard for as long as the user wants it: taken from the window that has it, and given back to
/// that. Main thread.
class KeyboardLoan {
public:
    /// The panel outlives the loan.
    explicit KeyboardLoan(QWidget &panel) : m_panel(panel) {}

    /// The panel is on the screen.
    void take();
    void giveBack();
    /// The user has turned to another window, which has the keyboard already.
    void forget();
    bool isTaken() const { return m_lender.has_value(); }

private:
    QWidget &m_panel;
    std::optional<DesktopLink::WindowId> m_lender;
    /// By the desktop, not taken from another window.
    bool m_isLent = false;
};

} // namespace vantrell
