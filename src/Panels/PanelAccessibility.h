// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

namespace vantrell {

/// Tells assistive technology what the panels' controls are: buttons that open menus, and how loud the
/// microphone is. Once a process; further calls do nothing. Main thread.
void installPanelAccessibility();

} // namespace vantrell
