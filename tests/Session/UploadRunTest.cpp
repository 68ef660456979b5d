// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Session/UploadRun.h"

#include "Support/SystemClock.h"
#include "TestSupport/Network/LocalService.h"
#include "TestSupport/RunTask.h"
#include "TestSupport/ScopedEnvironment.h"
#include "TestSupport/TemporaryFolder.h"
#include "TestSupport/TestFile.h"

#include <gtest/gtest.h>

namespace vantrell::testing {

namespace {

class UploadRunTest : public ::testing::Test {
protected:
    UploadRunTest() { session = std::move(*ServiceSession::create(service.createKey())); }

    CaptureResult picture(const std::string &name) {
        CaptureResult capture{
            .kind = CaptureResult::Kind::image, .mime = "image/png", .fileURL = folder / name, .name = name};
        writeTestFile(capture.fileURL, 1000, std::hash<std::string>()(name));
        return capture;
    }
    std::unique_ptr<UploadRun> newRun() { return std::move(*UploadRun::create(*session, clock)); }
    std::string uploadedAs(const UploadRun &run, const QUuid &id) {
        const UploadEnd *const end = run.endOf(id);
        return end ? end->assetId.value_or("failed: " + end->assetId.error()) : "not ended";
    }

    LocalService service;
    TemporaryFolder folder;
    ScopedEnvironment data{"XDG_DATA_HOME", folder.path().string()};
    ScopedEnvironment url{"VANTRELL_API_URL", service.url()};
    const std::string project = service.createProject("Tests");
    SystemClock clock;
    std::unique_ptr<ServiceSession> session;
};

TEST_F(UploadRunTest, waitsForWhatItWasGivenThoughAnEarlierUploadEndedBefore) {
    const CaptureResult earlier = picture("earlier");
    const QUuid earlierId = newRun()->add(earlier, project);
    const auto run = newRun();
    run->resume(false, std::nullopt);
    ASSERT_TRUE(eventually([&] { return run->endOf(earlierId) != nullptr; }));
    settle(); // the moment in which nothing is under way

    // The file of the upload that has arrived by now is named: it is not sent once more.
    EXPECT_EQ(run->add(earlier, project), earlierId);
    const QUuid id = run->add(picture("named"), project);
    EXPECT_TRUE(runTask(run->finish({earlierId, id}, {})));
    EXPECT_TRUE(uploadedAs(*run, earlierId).starts_with("cap_")) << uploadedAs(*run, earlierId);
    EXPECT_TRUE(uploadedAs(*run, id).starts_with("cap_")) << uploadedAs(*run, id);
    EXPECT_EQ(service.requests("/v1/capture/sign").size(), 2u);

    // Unless it holds something else now.
    writeTestFile(earlier.fileURL, 2000);
    EXPECT_NE(run->add(earlier, project), earlierId);
}

} // namespace
} // namespace vantrell::testing
