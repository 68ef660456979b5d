// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Analytics/AnalyticsValue.h"

#include <cmath>
#include <limits>

namespace vantrell {

nlohmann::json AnalyticsValue::encode() const {
    return std::visit(
        [](const auto &value) -> nlohmann::json {
            if constexpr (std::is_same_v<std::decay_t<decltype(value)>, double>) {
                if (!std::isfinite(value))
                    return std::to_string(value);
            }
            return value;
        },
        m_value);
}

std::expected<AnalyticsValue, JsonError> AnalyticsValue::decode(const nlohmann::json &json,
                                                                const std::string &key) {
    if (json.is_boolean())
        return json.get<bool>();
    const bool tooLarge = json.is_number_unsigned() &&
                          json.get<std::uint64_t>() > std::uint64_t(std::numeric_limits<std::int64_t>::max());
    if (json.is_number_integer() && !tooLarge)
        return json.get<std::int64_t>();
    if (json.is_number())
        return json.get<double>();
    if (json.is_string())
        return json.get<std::string>();
    return std::unexpected(JsonError{key + " is " + json.type_name() + ", not a plain value"});
}

} // namespace vantrell
