// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "ShelfPanel/KeyboardLoan.h"

#include "Panels/PanelShell.h"

#include <QWindow>

#include <utility>

namespace vantrell {

void KeyboardLoan::take() {
    if (m_lender)
        return;
    m_lender = DesktopLink::instance().focusedWindow();
    m_isLent = PanelShell::instance().lendKeyboard(m_panel);
    if (m_isLent)
        return;
    m_panel.windowHandle()->setFlag(Qt::WindowDoesNotAcceptFocus, false);
    DesktopLink::instance().focus(DesktopLink::WindowId(m_panel.winId()));
}

void KeyboardLoan::giveBack() {
    const auto lender = m_lender;
    forget();
    if (lender)
        DesktopLink::instance().focus(*lender);
}

void KeyboardLoan::forget() {
    if (!std::exchange(m_lender, {}))
        return;
    if (std::exchange(m_isLent, false))
        PanelShell::instance().takeKeyboardBack(m_panel);
    else
        m_panel.windowHandle()->setFlag(Qt::WindowDoesNotAcceptFocus, true);
}

} // namespace vantrell
