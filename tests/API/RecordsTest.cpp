// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "API/APIError.h"
#include "API/CaptureLimits.h"
#include "API/CaptureRegistration.h"
#include "API/ClientVersion.h"
#include "API/SignedCapture.h"

#include <gtest/gtest.h>

namespace vantrell::testing {

namespace {

using nlohmann::json;

/// The failure's text, or nothing when the record decodes.
template <typename Record>
std::string failureOf(const json &text) {
    JsonReader reader(text);
    Record::decode(reader);
    return reader.error() ? reader.error()->message : "";
}

json signedJson() {
    return json::parse(R"({"assetId":"a1","projectId":"p1","extra":1,
        "main":{"path":"p1/a1.mov","publicUrl":"https://s/a1","upload":{"kind":"standard","uploadUrl":"https://s/put"}},
        "thumb":{"uploadUrl":"https://s/t","path":"p1/a1.jpg"},"meta":null})");
}

json tusJson() {
    return json::parse(
        R"({"kind":"resumable","endpoint":"https://s/tus","signature":"sig","apiKey":"k","bucket":"b",
        "objectName":"o","contentType":"video/quicktime","chunkSize":6291456})");
}

TEST(SignedCapture, decodesBothKindsOfUploadAndOptionalSlots) {
    json text = signedJson();
    JsonReader reader(text);
    const SignedCapture capture = SignedCapture::decode(reader);
    ASSERT_FALSE(reader.error());
    EXPECT_EQ(capture.assetId, "a1");
    EXPECT_EQ(capture.main.path, "p1/a1.mov");
    EXPECT_EQ(std::get<StandardUpload>(capture.main.upload).uploadUrl, "https://s/put");
    ASSERT_TRUE(capture.thumb);
    EXPECT_EQ(capture.thumb->uploadUrl, "https://s/t");
    EXPECT_FALSE(capture.meta);

    text["main"]["upload"] = tusJson();
    JsonReader tusReader(text);
    EXPECT_EQ(std::get<TusUpload>(SignedCapture::decode(tusReader).main.upload),
              (TusUpload{"https://s/tus", "sig", "k", "b", "o", "video/quicktime", 6291456}));
}

TEST(SignedCapture, refusesWhatLacksAKeyOrHasAnotherType) {
    for (const char *key :
         {"endpoint", "signature", "apiKey", "bucket", "objectName", "contentType", "chunkSize"}) {
        json text = signedJson();
        text["main"]["upload"] = tusJson();
        text["main"]["upload"].erase(key);
        EXPECT_NE(failureOf<SignedCapture>(text).find(std::string("main.upload.") + key), std::string::npos)
            << key;
    }
    json text = signedJson();
    text["main"]["upload"] = tusJson();
    text["main"]["upload"]["chunkSize"] = "6291456";
    EXPECT_EQ(failureOf<SignedCapture>(text), "main.upload.chunkSize is string, not an integer");
    text = signedJson();
    text["thumb"].erase("path");
    EXPECT_EQ(failureOf<SignedCapture>(text), "thumb.path is missing");
    text = signedJson();
    text["main"] = 7;
    EXPECT_NE(failureOf<SignedCapture>(text), "");
}

TEST(CaptureLimits, takesAnAbsentOrNullSizeAsNoLimit) {
    EXPECT_NE(failureOf<CaptureLimits>(json::parse(R"({"maxVideoDurationMs":1})")), "");
    EXPECT_NE(failureOf<CaptureLimits>(json::parse(R"({"plan":"p","maxVideoDurationMs":1.5})")), "");
    for (const char *text : {R"({"plan":"p","maxVideoDurationMs":9000000000})",
                             R"({"plan":"p","maxVideoDurationMs":9000000000,"maxVideoUploadBytes":null})"}) {
        const json parsed = json::parse(text);
        JsonReader reader(parsed);
        EXPECT_EQ(CaptureLimits::decode(reader), (CaptureLimits{"p", 9000000000, std::nullopt}));
        EXPECT_FALSE(reader.error());
    }
}

TEST(CaptureRegistration, writesOptionalKeysOnlyWhenPresent) {
    CaptureRegistration registration{"p", "image", "image/png", 12, {}, {}, {}, false, "c"};
    EXPECT_EQ(
        json::parse(registration.toJson()),
        json::parse(
            R"({"projectId":"p","kind":"image","mime":"image/png","bytes":12,"meta":false,"captureId":"c"})"));
    registration.durationMs = 1500;
    registration.name = "broken \xff name";
    registration.thumbBytes = 9;
    registration.hasMeta = true;
    const json full = json::parse(registration.toJson());
    EXPECT_EQ(full["durationMs"], 1500);
    EXPECT_EQ(full["name"], "broken \xEF\xBF\xBD name");
    EXPECT_EQ(full["thumb"], json::parse(R"({"mime":"image/jpeg","bytes":9})"));
    EXPECT_EQ(full["meta"], true);
}

TEST(ClientVersion, readsZeroWhereAPartIsMissing) {
    EXPECT_EQ(composeClientVersion("1.2", "34"), "1.2+34");
    EXPECT_EQ(composeClientVersion(std::nullopt, std::nullopt), "0+0");
    EXPECT_NE(clientVersion(), "0+0");
}

} // namespace
} // namespace vantrell::testing
