// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include <algorithm>
#include <array>
#include <optional>
#include <string_view>
#include <utility>

namespace vantrell {

/// How the values of an enumeration are spelled in files and on the wire; all of them are listed.
template <typename Enum, std::size_t count>
struct Spellings {
    std::array<std::pair<Enum, std::string_view>, count> all;

    constexpr std::string_view of(Enum value) const {
        return std::ranges::find(all, value, &std::pair<Enum, std::string_view>::first)->second;
    }
    /// None when the text is none of the spellings.
    constexpr std::optional<Enum> find(std::string_view text) const {
        const auto found = std::ranges::find(all, text, &std::pair<Enum, std::string_view>::second);
        return found == all.end() ? std::nullopt : std::optional(found->first);
    }
};

} // namespace vantrell
