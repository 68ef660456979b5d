// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Analytics/AnalyticsEvent.h"

namespace vantrell {

nlohmann::json AnalyticsEvent::encode() const {
    nlohmann::json encoded = nlohmann::json::object();
    for (const auto &[key, value] : props)
        encoded[key] = value.encode();
    return {{"id", id}, {"name", name}, {"props", std::move(encoded)}};
}

std::expected<AnalyticsEvent, JsonError> AnalyticsEvent::decode(const nlohmann::json &json) {
    JsonReader reader(json);
    AnalyticsEvent event{reader.string("id"), reader.string("name"), {}};
    const nlohmann::json &props = reader.object("props");
    if (reader.error())
        return std::unexpected(*reader.error());
    for (const auto &[key, value] : props.items()) {
        auto decoded = AnalyticsValue::decode(value, reader.pathTo("props") + "." + key);
        if (!decoded)
            return std::unexpected(decoded.error());
        event.props.emplace(key, std::move(*decoded));
    }
    return event;
}

} // namespace vantrell
