// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include <QIcon>

namespace vantrell {

// The icons of the tray, in the colours of the desktop's theme. Main thread.

/// `StatusBarLogo`: artwork in a box of 757 x 828 units, drawn 16 high.
QIcon logoStatusIcon();
/// A red circle with a stop sign.
QIcon recordingStatusIcon();
/// A circle with an arrow upwards.
QIcon uploadingStatusIcon();

} // namespace vantrell
