// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "API/ClientVersion.h"

namespace vantrell {

namespace {

std::optional<std::string> given(const char *text) {
    return text && *text ? std::optional<std::string>(text) : std::nullopt;
}

} // namespace

std::string composeClientVersion(const std::optional<std::string> &version,
                                 const std::optional<std::string> &build) {
    return version.value_or("0") + "+" + build.value_or("0");
}

const std::string &clientVersion() {
    static const std::string version =
        composeClientVersion(given(VANTRELL_VERSION), given(VANTRELL_BUILD_NUMBER));
    return version;
}

} // namespace vantrell
