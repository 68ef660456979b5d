// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "API/VantrellAPI.h"
#include "Analytics/Analytics.h"
#include "Shelf/ShelfStore.h"
#include "TestSupport/LogCapture.h"
#include "TestSupport/ManualClock.h"
#include "TestSupport/Network/LocalService.h"
#include "TestSupport/ScopedEnvironment.h"
#include "TestSupport/TemporaryFolder.h"
#include "Upload/UploadJournal.h"
#include "Upload/UploadManager.h"

#include <gmock/gmock.h>

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace vantrell::testing {

/// A manager with everything real: the local service with its tus server (chunks of 100,000 bytes), journal,
/// analytics and shelf in a data folder of its own. Only the clock is the test's.
class UploadFixture : public ::testing::Test {
protected:
    static void SetUpTestSuite();
    static void TearDownTestSuite();
    void SetUp() override;

    /// A file with side files (unless `bare`), as a recording leaves it.
    std::shared_ptr<const CaptureResult> makeCapture(const std::string &name, std::int64_t bytes,
                                                     bool bare = false);
    /// Hands it over; the shelf id.
    QUuid enqueue(const std::shared_ptr<const CaptureResult> &capture);
    QUuid enqueueTo(const std::string &projectId, const std::shared_ptr<const CaptureResult> &capture);

    /// Runs until the manager is idle, moving the clock to whoever sleeps next; the waits that were asked
    /// for, in seconds.
    std::vector<double> runUploads();

    /// Ends journal and manager as a quit does, and starts anew from the disk.
    void restartProgram();
    /// The manager alone ends, in the middle of whatever it does.
    void destroyManager() { manager.reset(); }

    std::string statusText(const QUuid &shelfId) const;
    const UploadJournalEntry &onlyEntry() const { return journal->entries().front(); }
    std::string journalText() const;
    std::vector<std::string> trackedReasons();

    /// The library holds exactly this capture under its name: once, confirmed, identical.
    void expectInLibrary(const CaptureResult &capture);
    std::vector<nlohmann::json> libraryCaptures(const std::string &name);
    /// Body bytes that arrived at storage for main files.
    std::int64_t bytesSent();
    /// The only fault set has happened once.
    static bool faultHasHit();
    /// No PATCH follows one of uncertain end on the same upload without a HEAD between them.
    void expectHeadsAfterUncertainPatches();

    static std::unique_ptr<LocalService> service;
    static std::string key;
    static std::string project;

    TemporaryFolder folder;
    ScopedEnvironment data{"XDG_DATA_HOME", folder.path().string()};
    std::filesystem::path journalFile;
    std::optional<std::int64_t> cap;
    int authFailures = 0;
    std::vector<UploadEnd> ends;
    std::vector<std::string> goneProjects;

    HttpClient http;
    VantrellAPI api{http, *ServiceURL::parse(service->url()), [] { return key; }, [this] { ++authFailures; }};
    ManualClock clock;
    ManualClock shelfClock;
    ShelfStore shelf{shelfClock};
    std::unique_ptr<Analytics> analytics;
    std::unique_ptr<UploadJournal> journal;
    std::unique_ptr<UploadManager> manager;

private:
    void startProgram();
};

} // namespace vantrell::testing
