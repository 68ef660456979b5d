// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "UploadFixture.h"

#include "Capture/CaptureStorage.h"
#include "Support/AtomicFile.h"
#include "TestSupport/RunTask.h"
#include "TestSupport/TestFile.h"

#include <QImage>

namespace vantrell::testing {

namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

/// Uploads whose program, or whose file, does not stay as it was.
class UploadRestartTest : public UploadFixture {
protected:
    /// Runs until the server holds a part of the file and the client is in the middle of a chunk.
    void stopInTheMiddle() {
        service->fault("PATCH", "/storage/tus", {{"stallAfterBytes", 60'000}}, 1, 1);
        ASSERT_TRUE(eventually([] { return faultHasHit(); }));
    }
};

TEST_F(UploadRestartTest, goesOnWhereItWasInAnEarlierRun) {
    const auto capture = makeCapture("interrupted", 500'000);
    enqueue(capture);
    stopInTheMiddle();
    restartProgram();
    ASSERT_EQ(shelf.items().size(), 1u);
    EXPECT_EQ(shelf.items()[0].title(), "Screen recording");
    EXPECT_EQ(shelf.items()[0].fileURL(), capture->fileURL);
    EXPECT_EQ(shelf.items()[0].statusText(), "Uploading…");
    runUploads();
    expectInLibrary(*capture);
    EXPECT_TRUE(libraryCaptures(capture->name)[0].at("hasThumb"));
    EXPECT_EQ(service->requests("/v1/capture/sign").size(), 1u);
    EXPECT_EQ(service->requests("/refresh").size(), 1u);
    EXPECT_LE(bytesSent(), 600'000);
    expectHeadsAfterUncertainPatches();
    EXPECT_EQ(journalText(), "[]");
}

TEST_F(UploadRestartTest, leavesEverythingAsItIsWhenItIsDestroyedInAnyState) {
    // Registering, sending, waiting between attempts, sending side files, confirming.
    const std::vector<std::pair<std::string, std::string>> places = {{"POST", "/v1/capture/sign"},
                                                                     {"POST", "/storage/tus"},
                                                                     {"PATCH", "/storage/tus"},
                                                                     {"PUT", "/thumb"},
                                                                     {"PUT", "/meta"},
                                                                     {"POST", "/confirm"}};
    int count = 0;
    for (const auto &[method, path] : places) {
        SCOPED_TRACE(path);
        const std::vector<nlohmann::json> actions = {"stall", {{"status", 503}}};
        for (const nlohmann::json &action : actions) {
            service->clearLog();
            service->fault(method, path, action);
            const auto capture = makeCapture("destroyed " + std::to_string(++count), 120'000);
            const QUuid id = enqueue(capture);
            enqueue(makeCapture("beside it", 1000));
            enqueue(makeCapture("waiting", 1000));
            ASSERT_TRUE(eventually([] { return faultHasHit(); }));
            const std::string before = journalText();
            const std::string card = statusText(id);
            destroyManager();
            EXPECT_EQ(journalText(), before);
            EXPECT_EQ(statusText(id), card);
            service->clearFaults();
            restartProgram();
            runUploads();
            expectInLibrary(*capture);
            EXPECT_EQ(journalText(), "[]");
        }
    }
}

TEST_F(UploadRestartTest, showsParkedUploadsWithoutTouchingThem) {
    QImage picture(1600, 900, QImage::Format_RGB32);
    picture.fill(Qt::red);
    const std::filesystem::path file = CaptureStorage::directory() / "still.png";
    ASSERT_TRUE(picture.save(QString::fromStdString(file.string())));
    UploadJournalEntry parked{.captureId = QUuid::createUuid(),
                              .projectId = project,
                              .kind = "image",
                              .mime = "image/png",
                              .masterPath = file.string(),
                              .phase = UploadJournalEntry::Phase::failed};
    journal->upsert(parked);
    parked.captureId = QUuid::createUuid();
    parked.failureReason = "This recording is over your plan's size limit.";
    journal->upsert(parked);
    UploadJournalEntry recovered = parked;
    recovered.captureId = QUuid::createUuid();
    recovered.kind = "video";
    recovered.name = "Capture Nov 21 at 4.58.45 PM (recovered)";
    recovered.durationMs = 41'000;
    journal->upsert(recovered);
    restartProgram();
    ASSERT_EQ(shelf.items().size(), 3u);
    EXPECT_EQ(shelf.items()[2].title(), "Screen recording (recovered)");
    EXPECT_EQ(shelf.items()[2].durationMs(), 41'000);
    EXPECT_EQ(shelf.items()[0].title(), "Screenshot");
    EXPECT_EQ(shelf.items()[0].statusText(), "Upload failed");
    EXPECT_EQ(shelf.items()[1].statusText(), "This recording is over your plan's size limit.");
    EXPECT_TRUE(manager->isIdle());
    ASSERT_TRUE(eventually([this] { return shelf.items()[1].restoredPreview.has_value(); }));
    EXPECT_EQ(shelf.items()[1].restoredPreview->size(), QSize(640, 360));
    EXPECT_THAT(service->requests("/v1/"), IsEmpty());

    manager->retry({parked.captureId, shelf.items()[1].id}, std::nullopt);
    runUploads();
    EXPECT_EQ(shelf.items()[1].statusText(), "In your library");
}

TEST_F(UploadRestartTest, endsWhenTheFileIsGone) {
    const auto early = makeCapture("gone before", 1000);
    std::filesystem::remove(early->fileURL);
    const QUuid earlyId = enqueue(early);
    runUploads();
    EXPECT_EQ(statusText(earlyId), "The recording file was cleaned up and can't be re-uploaded");
    EXPECT_EQ(journalText(), "[]");
    manager->retry({QUuid::createUuid(), earlyId}, project);
    EXPECT_EQ(statusText(earlyId), "This capture's file is gone");

    const auto late = makeCapture("gone in the middle", 500'000);
    const QUuid lateId = enqueue(late);
    stopInTheMiddle();
    std::filesystem::remove(late->fileURL);
    service->clearFaults();
    service->call("POST", "/test/connections/close");
    runUploads();
    EXPECT_EQ(statusText(lateId), "The recording file was cleaned up and can't be re-uploaded");
    EXPECT_EQ(journalText(), "[]");

    const auto parked = makeCapture("gone while parked", 1000);
    service->fault("POST", "/v1/capture/sign", {{"status", 400}});
    const QUuid parkedId = enqueue(parked);
    runUploads();
    EXPECT_EQ(statusText(parkedId), "Upload failed");
    std::filesystem::remove(parked->fileURL);
    manager->retry({onlyEntry().captureId, parkedId}, project);
    EXPECT_EQ(statusText(parkedId), "The recording file was cleaned up and can't be re-uploaded");
    EXPECT_EQ(journalText(), "[]");
}

TEST_F(UploadRestartTest, sendsTheFileThatIsThereWhenItChangedInTheMiddle) {
    enum class Change { shrink, grow, replace };
    for (const Change change : {Change::shrink, Change::grow, Change::replace}) {
        for (const bool overARestart : {false, true}) {
            SCOPED_TRACE(std::to_string(int(change)) + (overARestart ? " restarted" : ""));
            service->clearLog();
            const auto capture = makeCapture(
                "changing " + std::to_string(int(change)) + std::to_string(overARestart), 500'000);
            enqueue(capture);
            stopInTheMiddle();
            if (overARestart) {
                manager.reset();
                journal->flush();
            }
            if (change == Change::replace)
                writeTestFile(capture->fileURL, 500'000, 99);
            else
                std::filesystem::resize_file(capture->fileURL, change == Change::grow ? 700'000 : 90'000);
            service->clearFaults();
            service->call("POST", "/test/connections/close");
            if (overARestart)
                restartProgram();
            EXPECT_LE(runUploads().size(), 3u);
            expectInLibrary(*capture);
        }
    }
}

} // namespace
} // namespace vantrell::testing
