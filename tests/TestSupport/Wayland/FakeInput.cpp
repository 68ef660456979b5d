// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "TestSupport/Wayland/FakeInput.h"

#include "Support/UniqueFd.h"

#include <cstdlib>
#include <cstring>
#include <stdexcept>
#include <string>

#include <linux/input-event-codes.h>
#include <sys/mman.h>
#include <time.h>
#include <unistd.h>
#include <wayland-client.h>
#include <xkbcommon/xkbcommon.h>

namespace vantrell::testing {

namespace {

// The parts of two protocols that are used here; no package has them.
extern const wl_interface pointerInterface;
extern const wl_interface keyboardInterface;
const wl_interface *const none[6]{};
const wl_interface *const pointerTypes[]{&wl_seat_interface, &pointerInterface};
const wl_interface *const keyboardTypes[]{&wl_seat_interface, &keyboardInterface};
const wl_message pointerManagerRequests[]{
    {"create_virtual_pointer", "?on", const_cast<const wl_interface **>(pointerTypes)}};
const wl_message pointerRequests[]{{"motion", "uff", const_cast<const wl_interface **>(none)},
                                   {"motion_absolute", "uuuuu", const_cast<const wl_interface **>(none)},
                                   {"button", "uuu", const_cast<const wl_interface **>(none)},
                                   {"axis", "uuf", const_cast<const wl_interface **>(none)},
                                   {"frame", "", const_cast<const wl_interface **>(none)}};
const wl_message keyboardManagerRequests[]{
    {"create_virtual_keyboard", "on", const_cast<const wl_interface **>(keyboardTypes)}};
const wl_message keyboardRequests[]{{"keymap", "uhu", const_cast<const wl_interface **>(none)},
                                    {"key", "uuu", const_cast<const wl_interface **>(none)},
                                    {"modifiers", "uuuu", const_cast<const wl_interface **>(none)}};
const wl_interface pointerManagerInterface{
    "zwlr_virtual_pointer_manager_v1", 1, 1, pointerManagerRequests, 0, nullptr};
const wl_interface keyboardManagerInterface{"zwp_virtual_keyboard_manager_v1", 1, 1,
                                            keyboardManagerRequests,           0, nullptr};
const wl_interface pointerInterface{"zwlr_virtual_pointer_v1", 1, 5, pointerRequests, 0, nullptr};
const wl_interface keyboardInterface{"zwp_virtual_keyboard_v1", 1, 3, keyboardRequests, 0, nullptr};

enum PointerRequest { absoluteMotion = 1, button = 2, frame = 4 };
enum KeyboardRequest { keymap = 0, keyChange = 1 };

std::uint32_t milliseconds() {
    timespec now{};
    ::clock_gettime(CLOCK_MONOTONIC, &now);
    return std::uint32_t(now.tv_sec * 1000 + now.tv_nsec / 1'000'000);
}

} // namespace

struct FakeInput::Devices {
    explicit Devices(PixelSize all) : desktop(all), display(wl_display_connect(nullptr)) {
        if (!display)
            throw std::runtime_error("fake input: no compositor");
        static constexpr wl_registry_listener globals{found, [](void *, wl_registry *, std::uint32_t) {}};
        wl_registry_add_listener(wl_display_get_registry(display), &globals, this);
        wl_display_roundtrip(display);
        if (!seat || !pointers || !keyboards)
            throw std::runtime_error("fake input: the compositor takes none");
        pointer = wl_proxy_marshal_flags(pointers, 0, &pointerInterface, 1, 0, seat, nullptr);
        keyboard = wl_proxy_marshal_flags(keyboards, 0, &keyboardInterface, 1, 0, seat, nullptr);
        sendKeymap();
    }
    ~Devices() { wl_display_disconnect(display); }

    static void found(void *self, wl_registry *registry, std::uint32_t name, const char *interface,
                      std::uint32_t) {
        auto &devices = *static_cast<Devices *>(self);
        const auto bind = [&](const wl_interface &wanted) {
            return static_cast<wl_proxy *>(wl_registry_bind(registry, name, &wanted, 1));
        };
        if (std::strcmp(interface, wl_seat_interface.name) == 0)
            devices.seat = bind(wl_seat_interface);
        else if (std::strcmp(interface, pointerManagerInterface.name) == 0)
            devices.pointers = bind(pointerManagerInterface);
        else if (std::strcmp(interface, keyboardManagerInterface.name) == 0)
            devices.keyboards = bind(keyboardManagerInterface);
    }

    void sendKeymap() {
        xkb_context *context = xkb_context_new(XKB_CONTEXT_NO_FLAGS);
        const xkb_rule_names us{nullptr, nullptr, "us", nullptr, nullptr};
        xkb_keymap *map = xkb_keymap_new_from_names(context, &us, XKB_KEYMAP_COMPILE_NO_FLAGS);
        char *text = xkb_keymap_get_as_string(map, XKB_KEYMAP_FORMAT_TEXT_V1);
        const std::string copy(text);
        std::free(text);
        xkb_keymap_unref(map);
        xkb_context_unref(context);
        const UniqueFd memory(::memfd_create("keymap", MFD_CLOEXEC));
        if (::write(memory.get(), copy.c_str(), copy.size() + 1) < 0)
            throw std::runtime_error("fake input: no memory for the keymap");
        wl_proxy_marshal_flags(keyboard, keymap, nullptr, 1, 0,
                               std::uint32_t(WL_KEYBOARD_KEYMAP_FORMAT_XKB_V1), memory.get(),
                               std::uint32_t(copy.size() + 1));
        wl_display_roundtrip(display);
    }

    template <typename... Arguments>
    void point(PointerRequest request, Arguments... arguments) {
        wl_proxy_marshal_flags(pointer, request, nullptr, 1, 0, milliseconds(), arguments...);
        wl_proxy_marshal_flags(pointer, frame, nullptr, 1, 0);
        wl_display_roundtrip(display);
    }

    const PixelSize desktop;
    wl_display *display;
    wl_proxy *seat = nullptr, *pointers = nullptr, *keyboards = nullptr;
    wl_proxy *pointer = nullptr, *keyboard = nullptr;
};

FakeInput::FakeInput(PixelSize desktop) : m_devices(std::make_unique<Devices>(desktop)) {}

FakeInput::~FakeInput() = default;

void FakeInput::move(int x, int y) {
    m_devices->point(absoluteMotion, std::uint32_t(x), std::uint32_t(y),
                     std::uint32_t(m_devices->desktop.width), std::uint32_t(m_devices->desktop.height));
}

void FakeInput::press() {
    m_devices->point(button, std::uint32_t(BTN_LEFT), 1u);
}

void FakeInput::release() {
    m_devices->point(button, std::uint32_t(BTN_LEFT), 0u);
}

void FakeInput::click(int x, int y) {
    move(x, y);
    press();
    release();
}

void FakeInput::key(std::uint32_t code) {
    for (const std::uint32_t state : {1u, 0u}) {
        wl_proxy_marshal_flags(m_devices->keyboard, keyChange, nullptr, 1, 0, milliseconds(), code, state);
        wl_display_roundtrip(m_devices->display);
    }
}

} // namespace vantrell::testing
