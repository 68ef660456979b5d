// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Upload/UploadJournal.h"

#include "Support/AtomicFile.h"
#include "TestSupport/ChildProcess.h"
#include "TestSupport/Disk/FailingDisk.h"
#include "TestSupport/LogCapture.h"
#include "TestSupport/RunTask.h"
#include "TestSupport/TemporaryFolder.h"
#include "Upload/JournalText.h"

#include <gmock/gmock.h>

#include <cerrno>
#include <fstream>

namespace vantrell::testing {

namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::UnorderedElementsAre;

constexpr char oneEntry[] =
    R"({"captureId":"a1b2c3d4-0000-4000-8000-00000000000F","createdAt":"2026-03-05T14:07:09Z","kind":"video",)"
    R"("masterPath":"/a.mov","mime":"video/quicktime","phase":"queued","projectId":"p"})";

UploadJournalEntry entryNamed(const std::string &name) {
    return {.captureId = QUuid::createUuid(),
            .projectId = "project",
            .kind = "video",
            .mime = "video/quicktime",
            .name = name,
            .masterPath = "/captures/" + name + ".mov",
            .createdAt = std::chrono::sys_days(std::chrono::year(2026) / 3 / 5)};
}

std::vector<std::string> namesOf(const std::vector<UploadJournalEntry> &entries) {
    std::vector<std::string> names;
    for (const UploadJournalEntry &entry : entries)
        names.push_back(entry.name.value_or("?"));
    return names;
}

class UploadJournalTest : public ::testing::Test {
protected:
    std::unique_ptr<UploadJournal> open() {
        auto opened = UploadJournal::open(file);
        EXPECT_TRUE(opened);
        return std::move(*opened);
    }
    std::string contents() const { return readFile(file).value_or("missing"); }
    void fill(const std::string &text) const { ASSERT_TRUE(writeFileAtomically(file, text)); }
    std::vector<std::string> filesBeside() const {
        std::vector<std::string> names;
        for (const auto &entry : std::filesystem::directory_iterator(folder.path()))
            names.push_back(entry.path().filename());
        return names;
    }

