// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "UploadFixture.h"

#include "Capture/CaptureStorage.h"
#include "TestSupport/RunTask.h"
#include "TestSupport/TestFile.h"

namespace vantrell::testing {

namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

class UploadManagerTest : public UploadFixture {};

TEST_F(UploadManagerTest, bringsACaptureWithItsSideFilesIntoTheLibrary) {
    const auto capture = makeCapture("whole", 250'001);
    std::vector<std::string> texts;
    const QUuid id = enqueue(capture);
    EXPECT_THAT(journalText(), HasSubstr(R"("phase":"queued")")) << "from the first moment";
    EXPECT_EQ(statusText(id), "Uploading…");
    const auto observation = shelf.observe([&] {
        if (texts.empty() || texts.back() != statusText(id))
            texts.push_back(statusText(id));
    });
    EXPECT_THAT(runUploads(), IsEmpty());

    EXPECT_THAT(texts, ElementsAre("Uploading 37%", "Uploading 75%", "Uploading 95%", "In your library"));
    expectInLibrary(*capture);
    ASSERT_EQ(ends.size(), 1u);
    const std::string assetId = ends[0].assetId.value_or("");
    EXPECT_EQ(libraryCaptures("whole")[0].at("id"), assetId);
    EXPECT_EQ(libraryCaptures("whole")[0].at("projectId"), project);
    EXPECT_EQ(service->call("GET", "/captures/" + assetId + "/meta", nullptr, key),
              nlohmann::json::parse(capture->metadata.jsonData()));
    EXPECT_TRUE(libraryCaptures("whole")[0].at("hasThumb"));
    EXPECT_EQ(journalText(), "[]");
    EXPECT_THAT(trackedReasons(), ElementsAre(R"(cap.upload_completed {"kind":"video","mb":0})"));
}

TEST_F(UploadManagerTest, sendsAFileInOnePieceWhenTheServiceSaysSo) {
    service->configure({{"transfer", "standard"}});
    // An answer's type is whatever a gateway calls it: only a page for people would be none of the server's.
    const nlohmann::json calledHtml{{"answerHeaders", {{"Content-Type", "text/html"}}}};
    service->fault("PUT", "/storage", calledHtml, 0);
    service->fault("POST", "/confirm", calledHtml, 0);
    const auto capture = makeCapture("one piece", 1'500'001, true);
    const QUuid id = enqueue(capture);
    bool sawNinety = false;
    const auto observation =
        shelf.observe([&] { sawNinety = sawNinety || statusText(id) == "Uploading 90%"; });
    EXPECT_THAT(runUploads(), IsEmpty());
    EXPECT_TRUE(sawNinety);
    expectInLibrary(*capture);
    EXPECT_THAT(trackedReasons(), ElementsAre(R"(cap.upload_completed {"kind":"video","mb":2})"));
}

TEST_F(UploadManagerTest, runsTwoAtATimeInTheOrderOfArrival) {
    std::vector<std::shared_ptr<const CaptureResult>> captures;
    for (const char *name : {"first", "second", "third", "fourth", "fifth"})
        captures.push_back(makeCapture(name, 120'000));
    // The first upload is slow: the others pass it in the second slot, one after the other.
    service->fault("PATCH", "/storage/tus", {{"stallAfterBytes", 50'000}, {"stallMs", 1500}});
    std::size_t most = 0;
    std::vector<std::string> started;
    const auto observation = shelf.observe([&] {
        std::size_t running = 0;
        for (const UploadJournalEntry &entry : journal->entries()) {
            running += entry.assetId.has_value();
            if (entry.assetId && std::ranges::find(started, *entry.name) == started.end())
                started.push_back(*entry.name);
        }
        most = std::max(most, running);
    });
    for (const auto &capture : captures)
        enqueue(capture);
    runUploads();
    EXPECT_EQ(most, 2u);
    ASSERT_EQ(ends.size(), 5u);
    EXPECT_THAT(started, ElementsAre("first", "second", "third", "fourth", "fifth"));
    for (const auto &capture : captures)
        expectInLibrary(*capture);
}

TEST_F(UploadManagerTest, parksAfterNineAttemptsWithTheirWaits) {
    const LogCapture log;
    service->fault("POST", "/sign", {{"status", 503}}, 0);
    const QUuid id = enqueue(makeCapture("unlucky", 1000));
    EXPECT_THAT(runUploads(), ElementsAre(2, 5, 10, 20, 40, 80, 160, 240));
    EXPECT_EQ(service->requests("/sign").size(), 9u);
    EXPECT_EQ(statusText(id), "Upload failed. Check your connection.");
    EXPECT_THAT(journalText(), HasSubstr(R"("failureReason":"Upload failed. Check your connection.")"));
    EXPECT_THAT(journalText(), HasSubstr(R"("phase":"failed")"));
    EXPECT_EQ(log.count("retrying in "), 8);
    EXPECT_TRUE(log.contains("retrying in 2.000000s: Request failed (503)"));
    EXPECT_EQ(log.count("exhausted retries: Request failed (503)"), 1);
    EXPECT_EQ(log.count("parked as failed: Upload failed. Check your connection."), 1);

    // The user retries: the attempts start anew.
    service->clearFaults();
    manager->retry({onlyEntry().captureId, id}, project);
    EXPECT_EQ(statusText(id), "Uploading…");
    EXPECT_THAT(runUploads(), IsEmpty());
    EXPECT_EQ(statusText(id), "In your library");
    EXPECT_THAT(trackedReasons(), ElementsAre("network", HasSubstr("cap.upload_completed")));
}

TEST_F(UploadManagerTest, holdsVideosAgainstThePlanBeforeAskingTheService) {
    cap = 1000;
    const auto fits = makeCapture("fits", 1000);
    const QUuid tooLarge = enqueue(makeCapture("too large", 1001));
    runUploads();
    EXPECT_THAT(service->requests("/v1/"), IsEmpty());
    EXPECT_EQ(statusText(tooLarge), "This recording is over your plan's size limit.");
    enqueue(fits);
    runUploads();
    expectInLibrary(*fits);
    EXPECT_THAT(trackedReasons(), ElementsAre("size_cap", HasSubstr("cap.upload_completed")));
}

TEST_F(UploadManagerTest, asksForAnotherProjectWhenItsProjectIsGone) {
    const std::string doomed = service->createProject("Doomed");
    service->deleteProject(doomed);
    const auto capture = makeCapture("homeless", 1000);
    const QUuid id = enqueueTo(doomed, capture);
    runUploads();
    EXPECT_EQ(statusText(id), "That project was deleted. Pick another, then retry.");
    EXPECT_THAT(goneProjects, ElementsAre(doomed));

    // The next one is parked without a call, and the application is not told twice.
    service->clearLog();
    enqueueTo(doomed, makeCapture("homeless too", 1000));
    runUploads();
    EXPECT_THAT(service->requests("/v1/"), IsEmpty());
    EXPECT_THAT(goneProjects, ElementsAre(doomed));

    const QUuid entryId = onlyEntry().captureId;
    for (const std::optional<std::string> &choice : {std::optional<std::string>(), std::optional(doomed)}) {
        manager->retry({entryId, id}, choice);
        EXPECT_EQ(statusText(id), "Pick a project in the menu bar first");
        EXPECT_TRUE(manager->isIdle());
    }
    manager->retry({entryId, id}, project);
    runUploads();
    EXPECT_EQ(statusText(id), "In your library");
    expectInLibrary(*capture);
    EXPECT_EQ(libraryCaptures("homeless")[0].at("projectId"), project);
    EXPECT_THAT(trackedReasons(),
                ElementsAre("project_gone", "project_gone", HasSubstr("cap.upload_completed")));
}

TEST_F(UploadManagerTest, confirmsWithoutSideFilesThatCannotBeSent) {
    const LogCapture log;
    service->fault("PUT", "/thumb", {{"status", 500}}, 0);
    service->fault("PUT", "/meta", {{"status", 500}}, 0);
    const auto capture = makeCapture("bare in the end", 1000);
    enqueue(capture);
    EXPECT_THAT(runUploads(), ElementsAre(1, 2));
    expectInLibrary(*capture);
    EXPECT_EQ(log.count("thumb upload failed (asset still confirms): Storage rejected the upload"), 1);
    EXPECT_EQ(log.count("SIDECAR LOST for asset " + *ends[0].assetId +
                        ": all 3 attempts failed, capture confirms without metadata: "),
              1);

    // Announced, and gone before they were sent.
    const auto vanishing = makeCapture("vanishing side files", 1000);
    service->clearFaults();
    service->fault("POST", "/storage/tus", {{"stallMs", 200}});
    enqueue(vanishing);
    ASSERT_TRUE(eventually([this] { return onlyEntry().assetId.has_value(); }));
    std::filesystem::remove(*onlyEntry().thumbPath);
    std::filesystem::remove(*onlyEntry().metaPath);
    EXPECT_THAT(runUploads(), IsEmpty());
    expectInLibrary(*vanishing);
}

TEST_F(UploadManagerTest, uploadsOnWithoutADiskForTheJournal) {
    const LogCapture log;
    manager.reset();
    journal = std::move(*UploadJournal::open(folder / "no such folder/upload-journal.json"));
    manager = std::make_unique<UploadManager>(UploadServices{api, http, *journal, shelf, *analytics, clock},
                                              [this] { return cap; });
    const auto capture = makeCapture("unrecorded", 120'000);
    const QUuid id = enqueue(capture);
    EXPECT_THAT(runUploads(), IsEmpty());
    EXPECT_EQ(statusText(id), "In your library");
    expectInLibrary(*capture);
    EXPECT_TRUE(log.contains("upload journal not locked: open: "));
    EXPECT_TRUE(log.contains("upload journal write failed: create upload-journal.json: "));
}

TEST_F(UploadManagerTest, tellsTheRightEndWhenACardsObserverChangesTheJournal) {
    const auto first = makeCapture("first", 1000);
    const auto second = makeCapture("second", 1000);
    service->fault("POST", "/sign", {{"status", 403}}, 0);
    enqueue(first);
    runUploads();
    const QUuid firstId = onlyEntry().captureId;
    const QUuid id = enqueue(second);
    const QUuid secondId = journal->entries()[1].captureId;
    UploadJournalEntry third = onlyEntry();
    third.captureId = QUuid::createUuid();
    journal->upsert(third);
    const auto observation = shelf.observe([&] {
        if (statusText(id) == "Upload failed")
            journal->remove(firstId);
    });
    runUploads();
    ASSERT_EQ(ends.size(), 2u);
    EXPECT_EQ(ends[1].ids.entryId, secondId);
    EXPECT_EQ(ends[1].file, second->fileURL);
}

} // namespace
} // namespace vantrell::testing
