// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

namespace vantrell {

/// Tells assistive technology what the overlay is: a group with the two buttons of its selection, which are
/// drawn and no widgets. Once a process; further calls do nothing. Main thread.
void installOverlayAccessibility();

} // namespace vantrell
