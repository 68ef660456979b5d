// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "API/TusUploader.h"

#include "API/VantrellAPI.h"
#include "Support/SystemClock.h"
#include "TestSupport/Network/LocalService.h"
#include "TestSupport/RunTask.h"
#include "TestSupport/TestFile.h"

#include <gtest/gtest.h>

#include <QObject>
#include <QTimer>
#include <QUuid>

#include <algorithm>
#include <fstream>
#include <random>

namespace vantrell::testing {

namespace {

constexpr std::int64_t enduranceChunk = 1 << 20;
constexpr std::int64_t enduranceBytes = 96 * enduranceChunk + 12'345;

std::int64_t residentBytes() {
    std::ifstream status("/proc/self/statm");
    std::int64_t total = 0;
    std::int64_t resident = 0;
    status >> total >> resident;
    return resident * 4096;
}

/// Cuts a transfer in the middle of the body after a random number of accepted chunks.
class RandomCut {
public:
    explicit RandomCut(std::mt19937 &random) : m_chunksLeft(int(random() % 10)), m_delay(int(random() % 4)) {}

    void chunkAccepted() {
        if (m_chunksLeft-- == 0)
            QTimer::singleShot(m_delay, &m_context, [this] { stop.request_stop(); });
    }

    std::stop_source stop;

private:
    int m_chunksLeft;
    int m_delay;
    /// Ends the timer with the object.
    QObject m_context;
};

Task<> keep(std::optional<std::string> *kept, std::string location) {
    *kept = std::move(location);
    co_return;
}

TEST(TusEndurance, aLargeFileSurvivesCutsAnywhereInFlatMemoryWithNothingSentTwiceBeyondAChunk) {
    const unsigned seed = std::random_device{}();
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937 random(seed);
    LocalService service(
        {.arguments = {"--transfer", "tus", "--chunk-size", std::to_string(enduranceChunk)}});
    const std::string key = service.createKey();
    const TemporaryFolder folder;
    const std::filesystem::path file = folder / "film.mov";
    writeTestFile(file, enduranceBytes, seed);

    HttpClient http;
    SystemClock clock;
    const VantrellAPI api(http, *ServiceURL::parse(service.url()), [&key] { return key; }, {});
    const TusUploader uploader(http, clock);
    const auto capture = runTask(api.sign({service.createProject("Tests"),
                                           "video",
                                           "video/quicktime",
                                           enduranceBytes,
                                           1000,
                                           {},
                                           {},
                                           false,
                                           QUuid::createUuid().toString(QUuid::WithoutBraces).toStdString()},
                                          {}));
    ASSERT_TRUE(capture);
    const TusUpload target = std::get<TusUpload>(capture->main.upload);

    const std::int64_t idle = residentBytes();
    std::int64_t peak = idle;
    std::optional<std::string> location;
    int cuts = 0;
    for (bool complete = false; !complete; ++cuts) {
        ASSERT_LT(cuts, 200);
        RandomCut cut(random);
        const auto result = runTask(
            uploader.upload(file, target, location,
                            {.onLocation = [&](std::string l) { return keep(&location, std::move(l)); },
                             .onProgress =
                                 [&](std::int64_t, std::int64_t) {
                                     peak = std::max(peak, residentBytes());
                                     cut.chunkAccepted();
                                 }},
                            cut.stop.get_token()));
        complete = result.has_value();
        ASSERT_TRUE(complete || cut.stop.stop_requested()) << logText(result.error());
    }
    EXPECT_GT(cuts, 5);
    EXPECT_LT(peak - idle, 64 << 20);

    std::int64_t received = 0;
    for (const LocalService::LogEntry &entry : service.requests("/storage/tus"))
        received += entry.bodyBytes;
    EXPECT_LE(received, enduranceBytes + cuts * enduranceChunk);
    service.configure({{"checksumWaitMs", 60'000}});
    ASSERT_TRUE(runTask(api.confirm(capture->assetId, {})));
    EXPECT_EQ(service.captures(key).at(0).at("sha256"), sha256Of(file));
}

} // namespace
} // namespace vantrell::testing
