// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include <QDeadlineTimer>
#include <QRect>
#include <QString>

#include <map>
#include <optional>

class QScreen;

namespace vantrell {

/// What Plasma's own panels leave of the screens. They are no layer surfaces in every version: windows keep
/// clear of them, other layers are not told. Main thread.
class PlasmaRooms {
public:
    /// None where that cannot be told. Waits for the answer, which takes a millisecond; of one that hangs
    /// what it has told before is taken for a while.
    std::optional<QRect> of(const QScreen &screen);

private:
    QDeadlineTimer m_pause;
    /// By the screen's name.
    std::map<QString, std::optional<QRect>> m_known;
};

} // namespace vantrell
