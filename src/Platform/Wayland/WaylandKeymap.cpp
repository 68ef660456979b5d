// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Platform/Wayland/WaylandKeymap.h"

#include "Platform/Wayland/WaylandConnection.h"
#include "Support/UniqueFd.h"

#include <array>
#include <cstring>
#include <memory>

#include <sys/mman.h>
#include <xkbcommon/xkbcommon.h>

namespace vantrell {

namespace {

template <auto Destroy>
struct Destroyed {
    template <typename T>
    void operator()(T *object) const {
        Destroy(object);
    }
};
using Keymap = std::unique_ptr<xkb_keymap, Destroyed<xkb_keymap_unref>>;

Keymap readKeymap(int fd, std::uint32_t size) {
    const std::unique_ptr<xkb_context, Destroyed<xkb_context_unref>> context(
        xkb_context_new(XKB_CONTEXT_NO_FLAGS));
    void *const text = ::mmap(nullptr, size, PROT_READ, MAP_PRIVATE, fd, 0);
    if (!context || text == MAP_FAILED)
        return nullptr;
    Keymap keymap(xkb_keymap_new_from_buffer(context.get(), static_cast<const char *>(text),
                                             ::strnlen(static_cast<const char *>(text), size),
                                             XKB_KEYMAP_FORMAT_TEXT_V1, XKB_KEYMAP_COMPILE_NO_FLAGS));
    ::munmap(text, size);
    return keymap;
}

const wl_keyboard_listener keyboardEvents{
    .keymap =
        [](void *keymap, wl_keyboard *, std::uint32_t format, std::int32_t fd, std::uint32_t size) {
            const UniqueFd owned(fd);
            if (format == WL_KEYBOARD_KEYMAP_FORMAT_XKB_V1)
                *static_cast<Keymap *>(keymap) = readKeymap(fd, size);
        },
    .enter = [](void *, wl_keyboard *, std::uint32_t, wl_surface *, wl_array *) {},
    .leave = [](void *, wl_keyboard *, std::uint32_t, wl_surface *) {},
    .key = [](void *, wl_keyboard *, std::uint32_t, std::uint32_t, std::uint32_t, std::uint32_t) {},
    .modifiers = [](void *, wl_keyboard *, std::uint32_t, std::uint32_t, std::uint32_t, std::uint32_t,
                    std::uint32_t) {},
    .repeat_info = [](void *, wl_keyboard *, std::int32_t, std::int32_t) {},
};

const wl_seat_listener seatEvents{
    .capabilities =
        [](void *keymap, wl_seat *seat, std::uint32_t capabilities) {
            if (capabilities & WL_SEAT_CAPABILITY_KEYBOARD)
                wl_keyboard_add_listener(wl_seat_get_keyboard(seat), &keyboardEvents, keymap);
        },
    .name = [](void *, wl_seat *, const char *) {},
};

/// The first, the second and the third round trip tell of the seat, its keyboard and the keymap.
Keymap sessionKeymap() {
    Keymap keymap;
    WaylandConnection connection(
        [&keymap](wl_registry *registry, std::uint32_t name, std::string_view interface, std::uint32_t) {
            if (interface == wl_seat_interface.name)
                wl_seat_add_listener(
                    static_cast<wl_seat *>(wl_registry_bind(registry, name, &wl_seat_interface, 1)),
                    &seatEvents, &keymap);
        });
    for (int trip = 0; trip < 3 && connection.roundTrip(); ++trip) {
    }
    return keymap;
}

/// The kernel's numbers of the keys, counted as X does.
xkb_keycode_t keycodeOf(HotKeyBackend::Key key) {
    constexpr xkb_keycode_t digit7 = 8 + 8;
    return digit7 + xkb_keycode_t(int(key) - int(HotKeyBackend::Key::digit7));
}

} // namespace

std::string shiftedSymbol(HotKeyBackend::Key key) {
    const Keymap keymap = sessionKeymap();
    const xkb_keysym_t *symbols = nullptr;
    constexpr xkb_layout_index_t firstLayout = 0;
    constexpr xkb_level_index_t withShift = 1;
    if (!keymap ||
        xkb_keymap_key_get_syms_by_level(keymap.get(), keycodeOf(key), firstLayout, withShift, &symbols) != 1)
        return {};
    std::array<char, 64> name{};
    const int length = xkb_keysym_get_name(symbols[0], name.data(), name.size());
    return length > 0 && std::size_t(length) < name.size() ? std::string(name.data(), std::size_t(length))
                                                           : std::string();
}

} // namespace vantrell
