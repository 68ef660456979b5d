// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "StallMeter.h"
#include "TestSupport/RunTask.h"
#include "UploadFixture.h"

#include <string>
#include <thread>

using namespace std::chrono_literals;

namespace vantrell::testing {

namespace {

// A picture at 60 Hz lasts 16 ms. Sanitizers make everything several times slower.
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer)
constexpr auto allowedStall = 80ms;
#else
constexpr auto allowedStall = 16ms;
#endif

class MainThreadTest : public UploadFixture {};

TEST_F(MainThreadTest, isNeverKeptWaitingByTwoUploads) {
    service->configure({{"chunkSize", 6 << 20}});
    // A virtual machine that stands still for a moment does so at one try, not at each.
    std::chrono::milliseconds longest{};
    for (int attempt = 0; attempt == 0 || (longest > allowedStall && attempt < 4); ++attempt) {
        const auto first = makeCapture("heavy" + std::to_string(attempt), 60'000'000);
        const auto second = makeCapture("heavy too" + std::to_string(attempt), 60'000'000);
        {
            StallMeter meter;
            enqueue(first);
            enqueue(second);
            ASSERT_TRUE(eventually([this] { return manager->isIdle(); }, 120s));
            longest = meter.longest();
            EXPECT_GT(meter.beats(), 40);
        }
        expectInLibrary(*first);
        expectInLibrary(*second);
    }
    EXPECT_LE(longest, allowedStall);
}

TEST_F(MainThreadTest, wouldBeSeenWaiting) {
    StallMeter meter;
    QMetaObject::invokeMethod(&meter, [] { std::this_thread::sleep_for(100ms); }, Qt::QueuedConnection);
    ASSERT_TRUE(eventually([&meter] { return meter.longest() >= 95ms; }));
}

} // namespace
} // namespace vantrell::testing
