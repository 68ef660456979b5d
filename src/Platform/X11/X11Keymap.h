// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Platform/X11/X11Connection.h"

#include <cstdint>
#include <map>
#include <string>
#include <vector>

namespace vantrell {

/// What a keyboard map says of places and modifiers, as far as key combinations need it.
class X11Keymap {
public:
    /// Asks the server; what it does not tell is as on most keyboards.
    static X11Keymap read(const X11Connection &connection);

    /// The code of the key at a place by its name in the keyboard map, such as "AE07" for the seventh of the
    /// digits' row; zero when the keyboard has none.
    xcb_keycode_t codeAt(const std::string &place) const;

    /// The modifier that the Super keys set.
    std::uint16_t superMask() const { return m_superMask; }

    /// Every state that the locks (capitals, numbers, scrolling) can be in, none of them included.
    std::vector<std::uint16_t> lockStates() const;

    bool operator==(const X11Keymap &) const = default;

private:
    void readPlaces(const X11Connection &connection);
    void readModifiers(const X11Connection &connection);

    std::map<std::string, xcb_keycode_t> m_places;
    std::uint16_t m_superMask = XCB_MOD_MASK_4;
    std::uint16_t m_lockMask = XCB_MOD_MASK_LOCK;
};

} // namespace vantrell
