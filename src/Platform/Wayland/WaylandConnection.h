// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string_view>

#include <wayland-client.h>

namespace vantrell {

/// A connection of its own to the session's compositor, for what is asked once. One that hangs or crashes
/// takes nobody with it. Thread-bound; what was made on it is destroyed before.
class WaylandConnection {
public:
    /// Told of each thing that the compositor has, within `roundTrip`.
    using Found = std::function<void(wl_registry *registry, std::uint32_t name, std::string_view interface,
                                     std::uint32_t version)>;

    explicit WaylandConnection(Found found);
    ~WaylandConnection();
    WaylandConnection(const WaylandConnection &) = delete;
    WaylandConnection &operator=(const WaylandConnection &) = delete;

    /// Returns when the compositor has answered all that was asked; false when it is gone, or does not answer
    /// within four seconds.
    bool roundTrip();

private:
    struct Close {
        void operator()(wl_display *display) const { wl_display_disconnect(display); }
    };

    const Found m_found;
    const std::unique_ptr<wl_display, Close> m_display;
    wl_registry *m_registry = nullptr;
};

} // namespace vantrell
