// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Support/JsonReader.h"

#include <cstdint>
#include <expected>
#include <string>
#include <variant>

namespace vantrell {

/// A property of a usage event: text, a whole number, a fraction or a truth value. In JSON the bare value.
class AnalyticsValue {
public:
    AnalyticsValue(std::string value) : m_value(std::move(value)) {}
    AnalyticsValue(const char *value) : m_value(std::string(value)) {}
    AnalyticsValue(std::int64_t value) : m_value(value) {}
    AnalyticsValue(int value) : m_value(std::int64_t(value)) {}
    AnalyticsValue(double value) : m_value(value) {}
    AnalyticsValue(bool value) : m_value(value) {}

    /// JSON has no infinities: such a fraction becomes text.
    nlohmann::json encode() const;
    /// `key` names the value in the failure.
    static std::expected<AnalyticsValue, JsonError> decode(const nlohmann::json &json,
                                                           const std::string &key);

    bool operator==(const AnalyticsValue &) const = default;

private:
    std::variant<std::string, std::int64_t, double, bool> m_value;
};

} // namespace vantrell
