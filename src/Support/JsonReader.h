// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include <nlohmann/json.hpp>

#include <cstdint>
#include <expected>
#include <optional>
#include <string>
#include <string_view>

namespace vantrell {

/// Why a JSON text was refused, for the log: which key, what was wanted, what was found.
struct JsonError {
    std::string message;
};

/// Parses a text; the failure says where it breaks off.
std::expected<nlohmann::json, JsonError> parseJson(std::string_view text);

/// Strict reading of one JSON object: a float is no integer, a number is no string, and a required key must
/// be there. Unknown keys are ignored. The first failure is kept and later reads return empty values, so a
/// record is read field by field and checked once at the end with `error`.
class JsonReader {
public:
    /// `json` must outlive the reader. `path` names the object in failures ("main.upload").
    explicit JsonReader(const nlohmann::json &json, std::string path = {});

    std::string string(const char *key);
    std::int64_t integer(const char *key);
    double number(const char *key);
    bool boolean(const char *key);
    std::optional<std::string> optionalString(const char *key);
    std::optional<std::int64_t> optionalInteger(const char *key);
    std::optional<double> optionalNumber(const char *key);
    std::optional<bool> optionalBoolean(const char *key);

    /// The value behind a required key, or null JSON after a failure.
    const nlohmann::json &value(const char *key);
    const nlohmann::json &object(const char *key);
    const nlohmann::json &array(const char *key);
    /// None when the key is missing or null.
    const nlohmann::json *optionalObject(const char *key);

    /// The object's name with the key behind it, for readers of nested objects.
    std::string pathTo(const char *key) const;

    /// Records a failure that the caller found (a string with no known meaning, say).
    void fail(const char *key, const std::string &problem);
    /// Takes over the failure of a nested reader.
    void adopt(const JsonReader &nested);

    const std::optional<JsonError> &error() const { return m_error; }

private:
    const nlohmann::json *find(const char *key);
    const nlohmann::json *require(const char *key);
    template <typename T>
    std::optional<T> read(const nlohmann::json *value, const char *key);

    const nlohmann::json &m_json;
    std::string m_path;
    std::optional<JsonError> m_error;
};

} // namespace vantrell
