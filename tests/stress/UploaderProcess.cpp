// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "UploaderProcess.h"

#include "API/VantrellAPI.h"
#include "Analytics/Analytics.h"
#include "BatchFolder.h"
#include "Capture/CaptureStorage.h"
#include "HurriedClock.h"
#include "Shelf/ShelfStore.h"
#include "Upload/UploadJournal.h"
#include "Upload/UploadManager.h"

#include <QCoreApplication>
#include <QTimer>

#include <cstdlib>
#include <thread>

namespace vantrell::testing {

namespace {

const UploadJournalEntry *findInJournal(const UploadJournal &journal, const std::filesystem::path &file) {
    const auto found = std::ranges::find(journal.entries(), file.string(), &UploadJournalEntry::masterPath);
    return found == journal.entries().end() ? nullptr : &*found;
}

bool hasSideFiles(const UploadJournalEntry &entry) {
    return entry.thumbPath && std::filesystem::exists(*entry.thumbPath) && entry.metaPath &&
           std::filesystem::exists(*entry.metaPath);
}

/// Returns when the capture is safe on the disk with all that belongs to it. The event loop stands still
/// meanwhile, so the upload itself cannot have got anywhere yet.
void waitUntilSafe(UploadJournal &journal, const QUuid &entryId) {
    journal.flush();
    const UploadJournalEntry *const entry = journal.find(entryId);
    while (!hasSideFiles(*entry))
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
}

} // namespace

int UploaderProcess::run(const std::filesystem::path &folder) {
    const BatchFolder batch(folder);
    HttpClient http;
    const std::string key = std::getenv("STRESS_KEY");
    const std::string project = std::getenv("STRESS_PROJECT");
    VantrellAPI api(http, *ServiceURL::parse(std::getenv("STRESS_URL")), [key] { return key; }, {});
    HurriedClock clock;
    SystemClock shelfClock;
    ShelfStore shelf(shelfClock);
    Analytics analytics(CaptureStorage::analyticsQueueURL(), shelfClock);
    auto journal = UploadJournal::open(CaptureStorage::journalURL());
    if (!journal)
        return 10;
    UploadManager manager({api, http, **journal, shelf, analytics, clock}, [] { return std::nullopt; });
    int parked = 0;
    manager.onEnd = [&parked](const UploadEnd &end) { parked += !end.assetId; };

    (*journal)->reconcileAgainstDisk();
    manager.restoreFromJournal();
    for (const std::filesystem::path &file : batch.files()) {
        if (batch.wasHandedOver(file))
            continue;
        // Killed between the journal and the note of it: then side files may be missing.
        if (const UploadJournalEntry *const known = findInJournal(**journal, file)) {
            batch.noteHandedOver(file, hasSideFiles(*known));
            continue;
        }
        const auto capture = batch.capture(file);
        waitUntilSafe(**journal, manager.enqueue(capture, project, shelf.add(capture)));
        batch.noteHandedOver(file, true);
    }

    QTimer poll;
    QObject::connect(&poll, &QTimer::timeout, &poll, [&manager] {
        if (manager.isIdle())
            QCoreApplication::quit();
    });
    poll.start(std::chrono::milliseconds(2));
    QCoreApplication::exec();
    (*journal)->flush();
    return parked > 0 ? 11 : (*journal)->entries().empty() ? 0 : 12;
}

} // namespace vantrell::testing
