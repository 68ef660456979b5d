// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include <QWidget>

namespace vantrell {

/// How loud the microphone is: a row of narrow bars, lit as far as the level reaches, the last one in part.
/// Main thread.
class LevelMeter : public QWidget {
public:
    explicit LevelMeter(const QString &label, QWidget *parent = nullptr);

    /// 0...1, the largest sample.
    void setLevel(double level);
    double level() const { return m_level; }
    QSize sizeHint() const override;

    static constexpr int barCount = 6;

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    double m_level = 0;
    /// In steps of a bar.
    int m_lit = 0;
};

} // namespace vantrell
