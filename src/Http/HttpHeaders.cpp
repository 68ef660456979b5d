// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Http/HttpHeaders.h"

#include <algorithm>

namespace vantrell {

namespace {

char lowered(char c) {
    return c >= 'A' && c <= 'Z' ? char(c - 'A' + 'a') : c;
}

} // namespace

std::optional<std::string> HttpHeaders::find(std::string_view name) const {
    const auto found = std::ranges::find_if(m_fields, [name](const Field &field) {
        return std::ranges::equal(field.name, name, {}, lowered, lowered);
    });
    if (found == m_fields.end())
        return std::nullopt;
    return found->value;
}

} // namespace vantrell
