// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Platform/HotKeyBackend.h"

#include <string>

namespace vantrell {

/// What the key writes when it is held with Shift, by its X name ("ampersand"), as the first layout of the
/// session's keyboard has it; empty where there is no keyboard. Over a connection of its own; blocks for some
/// milliseconds.
std::string shiftedSymbol(HotKeyBackend::Key key);

} // namespace vantrell
