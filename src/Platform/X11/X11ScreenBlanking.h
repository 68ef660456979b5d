// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Platform/X11/X11Connection.h"

#include <memory>

namespace vantrell {

/// The blanking that an X server does by itself where no desktop looks after it: the server's own saver and
/// the display's power saving. Main thread; a server that cannot be asked blanks as ever.
class X11ScreenBlanking {
public:
    /// Ends with the object, or with the program in whatever way.
    void suspend(bool suspended);

private:
    /// Present while it is suspended: the server lets go what a connection asked for when that ends.
    std::unique_ptr<X11Connection> m_x11;
};

} // namespace vantrell
