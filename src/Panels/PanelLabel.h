// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include <QFont>
#include <QString>
#include <QWidget>

#include <functional>
#include <optional>

namespace vantrell {

struct Theme;

/// A line of text on a panel, which assistive technology reads. Digits are equally wide. Lets the pointer
/// through. Main thread.
class PanelLabel : public QWidget {
public:
    using Ink = std::function<QColor(const Theme &)>;

    /// `ink` picks the colour of the theme; the text's without one.
    explicit PanelLabel(const QFont &font, Ink ink = {}, QWidget *parent = nullptr);

    void setText(const QString &text);
    const QString &text() const { return m_text; }
    QSize sizeHint() const override;
    QSize minimumSizeHint() const override { return sizeHint(); }

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    const QFont m_font;
    const Ink m_ink;
    QString m_text;
};

} // namespace vantrell
