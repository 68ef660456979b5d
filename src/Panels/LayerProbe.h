// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include <QSize>

class QScreen;

namespace vantrell {

class WaylandLink;

/// How much of the screen the desktop's own panels leave, in points; the whole of it where that cannot be
/// told. Asks the compositor with a surface that shows nothing. Main thread.
QSize probeRoom(WaylandLink &link, const QScreen &screen);

} // namespace vantrell
