// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include <initializer_list>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace vantrell {

/// Header fields in the order in which they came or are to be sent. Names compare without regard to case.
class HttpHeaders {
public:
    struct Field {
        std::string name;
        std::string value;
    };

    HttpHeaders() = default;
    HttpHeaders(std::initializer_list<Field> fields) : m_fields(fields) {}

    void add(std::string name, std::string value) { m_fields.push_back({std::move(name), std::move(value)}); }
    /// The first field of that name.
    std::optional<std::string> find(std::string_view name) const;
    const std::vector<Field> &fields() const { return m_fields; }
    void clear() { m_fields.clear(); }

private:
    std::vector<Field> m_fields;
};

} // namespace vantrell
