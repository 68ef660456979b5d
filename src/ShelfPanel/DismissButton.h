// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Panels/PanelButton.h"

namespace vantrell {

/// The round button over a card's corner. It is there for keys and assistive technology at all times, and
/// drawn while the pointer or the keyboard is at its card.
class DismissButton final : public PanelButton {
public:
    static constexpr int diameter = 22;

    explicit DismissButton(QWidget *card);

    void setShown(bool shown);
    bool isShown() const { return m_isShown; }

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    bool m_isShown = false;
};

} // namespace vantrell
