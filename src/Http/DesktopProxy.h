// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include <string>

namespace vantrell {

/// The proxy by which the desktop's settings (GNOME's, KDE's, a script's) say that an address is reached, as
/// libcurl takes it; empty for none. A script may have to be fetched and run: blocks, at most as long as a
/// call on the session bus may take. Worker threads.
std::string desktopProxyFor(const std::string &url);

/// The environment names a proxy for such addresses. It then decides alone, as it does for other programs.
bool environmentHasProxyFor(const std::string &url);

} // namespace vantrell
