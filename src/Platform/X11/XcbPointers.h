// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include <xcb/xcb.h>

#include <cstdlib>
#include <memory>

namespace vantrell {

/// What xcb hands out and wants to have freed: replies, events, errors.
struct XcbFree {
    void operator()(void *memory) const { std::free(memory); }
};

template <typename T>
using XcbPointer = std::unique_ptr<T, XcbFree>;

} // namespace vantrell
