// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Http/HttpResponse.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <string_view>

namespace vantrell {

namespace {

/// How far into a body a page's own tags are looked for.
constexpr std::size_t headBytes = 1024;

/// What only a page has; the harmless answers of storage servers are empty, text, JSON or XML.
constexpr std::array<std::string_view, 6> pageTags{"<!doctype html", "<html", "<head",
                                                   "<body",          "<meta", "<script"};

} // namespace

bool HttpResponse::isWebPage() const {
    std::string_view text = std::string_view(body).substr(0, headBytes);
    if (text.starts_with("\xef\xbb\xbf"))
        text.remove_prefix(3);
    text.remove_prefix(std::min(text.find_first_not_of(" \t\r\n"), text.size()));
    if (!text.starts_with('<'))
        return false;
    std::string lower(text);
    std::ranges::transform(lower, lower.begin(), [](unsigned char c) { return char(std::tolower(c)); });
    return std::ranges::any_of(pageTags, [&lower](std::string_view tag) { return lower.contains(tag); });
}

} // namespace vantrell
