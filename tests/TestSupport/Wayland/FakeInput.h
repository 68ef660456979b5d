// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Support/Geometry.h"

#include <cstdint>
#include <memory>

namespace vantrell::testing {

/// A pointer and a keyboard of a wlroots compositor, moved by a test: they are the seat's for as long as this
/// lives. WAYLAND_DISPLAY names the compositor. Each call returns when the compositor has taken it.
class FakeInput {
public:
    /// All outputs together are so large, in points.
    explicit FakeInput(PixelSize desktop);
    ~FakeInput();
    FakeInput(const FakeInput &) = delete;
    FakeInput &operator=(const FakeInput &) = delete;

    void move(int x, int y);
    void press();
    void release();
    void click(int x, int y);
    /// By the kernel's number of the key (KEY_ENTER), on a keyboard of the United States.
    void key(std::uint32_t code);

private:
    struct Devices;
    std::unique_ptr<Devices> m_devices;
};

} // namespace vantrell::testing
