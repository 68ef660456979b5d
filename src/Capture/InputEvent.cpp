// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Capture/InputEvent.h"

#include "Support/Spellings.h"

namespace vantrell {

namespace {

using Kind = InputEvent::Kind;

constexpr Spellings<Kind, 5> kinds{{{
    {Kind::down, "down"},
    {Kind::up, "up"},
    {Kind::scroll, "scroll"},
    {Kind::move, "move"},
    {Kind::exit, "exit"},
}}};

} // namespace

std::string_view spelling(Kind kind) {
    return kinds.of(kind);
}

std::optional<Kind> inputEventKind(std::string_view text) {
    return kinds.find(text);
}

} // namespace vantrell
