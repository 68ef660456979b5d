// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Panels/PillPanel.h"

#include "Panels/PanelFont.h"

#include <QScreen>

#include <algorithm>

namespace vantrell {

namespace {

constexpr int pillHeight = 28;
constexpr int pillPadding = 12;
constexpr int pillDistance = 6;

} // namespace

PillPanel::PillPanel(PanelShell::Role role)
    : FloatingPanel({.radius = pillHeight / 2.0, .isMovable = false, .role = role}),
      m_label(new PanelLabel(panelFont(secondLineSize), {}, this)) {}

void PillPanel::setText(const QString &text) {
    m_label->setText(text);
    const QSize needed = m_label->sizeHint();
    resizePanel({needed.width() + 2 * pillPadding, std::max(pillHeight, needed.height() + 8)});
    m_label->setGeometry(panelRect().adjusted(pillPadding, 0, -pillPadding, 0));
}

void PillPanel::showBelow(const QRect &frame) {
    const int height = panelRect().height();
    const int below = frame.bottom() + 1 + pillDistance;
    const bool fits = below + height <= PanelShell::instance().room(*screenAt(frame.center())).bottom() + 1;
    showAt(frame, fits ? below : frame.top() - pillDistance - height);
}

void PillPanel::showAbove(const QRect &frame) {
    const int above = frame.top() - pillDistance - panelRect().height();
    const bool fits = above >= PanelShell::instance().room(*screenAt(frame.center())).top();
    showAt(frame, fits ? above : frame.bottom() + 1 + pillDistance);
}

void PillPanel::showAt(const QRect &frame, int top) {
    if (placePanel({frame.center().x() - panelRect().width() / 2, top}))
        showPanel();
    else
        hide();
}

} // namespace vantrell
