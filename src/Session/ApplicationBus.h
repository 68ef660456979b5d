// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

namespace vantrell::applicationBus {

// How a running application is found and spoken to on the session bus: its name, its object and the
// interface of its own. docs/dbus.md tells users what it can do.

inline constexpr char name[] = "app.vantrell.Capture";
inline constexpr char path[] = "/app/vantrell/Capture";
inline constexpr char interface[] = "app.vantrell.Capture";
inline constexpr char standardInterface[] = "org.freedesktop.Application";

inline constexpr char failed[] = "app.vantrell.Capture.Error.Failed";
inline constexpr char notConnected[] = "app.vantrell.Capture.Error.NotConnected";
/// It has only just been started: ask again.
inline constexpr char starting[] = "app.vantrell.Capture.Error.Starting";

} // namespace vantrell::applicationBus
