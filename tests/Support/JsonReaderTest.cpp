// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Support/JsonReader.h"

#include <gtest/gtest.h>

namespace vantrell::testing {

namespace {

struct Case {
    const char *json;
    const char *failure;
};

TEST(JsonReader, saysWhichKeyIsWrongAndHow) {
    const Case cases[] = {
        {R"({})", "count is missing"},
        {R"({"count": null})", "count is missing"},
        {R"({"count": 3.0})", "count is a float, not an integer"},
        {R"({"count": "3"})", "count is string, not an integer"},
        {R"({"count": 18446744073709551615})", "count is number, not an integer"},
        {R"({"count": 3})", "name is missing"},
        {R"({"count": 3, "name": 4})", "name is number, not a string"},
        {R"([1])", "the document is array, not an object"},
    };
    for (const Case &c : cases) {
        const nlohmann::json json = nlohmann::json::parse(c.json);
        JsonReader reader(json);
        reader.integer("count");
        reader.string("name");
        ASSERT_TRUE(reader.error()) << c.json;
        EXPECT_EQ(reader.error()->message, c.failure) << c.json;
    }
}

TEST(JsonReader, readsOptionalKeysAndNamesNestedOnes) {
    const nlohmann::json json = nlohmann::json::parse(
        R"({"a": 9223372036854775807, "none": null, "wide": 2, "inner": {"flag": 1}, "unknown": []})");
    JsonReader reader(json);
    EXPECT_EQ(reader.optionalInteger("a"), 9223372036854775807);
    EXPECT_EQ(reader.optionalString("none"), std::nullopt);
    EXPECT_EQ(reader.optionalBoolean("absent"), std::nullopt);
    EXPECT_EQ(reader.number("wide"), 2.0);
    EXPECT_FALSE(reader.error());

    JsonReader inner(reader.object("inner"), reader.pathTo("inner"));
    inner.boolean("flag");
    reader.adopt(inner);
    ASSERT_TRUE(reader.error());
    EXPECT_EQ(reader.error()->message, "inner.flag is number, not a boolean");
}

TEST(JsonReader, refusesEveryTextThatIsNoJsonWithoutQuotingIt) {
    for (const char *text : {R"({"key": "secret)", R"({"secret": 1e999})", R"({"secret": [-7e1000]})"}) {
        const auto parsed = parseJson(text);
        ASSERT_FALSE(parsed) << text;
        EXPECT_EQ(parsed.error().message.find("secret"), std::string::npos);
        EXPECT_NE(parsed.error().message.find("not JSON"), std::string::npos);
    }
}

} // namespace
} // namespace vantrell::testing
