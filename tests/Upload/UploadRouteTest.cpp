// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Upload/UploadRoute.h"

#include "Upload/SafeCaptureName.h"
#include "Upload/UploadMessages.h"

#include <gtest/gtest.h>

namespace vantrell::testing {

namespace {

using Phase = UploadJournalEntry::Phase;

UploadRoute routeForHttp(int status, std::optional<std::string> message = std::nullopt,
                         Phase phase = Phase::queued) {
    return routeFor(APIError::http(status, std::move(message)), phase);
}

TEST(UploadRoute, retriesWhatMayPass) {
    const UploadRoute retry = route::Retry{};
    // Whatever the storage said, the whole attempt is worth another try.
    EXPECT_EQ(routeFor(StorageUploadError{APIError::http(403, "expired")}, Phase::uploading), retry);
    EXPECT_EQ(routeFor(StorageUploadError{ContentMismatch{}}, Phase::uploading), retry);
    EXPECT_EQ(routeFor(APIError(APIError::Network{}), Phase::confirming), retry);
    EXPECT_EQ(routeFor(APIError(APIError::MalformedResponse{}), Phase::queued), retry);
    EXPECT_EQ(routeFor(PlatformError{}, Phase::queued), retry);
    for (const int status : {0, 302, 401, 408, 429, 500, 503, 599})
        EXPECT_EQ(routeForHttp(status, "Project not found"), retry) << status;
}

TEST(UploadRoute, parksWhatWillNotPassWithTheRightSentence) {
    EXPECT_EQ(routeForHttp(413), UploadRoute(route::Park{"This recording is over your plan's size limit."}));
    EXPECT_EQ(routeForHttp(403, "Your plan has ended"), UploadRoute(route::Park{"Your plan has ended"}));
    for (const int status : {400, 403, 404, 409, 422, 499})
        EXPECT_EQ(routeForHttp(status), UploadRoute(route::Park{"Upload failed"})) << status;
    EXPECT_EQ(routeForHttp(403, ""), UploadRoute(route::Park{"Upload failed"}));
    EXPECT_EQ(routeFor(APIError(APIError::NotPaired{}), Phase::confirming),
              UploadRoute(route::Park{"Connection to Vantrell expired. Reconnect from the menu bar."}));
}

TEST(UploadRoute, tellsTheKindsOfNotFoundApart) {
    for (const Phase phase : {Phase::queued, Phase::uploading, Phase::confirming})
        EXPECT_EQ(routeForHttp(404, "Project not found", phase), UploadRoute(route::ProjectGone{}));
    EXPECT_EQ(routeForHttp(404, "project not found", Phase::confirming), UploadRoute(route::Restart{}));
    EXPECT_EQ(routeForHttp(404, "Capture not found", Phase::uploading),
              UploadRoute(route::Park{"Upload failed"}));
    EXPECT_EQ(routeFor(APIError(APIError::AlreadyUploaded{"a"}), Phase::queued),
              UploadRoute(route::AlreadyUploaded{"a"}));
}

TEST(SafeCaptureName, trimsAndCutsAtTwoHundredUnitsWithoutSplittingACharacter) {
    EXPECT_EQ(safeCaptureName(" \n a b\t\r\n"), "a b");
    EXPECT_EQ(safeCaptureName(" \n\t"), std::nullopt);
    EXPECT_EQ(safeCaptureName(std::string(200, 'x')), std::string(200, 'x'));
    EXPECT_EQ(safeCaptureName(std::string(300, 'x')), std::string(200, 'x'));
    // The emoji is two units, of which only one would fit.
    EXPECT_EQ(safeCaptureName(std::string(199, 'x') + "😀"), std::string(199, 'x'));
    EXPECT_EQ(safeCaptureName(std::string(198, 'x') + "😀y"), std::string(198, 'x') + "😀");
    EXPECT_EQ(safeCaptureName("a\xFFz"), "a\xEF\xBF\xBDz");
}

} // namespace
} // namespace vantrell::testing
