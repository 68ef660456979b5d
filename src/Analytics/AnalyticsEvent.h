// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Analytics/AnalyticsValue.h"

#include <expected>
#include <map>
#include <string>

namespace vantrell {

using AnalyticsProps = std::map<std::string, AnalyticsValue>;

/// One usage event. It holds no titles, paths or keys.
struct AnalyticsEvent {
    /// A random UUID in lower case: the service counts an event that comes twice once.
    std::string id;
    std::string name;
    AnalyticsProps props;

    nlohmann::json encode() const;
    static std::expected<AnalyticsEvent, JsonError> decode(const nlohmann::json &json);

    bool operator==(const AnalyticsEvent &) const = default;
};

} // namespace vantrell
