// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

namespace vantrell {

/// Tells assistive technology that the shelf is a list and its cards are the items. Once a process; further
/// calls do nothing. Main thread.
void installShelfAccessibility();

} // namespace vantrell
