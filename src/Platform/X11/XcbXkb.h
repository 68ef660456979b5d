// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

// A field in there is named like a keyword of C++.
#define explicit explicit_
#include <xcb/xkb.h>
#undef explicit
