// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Platform/Wayland/XdgOutput.h"

#include <array>
#include <cstdint>

namespace vantrell {

namespace {

constexpr std::uint32_t getXdgOutput = 1;

const wl_interface *const noTypes[] = {nullptr, nullptr};
const wl_interface *const getTypes[] = {&xdgOutputInterface, &wl_output_interface};

// libwayland takes them as they are and never writes.
template <std::size_t N>
const wl_interface **types(const wl_interface *const (&list)[N]) {
    return const_cast<const wl_interface **>(list);
}

const std::array managerRequests{
    wl_message{"destroy", "", types(noTypes)},
    wl_message{"get_xdg_output", "no", types(getTypes)},
};
const std::array outputRequests{wl_message{"destroy", "", types(noTypes)}};
const std::array logicalOutputEvents{
    wl_message{"logical_position", "ii", types(noTypes)},
    wl_message{"logical_size", "ii", types(noTypes)},
    wl_message{"done", "", types(noTypes)},
    wl_message{"name", "2s", types(noTypes)},
    wl_message{"description", "2s", types(noTypes)},
};

} // namespace

const wl_interface xdgOutputManagerInterface{"zxdg_output_manager_v1", 3, int(managerRequests.size()),
                                             managerRequests.data(),   0, nullptr};
const wl_interface xdgOutputInterface{"zxdg_output_v1",
                                      3,
                                      int(outputRequests.size()),
                                      outputRequests.data(),
                                      int(logicalOutputEvents.size()),
                                      logicalOutputEvents.data()};

wl_proxy *xdgOutputOf(wl_proxy *manager, wl_output *output, const XdgOutputEvents &events, void *data) {
    wl_proxy *made = wl_proxy_marshal_flags(manager, getXdgOutput, &xdgOutputInterface,
                                            wl_proxy_get_version(manager), 0, nullptr, output);
    // A table of functions to libwayland, which calls each as the protocol says.
    auto *table = reinterpret_cast<void (**)()>(const_cast<XdgOutputEvents *>(&events));
    if (made)
        wl_proxy_add_listener(made, table, data);
    return made;
}

} // namespace vantrell
