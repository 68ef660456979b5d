// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Http/HttpResponse.h"

#include <algorithm>
#include <cctype>
#include <string_view>

namespace vantrell {

namespace {

bool startsWith(std::string_view text, std::string_view lowerPrefix) {
    return text.size() >= lowerPrefix.size() &&
           std::ranges::equal(text.substr(0, lowerPrefix.size()), lowerPrefix,
                              [](unsigned char c, char wanted) { return std::tolower(c) == wanted; });
}

} // namespace

bool HttpResponse::isWebPage() const {
    const auto type = headers.find("Content-Type");
    if (type && (startsWith(*type, "text/html") || startsWith(*type, "application/xhtml")))
        return true;
    const std::size_t start = body.find_first_not_of(" \t\r\n");
    const std::string_view text = start == std::string::npos ? "" : std::string_view(body).substr(start);
    return startsWith(text, "<!doctype html") || startsWith(text, "<html");
}

} // namespace vantrell
