// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include <QDeadlineTimer>
#include <QRect>

#include <optional>

class QScreen;

namespace vantrell {

/// What Plasma's own panels leave of the screens. They are no layer surfaces in every version: windows keep
/// clear of them, other layers are not told. Main thread.
class PlasmaRooms {
public:
    /// None where that cannot be told. Waits for the answer, which takes a millisecond, and asks one that
    /// hangs no more for a while.
    std::optional<QRect> of(const QScreen &screen);

private:
    QDeadlineTimer m_pause;
};

} // namespace vantrell
