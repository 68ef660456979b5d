// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Support/JsonReader.h"

#include <string>

namespace vantrell {

/// A project that captures upload to.
struct TargetProject {
    std::string id;
    std::string name;

    bool operator==(const TargetProject &) const = default;

    /// Failures stay in the reader.
    static TargetProject decode(JsonReader &reader) { return {reader.string("id"), reader.string("name")}; }
    nlohmann::json toJson() const { return {{"id", id}, {"name", name}}; }
};

} // namespace vantrell
