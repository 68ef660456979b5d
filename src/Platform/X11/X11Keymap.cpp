// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Platform/X11/X11Keymap.h"

#include "Platform/X11/XcbXkb.h"

#include <algorithm>
#include <string_view>

namespace vantrell {

namespace {

constexpr xcb_keysym_t numLock = 0xff7f;
constexpr xcb_keysym_t scrollLock = 0xff14;
constexpr xcb_keysym_t superLeft = 0xffeb;
constexpr xcb_keysym_t superRight = 0xffec;

/// The digits' row where a server has no names for keys: all keyboards of PCs number it so.
const std::map<std::string, xcb_keycode_t> usualPlaces{{"AE07", 16}, {"AE08", 17}, {"AE09", 18}};

} // namespace

X11Keymap X11Keymap::read(const X11Connection &connection) {
    X11Keymap map;
    map.readPlaces(connection);
    map.readModifiers(connection);
    return map;
}

xcb_keycode_t X11Keymap::codeAt(const std::string &place) const {
    const auto found = m_places.find(place);
    return found == m_places.end() ? xcb_keycode_t(0) : found->second;
}

std::vector<std::uint16_t> X11Keymap::lockStates() const {
    std::vector<std::uint16_t> states;
    // Counts through the subsets of the mask's bits.
    std::uint16_t state = 0;
    do {
        states.push_back(state);
        state = std::uint16_t((state - m_lockMask) & m_lockMask);
    } while (state != 0);
    return states;
}

void X11Keymap::readPlaces(const X11Connection &connection) {
    xcb_connection_t *xcb = connection.xcb();
    m_places = usualPlaces;
    const xcb_query_extension_reply_t *extension = xcb_get_extension_data(xcb, &xcb_xkb_id);
    if (!extension || !extension->present)
        return;
    const auto reply =
        xcbReply(xcb, xcb_xkb_get_names(xcb, XCB_XKB_ID_USE_CORE_KBD, XCB_XKB_NAME_DETAIL_KEY_NAMES),
                 xcb_xkb_get_names_reply);
    if (!reply)
        return;
    xcb_xkb_get_names_value_list_t lists{};
    xcb_xkb_get_names_value_list_unpack(
        xcb_xkb_get_names_value_list(reply.get()), reply->nTypes, reply->indicators, reply->virtualMods,
        reply->groupNames, reply->nKeys, reply->nKeyAliases, reply->nRadioGroups, reply->which, &lists);
    if (!lists.keyNames || reply->nKeys == 0)
        return;
    m_places.clear();
    for (int i = 0; i < reply->nKeys; ++i) {
        const std::string_view padded(lists.keyNames[i].name, sizeof lists.keyNames[i].name);
        const std::string name(padded.substr(0, padded.find('\0')));
        // Only what is asked for: the rest may change without any change for us.
        if (usualPlaces.contains(name))
            m_places.emplace(name, xcb_keycode_t(reply->firstKey + i));
    }
}

void X11Keymap::readModifiers(const X11Connection &connection) {
    xcb_connection_t *xcb = connection.xcb();
    const xcb_setup_t &setup = *xcb_get_setup(xcb);
    const auto symbolsCookie = xcb_get_keyboard_mapping(
        xcb, setup.min_keycode, std::uint8_t(setup.max_keycode - setup.min_keycode + 1));
    const auto modifiers = xcbReply(xcb, xcb_get_modifier_mapping(xcb), xcb_get_modifier_mapping_reply);
    const auto symbols = xcbReply(xcb, symbolsCookie, xcb_get_keyboard_mapping_reply);
    if (!modifiers || !symbols)
        return;
    const xcb_keysym_t *all = xcb_get_keyboard_mapping_keysyms(symbols.get());
    const int perKey = symbols->keysyms_per_keycode;
    const auto writes = [&](xcb_keycode_t code, xcb_keysym_t first, xcb_keysym_t second) {
        if (code < setup.min_keycode || code > setup.max_keycode)
            return false;
        const xcb_keysym_t *own = all + std::ptrdiff_t(code - setup.min_keycode) * perKey;
        return std::any_of(own, own + perKey,
                           [&](xcb_keysym_t symbol) { return symbol == first || symbol == second; });
    };
    const xcb_keycode_t *codes = xcb_get_modifier_mapping_keycodes(modifiers.get());
    const int perModifier = modifiers->keycodes_per_modifier;
    std::uint16_t superMask = 0;
    for (int modifier = XCB_MAP_INDEX_1; modifier <= XCB_MAP_INDEX_5; ++modifier) {
        for (int i = 0; i < perModifier; ++i) {
            const xcb_keycode_t code = codes[modifier * perModifier + i];
            if (writes(code, numLock, scrollLock))
                m_lockMask |= std::uint16_t(1u << modifier);
            if (superMask == 0 && writes(code, superLeft, superRight))
                superMask = std::uint16_t(1u << modifier);
        }
    }
    if (superMask != 0)
        m_superMask = superMask;
    // A map that gives both to one modifier: the combination rules.
    m_lockMask &= std::uint16_t(~m_superMask);
}

} // namespace vantrell