    TemporaryFolder folder;
    const std::filesystem::path file = folder / "upload-journal.json";
};

TEST_F(UploadJournalTest, writesExactlyTheFileFormat) {
    fill("[" + std::string(oneEntry) + "]");
    const auto journal = open();
    ASSERT_EQ(journal->entries().size(), 1u);
    UploadJournalEntry &entry = *journal->find(QUuid("a1b2c3d4-0000-4000-8000-00000000000f"));
    EXPECT_FALSE(entry.name || entry.durationMs || entry.thumbPath || entry.metaPath || entry.assetId ||
                 entry.tusLocation || entry.failureReason || entry.projectGone);
    entry.name = "Ünïcode";
    entry.durationMs = 5'000'000'000;
    entry.thumbPath = "/t.jpg";
    entry.metaPath = "/m.json";
    entry.assetId = "asset";
    entry.tusLocation = "https://storage/1";
    entry.phase = UploadJournalEntry::Phase::failed;
    entry.failureReason = "Upload failed";
    entry.projectGone = true;
    journal->save();
    journal->flush();
    EXPECT_EQ(contents(),
              R"([{"assetId":"asset","captureId":"A1B2C3D4-0000-4000-8000-00000000000F",)"
              R"("createdAt":"2026-03-05T14:07:09Z","durationMs":5000000000,"failureReason":"Upload failed",)"
              R"("kind":"video","masterPath":"/a.mov","metaPath":"/m.json","mime":"video/quicktime",)"
              R"("name":"Ünïcode","phase":"failed","projectGone":true,"projectId":"p","thumbPath":"/t.jpg",)"
              R"("tusLocation":"https://storage/1"}])");
    EXPECT_EQ(UploadJournal::read(file), journal->entries());
}

TEST_F(UploadJournalTest, keepsTheOrderOfEntries) {
    const auto journal = open();
    EXPECT_FALSE(std::filesystem::exists(file)) << "nothing was to be written yet";
    const UploadJournalEntry a = entryNamed("a");
    UploadJournalEntry b = entryNamed("b");
    journal->upsert(a);
    journal->upsert(b);
    journal->upsert(entryNamed("c"));
    b.name = "B";
    journal->upsert(b);
    journal->remove(a.captureId);
    EXPECT_TRUE(runTask(journal->written({})));
    EXPECT_THAT(namesOf(UploadJournal::read(file)), ElementsAre("B", "c"));
}

TEST_F(UploadJournalTest, dropsEntriesWhoseFileIsGone) {
    std::ofstream(folder / "here.mov") << "x";
    UploadJournalEntry here = entryNamed("here");
    here.masterPath = folder / "here.mov";
    here.thumbPath = "/thumb";
    const auto journal = open();
    journal->upsert(entryNamed("gone"));
    journal->upsert(here);
    EXPECT_THAT(journal->livePaths(), UnorderedElementsAre("/captures/gone.mov", here.masterPath, "/thumb"));
    journal->reconcileAgainstDisk();
    journal->flush();
    EXPECT_THAT(namesOf(UploadJournal::read(file)), ElementsAre("here"));

    std::filesystem::remove(file);
    journal->reconcileAgainstDisk(); // nothing to drop: nothing is written
    journal->flush();
    EXPECT_FALSE(std::filesystem::exists(file));
}

TEST_F(UploadJournalTest, keepsAFileWhoseNameIsNotUtf8) {
    const std::filesystem::path movie = folder / "caf\xe9 100%.mov";
    std::ofstream(movie) << "x";
    UploadJournalEntry entry = entryNamed("cafe");
    entry.masterPath = movie;
    entry.thumbPath = "/100% Ünïcode.jpg";
    open()->upsert(entry);
    EXPECT_NE(contents().find("/caf%E9%20100%25.mov\""), std::string::npos) << contents();
    EXPECT_NE(contents().find("\"/100% Ünïcode.jpg\""), std::string::npos) << contents();
    const auto journal = open();
    journal->reconcileAgainstDisk();
    EXPECT_THAT(journal->entries(), ElementsAre(entry));
    std::filesystem::remove(movie); // QTemporaryDir cannot
}

TEST_F(UploadJournalTest, refusesAFileWithAnythingWrongInItAsAWhole) {
    const std::string good = oneEntry;
    const auto with = [&good](const std::string &from, const std::string &to) {
        std::string changed = good;
        return changed.replace(changed.find(from), from.size(), to);
    };
    const std::vector<std::string> bad = {
        with(R"("queued")", R"("paused")"),
        with("14:07:09Z", "14:07:09.5Z"),
        with("14:07:09Z", "14:07:09+01:00"),
        with("14:07:09Z", "24:07:09Z"),
        with("03-05T", "02-30T"),
        with(R"("kind":"video")", R"("kind":1)"),
        with(R"("masterPath":"/a.mov",)", ""),
        with("a1b2c3d4-", "{a1b2c3d4"),
        with(R"("projectId":"p")", R"("projectId":"p","durationMs":1.5)"),
    };
    for (const std::string &entry : bad) {
        fill("[" + good + "," + entry + "]");
        const LogCapture log;
        EXPECT_THAT(open()->entries(), IsEmpty()) << entry;
        EXPECT_EQ(log.count("app.vantrell.capture.upload: upload journal unreadable, starting fresh: "), 1)
            << entry;
    }
    for (const std::string &text : {std::string(), std::string("{}"), std::string("7"), std::string("[[]]"),
                                    "[" + good, "[" + good + "]]"}) {
        fill(text);
        EXPECT_THAT(open()->entries(), IsEmpty()) << text;
        EXPECT_EQ(contents(), text) << "left as it is";
    }
}

TEST_F(UploadJournalTest, ignoresKeysThatItDoesNotKnow) {
    std::string entry = oneEntry;
    entry.insert(1, R"("later":{"kind":7,"list":[1,{"phase":"paused"},[]]},"flags":[{}],"name":null,)");
    fill("[" + entry + "," + oneEntry + "]");
    const auto journal = open();
    ASSERT_EQ(journal->entries().size(), 2u);
    EXPECT_EQ(journal->entries()[0], journal->entries()[1]);
}

TEST_F(UploadJournalTest, keepsAnUnreadableFileBesideBeforeItIsReplaced) {
    for (const std::string text : {"first", "second"}) {
        fill(text);
        const auto journal = open();
        journal->upsert(entryNamed("new"));
        journal->upsert(entryNamed("newer"));
        journal->flush();
        EXPECT_THAT(namesOf(UploadJournal::read(file)), ElementsAre("new", "newer"));
    }
    EXPECT_EQ(readFile(folder / "upload-journal.json.unreadable").value_or(""), "first");
    EXPECT_EQ(readFile(folder / "upload-journal.json.unreadable-2").value_or(""), "second");
    EXPECT_THAT(filesBeside(),
                UnorderedElementsAre("upload-journal.json", "upload-journal.json.lock",
                                     "upload-journal.json.unreadable", "upload-journal.json.unreadable-2"));
}

TEST_F(UploadJournalTest, staysWholeWhicheverCallOfTheDiskFails) {
    for (const int error : {ENOSPC, EIO, EROFS}) {
        int failures = 0;
        for (int call = 1;; ++call) {
            fill("[]");
            const auto journal = open();
            journal->upsert(entryNamed("old"));
            journal->flush();
            {
                const LogCapture log;
                const FailingDisk failing(call, error);
                journal->upsert(entryNamed("new"));
                journal->flush();
                if (!failing.hasFailed())
                    break;
                EXPECT_EQ(log.count("upload journal write failed: "), 1) << call;
            }
            ++failures;
            // The old list or the new one (when only the folder's fsync failed), never a mixture.
            const auto onDisk = decodeJournal(contents());
            ASSERT_TRUE(onDisk) << "call " << call << ": " << contents();
            EXPECT_EQ(onDisk->front().name, "old");
            EXPECT_THAT(filesBeside(),
                        UnorderedElementsAre("upload-journal.json", "upload-journal.json.lock"))
                << "call " << call;

            journal->upsert(entryNamed("newer"));
            journal->flush();
            EXPECT_THAT(namesOf(UploadJournal::read(file)), ElementsAre("old", "new", "newer")) << call;
        }
        // Temporary file, write, fsync, rename, the folder's open and fsync.
        EXPECT_GE(failures, 6);
    }
}

TEST_F(UploadJournalTest, neverLosesAnUnreadableFileWhicheverCallOfTheDiskFails) {
    bool hasFailed = true;
    for (int call = 1; hasFailed; ++call) {
        fill("precious");
        std::filesystem::remove(folder / "upload-journal.json.unreadable");
        const auto journal = open();
        {
            const FailingDisk failing(call, ENOSPC, call % 2 == 0);
            journal->upsert(entryNamed("new"));
            journal->flush();
            hasFailed = failing.hasFailed();
        }
        const auto kept = readFile(folder / "upload-journal.json.unreadable");
        EXPECT_TRUE(contents() == "precious" || kept.value_or("") == "precious") << call;
        journal->save();
        journal->flush();
        EXPECT_EQ(readFile(folder / "upload-journal.json.unreadable").value_or(""), "precious") << call;
        EXPECT_THAT(namesOf(UploadJournal::read(file)), ElementsAre("new")) << call;
    }
}

TEST_F(UploadJournalTest, belongsToOneProcessAtATime) {
    const std::string lock = file.string() + ".lock";
    {
        ChildProcess other({"flock", "--no-fork", lock, "sleep", "60"});
        ASSERT_TRUE(eventually([this] { return !UploadJournal::open(file).has_value(); }));
        const auto second = UploadJournal::open(file);
        ASSERT_FALSE(second);
        EXPECT_EQ(second.error().description(),
                  "Another Vantrell Capture is running and has the list of uploads open");
        EXPECT_THAT(UploadJournal::read(file), IsEmpty()) << "looking is allowed";
    }
    // However the other one ended.
    EXPECT_TRUE(eventually([this] { return UploadJournal::open(file).has_value(); }));
}

} // namespace
} // namespace vantrell::testing
