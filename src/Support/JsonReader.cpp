// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Support/JsonReader.h"

#include <limits>

namespace vantrell {

namespace {

const nlohmann::json nullJson;

template <typename T>
bool holds(const nlohmann::json &value) {
    if constexpr (std::is_same_v<T, std::string>)
        return value.is_string();
    else if constexpr (std::is_same_v<T, bool>)
        return value.is_boolean();
    else if constexpr (std::is_same_v<T, std::int64_t>)
        return value.is_number_integer() &&
               (!value.is_number_unsigned() ||
                value.get<std::uint64_t>() <= std::uint64_t(std::numeric_limits<std::int64_t>::max()));
    else
        return value.is_number();
}

template <typename T>
const char *nameOf() {
    if constexpr (std::is_same_v<T, std::string>)
        return "a string";
    else if constexpr (std::is_same_v<T, bool>)
        return "a boolean";
    else if constexpr (std::is_same_v<T, std::int64_t>)
        return "an integer";
    else
        return "a number";
}

} // namespace

std::expected<nlohmann::json, JsonError> parseJson(std::string_view text) {
    try {
        return nlohmann::json::parse(text);
    } catch (const nlohmann::json::parse_error &error) {
        // The library's text quotes the input, which may hold a secret: say only where it breaks off.
        return std::unexpected(JsonError{"not JSON (at byte " + std::to_string(error.byte) + ")"});
    } catch (const nlohmann::json::exception &) {
        // The grammar allows numbers that no machine holds.
        return std::unexpected(JsonError{"not JSON (a number is out of range)"});
    }
}

JsonReader::JsonReader(const nlohmann::json &json, std::string path) : m_json(json), m_path(std::move(path)) {
    if (!m_json.is_object())
        m_error = JsonError{(m_path.empty() ? std::string("the document") : m_path) + " is " +
                            m_json.type_name() + ", not an object"};
}

std::string JsonReader::pathTo(const char *key) const {
    return m_path.empty() ? key : m_path + "." + key;
}

void JsonReader::fail(const char *key, const std::string &problem) {
    if (!m_error)
        m_error = JsonError{pathTo(key) + " " + problem};
}

void JsonReader::adopt(const JsonReader &nested) {
    if (!m_error)
        m_error = nested.m_error;
}

const nlohmann::json *JsonReader::find(const char *key) {
    if (m_error)
        return nullptr;
    const auto found = m_json.find(key);
    return found == m_json.end() || found->is_null() ? nullptr : &*found;
}

const nlohmann::json *JsonReader::require(const char *key) {
    const nlohmann::json *value = find(key);
    if (!value)
        fail(key, "is missing");
    return value;
}

template <typename T>
std::optional<T> JsonReader::read(const nlohmann::json *value, const char *key) {
    if (!value)
        return std::nullopt;
    if (!holds<T>(*value)) {
        fail(key, std::string("is ") + (value->is_number_float() ? "a float" : value->type_name()) +
                      ", not " + nameOf<T>());
        return std::nullopt;
    }
    return value->get<T>();
}

std::string JsonReader::string(const char *key) {
    return read<std::string>(require(key), key).value_or(std::string());
}
std::int64_t JsonReader::integer(const char *key) {
    return read<std::int64_t>(require(key), key).value_or(0);
}
double JsonReader::number(const char *key) {
    return read<double>(require(key), key).value_or(0);
}
bool JsonReader::boolean(const char *key) {
    return read<bool>(require(key), key).value_or(false);
}

std::optional<std::string> JsonReader::optionalString(const char *key) {
    return read<std::string>(find(key), key);
}
std::optional<std::int64_t> JsonReader::optionalInteger(const char *key) {
    return read<std::int64_t>(find(key), key);
}
std::optional<double> JsonReader::optionalNumber(const char *key) {
    return read<double>(find(key), key);
}
std::optional<bool> JsonReader::optionalBoolean(const char *key) {
    return read<bool>(find(key), key);
}

const nlohmann::json &JsonReader::value(const char *key) {
    const nlohmann::json *value = require(key);
    return value ? *value : nullJson;
}

const nlohmann::json &JsonReader::object(const char *key) {
    const nlohmann::json *value = require(key);
    if (value && !value->is_object())
        fail(key, std::string("is ") + value->type_name() + ", not an object");
    return value ? *value : nullJson;
}

const nlohmann::json &JsonReader::array(const char *key) {
    const nlohmann::json *value = require(key);
    if (value && !value->is_array())
        fail(key, std::string("is ") + value->type_name() + ", not an array");
    return value && value->is_array() ? *value : nullJson;
}

const nlohmann::json *JsonReader::optionalObject(const char *key) {
    return find(key);
}

} // namespace vantrell
