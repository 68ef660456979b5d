// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Upload/JournalText.h"

#include <utility>

namespace vantrell {

namespace {

using Json = nlohmann::json;

/// Reads entry by entry while the text is parsed. A document of thousands of entries as one tree takes longer
/// to build and to tear down than to parse.
class JournalParser final : public nlohmann::json_sax<Json> {
public:
    std::vector<UploadJournalEntry> takeEntries() { return std::move(m_entries); }
    const std::optional<JsonError> &error() const { return m_error; }

    bool null() override { return take(Json()); }
    bool boolean(bool value) override { return take(value); }
    bool number_integer(Json::number_integer_t value) override { return take(value); }
    bool number_unsigned(Json::number_unsigned_t value) override { return take(value); }
    bool number_float(Json::number_float_t value, const Json::string_t &) override { return take(value); }
    bool string(Json::string_t &value) override { return take(value); }
    bool binary(Json::binary_t &) override { return false; }

    bool start_object(std::size_t) override {
        if (m_depth > 1 && !take(Json::object()))
            return false;
        if (m_depth == 1)
            m_object = Json::object();
        return ++m_depth > 1 || refuse("the document is object, not an array");
    }
    bool key(Json::string_t &key) override {
        if (m_depth == 2)
            m_key = key;
        return true;
    }
    bool end_object() override {
        if (--m_depth > 1)
            return true;
        JsonReader reader(m_object, "[" + std::to_string(m_entries.size()) + "]");
        m_entries.push_back(UploadJournalEntry::decode(reader));
        m_error = reader.error();
        return !m_error;
    }
    bool start_array(std::size_t) override {
        if (m_depth > 0 && !take(Json::array()))
            return false;
        ++m_depth;
        return true;
    }
    bool end_array() override {
        --m_depth;
        return true;
    }
    bool parse_error(std::size_t position, const std::string &, const Json::exception &) override {
        return refuse("not JSON (at byte " + std::to_string(position) + ")");
    }

private:
    /// What lies deeper than an entry's own keys belongs to keys that nobody knows.
    bool take(Json value) {
        if (m_depth == 0)
            return refuse(std::string("the document is ") + value.type_name() + ", not an array");
        if (m_depth == 1)
            return refuse("[" + std::to_string(m_entries.size()) + "] is " + value.type_name() +
                          ", not an object");
        if (m_depth == 2)
            m_object[m_key] = std::move(value);
        return true;
    }
    bool refuse(std::string why) {
        m_error = JsonError{std::move(why)};
        return false;
    }

    int m_depth = 0;
    std::string m_key;
    Json m_object;
    std::vector<UploadJournalEntry> m_entries;
    std::optional<JsonError> m_error;
};

} // namespace

std::string encodeJournal(const std::vector<UploadJournalEntry> &entries) {
    std::string text = "[";
    for (const UploadJournalEntry &entry : entries) {
        if (text.size() > 1)
            text += ',';
        // Whatever text is no UTF-8 must not cost the other entries their record.
        text += entry.encode().dump(-1, ' ', false, Json::error_handler_t::replace);
    }
    return text + ']';
}

std::expected<std::vector<UploadJournalEntry>, JsonError> decodeJournal(std::string_view text) {
    JournalParser parser;
    if (!Json::sax_parse(text, &parser))
        return std::unexpected(parser.error().value_or(JsonError{"not JSON"}));
    return parser.takeEntries();
}

} // namespace vantrell
