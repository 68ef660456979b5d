// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Support/AtomicFile.h"
#include "Upload/JournalText.h"
#include "Upload/UploadJournal.h"

#include <QTemporaryDir>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <functional>
#include <vector>

/// journal-bench [ENTRIES]: how long a journal takes to load, and how long a change keeps the main thread.
/// Medians of 15.
namespace {

using namespace vantrell;

UploadJournalEntry makeEntry(int number) {
    const std::string text = std::to_string(number);
    return {.captureId = QUuid::createUuid(),
            .projectId = "prj_0123456789abcdef0123",
            .kind = "video",
            .mime = "video/quicktime",
            .name = "Screen recording of a window with a long title, number " + text,
            .durationMs = 123'456 + number,
            .masterPath =
                "/home/user/.local/share/VantrellCapture/Captures/Vantrell Capture " + text + ".mov",
            .thumbPath = "/home/user/.local/share/VantrellCapture/Captures/" + text + ".thumb.jpg",
            .metaPath = "/home/user/.local/share/VantrellCapture/Captures/" + text + ".sidecar.json",
            .assetId = "cap_0123456789abcdef" + text,
            .tusLocation = "https://storage.example.com/storage/tus/cap_0123456789.0123456789abcdef" + text,
            .phase = UploadJournalEntry::Phase::uploading,
            .createdAt = std::chrono::sys_days(std::chrono::year(2026) / 3 / 5)};
}

/// Wall time, and processor time of the whole process: the two differ on a busy machine.
struct Cost {
    double wallMs = 0;
    double processorMs = 0;
};

double median(std::vector<double> times) {
    std::ranges::sort(times);
    return times[times.size() / 2];
}

Cost measure(const std::function<void()> &work) {
    std::vector<double> wall;
    std::vector<double> processor;
    for (int i = 0; i < 15; ++i) {
        const auto start = std::chrono::steady_clock::now();
        const std::clock_t before = std::clock();
        work();
        processor.push_back(double(std::clock() - before) * 1000 / CLOCKS_PER_SEC);
        wall.push_back(
            std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start).count());
    }
    return {median(wall), median(processor)};
}

void print(const char *what, const Cost &cost) {
    std::printf("%-30s %8.2f ms   (%.2f ms of processor)\n", what, cost.wallMs, cost.processorMs);
}

} // namespace

int main(int argc, char **argv) {
    const int count = argc > 1 ? std::atoi(argv[1]) : 10'000;
    const QTemporaryDir folder;
    const std::filesystem::path file = folder.path().toStdString() + "/upload-journal.json";
    std::vector<UploadJournalEntry> entries;
    for (int i = 0; i < count; ++i)
        entries.push_back(makeEntry(i));
    const std::string text = encodeJournal(entries);
    if (!writeFileAtomically(file, text))
        return 1;

    std::size_t loaded = 0;
    const Cost load = measure([&] { loaded = (*UploadJournal::open(file))->entries().size(); });
    if (loaded != entries.size())
        return 1;
    const auto journal = std::move(*UploadJournal::open(file));
    const Cost upsert = measure([&] { journal->upsert(entries[std::size_t(count) / 2]); });
    const Cost written = measure([&] {
        journal->save();
        journal->flush();
    });
    std::printf("%d entries, %zu bytes\n", count, text.size());
    print("load", load);
    print("a change, on the main thread", upsert);
    print("a change, until on the disk", written);
    return 0;
}
