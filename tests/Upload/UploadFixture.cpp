// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "UploadFixture.h"

#include "Capture/CaptureStorage.h"
#include "Support/AtomicFile.h"
#include "TestSupport/RunTask.h"
#include "TestSupport/TestFile.h"

#include <map>

using namespace std::chrono_literals;

namespace vantrell::testing {

std::unique_ptr<LocalService> UploadFixture::service;
std::string UploadFixture::key;
std::string UploadFixture::project;

void UploadFixture::SetUpTestSuite() {
    service = std::make_unique<LocalService>(
        LocalService::Options{.arguments = {"--transfer", "tus", "--chunk-size", "100000"}});
    key = service->createKey();
    project = service->createProject("Tests");
}

void UploadFixture::TearDownTestSuite() {
    service.reset();
}

void UploadFixture::SetUp() {
    service->clearFaults();
    service->configure({{"transfer", "tus"}});
    service->clearLog();
    journalFile = CaptureStorage::journalURL();
    startProgram();
}

void UploadFixture::startProgram() {
    analytics = std::make_unique<Analytics>(CaptureStorage::analyticsQueueURL(), shelfClock);
    auto opened = UploadJournal::open(journalFile);
    ASSERT_TRUE(opened);
    journal = std::move(*opened);
    manager = std::make_unique<UploadManager>(UploadServices{api, http, *journal, shelf, *analytics, clock},
                                              [this] { return cap; });
    manager->onEnd = [this](const UploadEnd &end) { ends.push_back(end); };
    manager->onProjectGone = [this](const std::string &id) { goneProjects.push_back(id); };
}

void UploadFixture::restartProgram() {
    manager.reset();
    journal.reset();
    analytics.reset();
    while (!shelf.items().empty())
        shelf.remove(shelf.items().front().id);
    startProgram();
    journal->reconcileAgainstDisk();
    manager->restoreFromJournal();
}

std::shared_ptr<const CaptureResult> UploadFixture::makeCapture(const std::string &name, std::int64_t bytes,
                                                                bool bare) {
    CaptureResult capture;
    capture.mime = "video/quicktime";
    capture.name = name;
    capture.fileURL = CaptureStorage::directory() / (name + ".mov");
    capture.durationMs = 1500;
    if (!bare) {
        capture.metadata.type = "recording";
        capture.metadata.capturedAt = "2026-03-05T14:07:09Z";
        capture.thumbnailJPEG = "thumbnail of " + name;
    }
    writeTestFile(capture.fileURL, bytes, std::hash<std::string>()(name));
    return std::make_shared<const CaptureResult>(std::move(capture));
}

QUuid UploadFixture::enqueue(const std::shared_ptr<const CaptureResult> &capture) {
    return enqueueTo(project, capture);
}

QUuid UploadFixture::enqueueTo(const std::string &projectId,
                               const std::shared_ptr<const CaptureResult> &capture) {
    const QUuid shelfId = shelf.add(capture);
    manager->enqueue(capture, projectId, shelfId);
    return shelfId;
}

std::vector<double> UploadFixture::runUploads() {
    std::vector<double> waits;
    while (!manager->isIdle()) {
        if (!eventually([this] { return manager->isIdle() || clock.sleeperCount() > 0; }, 60s)) {
            ADD_FAILURE() << "an upload hangs: " << journalText();
            break;
        }
        if (clock.sleeperCount() > 0)
            waits.push_back(double(clock.advanceToNextSleeper()->count()) / 1000);
    }
    journal->flush();
    return waits;
}

std::string UploadFixture::statusText(const QUuid &shelfId) const {
    const ShelfItem *const item = shelf.find(shelfId);
    return item ? item->statusText() : "no card";
}

std::string UploadFixture::journalText() const {
    journal->flush();
    return readFile(journalFile).value_or("missing");
}

std::vector<std::string> UploadFixture::trackedReasons() {
    std::vector<std::string> reasons;
    analytics.reset();
    const auto queue = nlohmann::json::parse(readFile(CaptureStorage::analyticsQueueURL()).value_or("[]"));
    for (const nlohmann::json &event : queue) {
        const nlohmann::json &props = event.at("props");
        reasons.push_back(props.contains("reason")
                              ? props.at("reason").get<std::string>()
                              : event.at("name").get<std::string>() + " " + props.dump());
    }
    return reasons;
}

std::vector<nlohmann::json> UploadFixture::libraryCaptures(const std::string &name) {
    std::vector<nlohmann::json> found = service->captures(key);
    std::erase_if(found, [&name](const nlohmann::json &capture) { return capture.at("name") != name; });
    return found;
}

void UploadFixture::expectInLibrary(const CaptureResult &capture) {
    const std::vector<nlohmann::json> found = libraryCaptures(capture.name);
    ASSERT_EQ(found.size(), 1u) << capture.name;
    EXPECT_EQ(found[0].at("status"), "confirmed");
    EXPECT_EQ(found[0].at("sha256"), sha256Of(capture.fileURL));
    EXPECT_EQ(found[0].at("durationMs"), *capture.durationMs);
}

std::int64_t UploadFixture::bytesSent() {
    std::int64_t sum = 0;
    for (const LocalService::LogEntry &entry : service->requests("/storage/tus"))
        sum += entry.bodyBytes;
    return sum;
}

bool UploadFixture::faultHasHit() {
    return service->call("GET", "/test/faults").dump().find("\"hits\":1") != std::string::npos;
}

void UploadFixture::expectHeadsAfterUncertainPatches() {
    std::map<std::string, bool> isUncertain;
    for (const LocalService::LogEntry &entry : service->requests("/storage/tus/")) {
        bool &uncertain = isUncertain[entry.path];
        if (entry.method == "PATCH") {
            EXPECT_FALSE(uncertain) << "PATCH " << entry.headers.dump() << " without asking";
            uncertain = entry.outcome != "sent" || entry.status != 204;
        } else if (entry.method == "HEAD") {
            uncertain = false;
        }
    }
}

} // namespace vantrell::testing
