// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Analytics/Analytics.h"

#include "API/VantrellAPI.h"
#include "Support/FileLock.h"
#include "TestSupport/LogCapture.h"
#include "TestSupport/ManualClock.h"
#include "TestSupport/Network/ScriptedHttpServer.h"
#include "TestSupport/RunTask.h"
#include "TestSupport/ScopedEnvironment.h"
#include "TestSupport/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <fstream>
#include <mutex>
#include <semaphore>

using namespace std::chrono_literals;

namespace vantrell::testing {

namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

/// A service that takes batches of events.
class EventService {
public:
    /// What the next batches are answered with; 200 when nothing is said.
    void answerNext(const std::vector<int> &statuses) {
        std::scoped_lock lock(m_mutex);
        m_statuses.assign(statuses.begin(), statuses.end());
    }

    /// The names in each batch, in order.
    std::vector<std::vector<std::string>> batches() const {
        std::vector<std::vector<std::string>> all;
        for (const ReceivedRequest &request : m_log->all()) {
            EXPECT_EQ(request.target, "/v1/capture/events");
            auto &names = all.emplace_back();
            for (const auto &event : nlohmann::json::parse(request.body).at("events"))
                names.push_back(event.at("name"));
        }
        return all;
    }
    std::vector<std::size_t> batchSizes() const {
        std::vector<std::size_t> sizes;
        for (const auto &batch : batches())
            sizes.push_back(batch.size());
        return sizes;
    }
    std::string url() const { return m_server.url(""); }
    std::vector<ReceivedRequest> requests() const { return m_log->all(); }

    /// While taken, batches are received but not answered.
    std::binary_semaphore answers{1};

private:
    void answer(ScriptedConnection &connection) {
        answers.acquire();
        answers.release();
        std::unique_lock lock(m_mutex);
        int status = 200;
        if (!m_statuses.empty()) {
            status = m_statuses.front();
            m_statuses.erase(m_statuses.begin());
        }
        lock.unlock();
        connection.answer(status, {}, "{}");
    }

    std::mutex m_mutex;
    std::vector<int> m_statuses;
    const std::shared_ptr<RequestLog> m_log = std::make_shared<RequestLog>();
    ScriptedHttpServer m_server{
        answering(m_log, [this](ScriptedConnection &c, const ReceivedRequest &) { answer(c); })};
};

class AnalyticsTest : public ::testing::Test {
protected:
    AnalyticsTest() { open(); }

    void open() { queue = std::make_unique<Analytics>(file, clock); }
    void trackMany(int count) {
        for (int i = 0; i < count; ++i)
            queue->track("cap.event_" + std::to_string(next++));
    }
    nlohmann::json onDisk() const {
        std::ifstream stream(file);
        return nlohmann::json::parse(stream, nullptr, false);
    }
    bool eventuallyOnDisk(std::size_t events) {
        return eventually([&] { return onDisk().is_array() && onDisk().size() == events; });
    }
    bool eventuallyEmpty() {
        return eventually([&] { return queue->count() == 0; });
    }

    const TemporaryFolder folder;
    const std::filesystem::path file = folder / "analytics-queue.json";
    const LogCapture log;
    ManualClock clock;
    EventService service;
    HttpClient http;
    std::optional<std::string> key = "key";
    VantrellAPI api{http, *ServiceURL::parse(service.url()), [this] { return key; }, {}};
    int next = 0;
    std::unique_ptr<Analytics> queue;
};

TEST_F(AnalyticsTest, takesOnlyWellFormedNames) {
    for (const char *name : {"cap.Launched", "cap.app-launched", "app_launched", "cap.", "xcap.a", "cap.a\n"})
        queue->track(name);
    EXPECT_EQ(log.count("app.vantrell.capture.analytics: dropping event with invalid name: "), 6);
    queue->track("cap.app_launched2");
    EXPECT_EQ(queue->count(), 1);
}

TEST_F(AnalyticsTest, keepsTheNewest200OverARestart) {
    trackMany(201);
    EXPECT_EQ(queue->count(), 200);
    queue.reset();
    EXPECT_EQ(onDisk().size(), 200u);
    EXPECT_EQ(onDisk().front().at("name"), "cap.event_1");
    EXPECT_THAT(onDisk().front().at("id").get<std::string>(),
                ::testing::MatchesRegex("[0-9a-f]{8}(-[0-9a-f]{4}){3}-[0-9a-f]{12}"));
    open();
    EXPECT_EQ(queue->count(), 200);
}

TEST_F(AnalyticsTest, keepsTheKindOfEachProperty) {
    queue->track("cap.kinds", {{"flag", true},
                               {"whole", 3},
                               {"fraction", 3.5},
                               {"round", 2.0},
                               {"text", "3"},
                               {"wild", "\xff"},
                               {"endless", HUGE_VAL}});
    queue.reset();
    const auto props = onDisk().at(0).at("props");
    EXPECT_EQ(props.dump(),
              "{\"endless\":\"inf\",\"flag\":true,\"fraction\":3.5,\"round\":2.0,\"text\":\"3\","
              "\"whole\":3,\"wild\":\"\xef\xbf\xbd\"}");
    for (const AnalyticsValue &value :
         {AnalyticsValue(true), AnalyticsValue(3), AnalyticsValue(3.5), AnalyticsValue("3")})
        EXPECT_EQ(AnalyticsValue::decode(value.encode(), "p").value(), value);
    EXPECT_FALSE(AnalyticsValue::decode(nullptr, "p"));
}

TEST_F(AnalyticsTest, startsFreshAfterAnUnreadableFileAndGoesOnInMemoryWhenTheDiskRefuses) {
    for (const char *text : {"[{\"id\":\"a\"}]", "{}", "garbage"}) {
        std::ofstream(file) << text;
        open();
        EXPECT_EQ(queue->count(), 0);
    }
    EXPECT_EQ(log.count("analytics queue unreadable, starting fresh: "), 3);
    queue->track("cap.fresh");
    EXPECT_TRUE(eventuallyOnDisk(1));

    queue = std::make_unique<Analytics>(folder / "missing/queue.json", clock);
    trackMany(2);
    EXPECT_TRUE(eventually([&] { return log.contains("analytics queue write failed: "); }));
    EXPECT_EQ(queue->count(), 2);
}

TEST_F(AnalyticsTest, postsEvery30SecondsAndAtOnceWhenTenWait) {
    trackMany(9);
    queue->start(api);
    clock.advance(29s);
    EXPECT_THAT(service.batches(), IsEmpty());
    clock.advance(1s);
    EXPECT_TRUE(eventuallyEmpty());
    EXPECT_TRUE(eventuallyOnDisk(0));
    trackMany(9);
    settle();
    EXPECT_EQ(service.batches().size(), 1u);
    trackMany(1);
    EXPECT_TRUE(eventuallyEmpty());
    EXPECT_THAT(service.batchSizes(), ElementsAre(9u, 10u));
    EXPECT_EQ(service.requests().front().header("authorization"), "Bearer key");
}

TEST_F(AnalyticsTest, postsInBatchesWhenConnectedKeepsThemFromAnIllServiceAndDropsTheRefused) {
    key.reset();
    queue->start(api);
    trackMany(60);
    clock.advance(5min);
    EXPECT_THAT(log.lines(), IsEmpty());
    key = "key";
    service.answerNext({503, 400});
    clock.advance(30s);
    EXPECT_TRUE(eventually([&] { return log.contains("analytics flush deferred: Request failed (503)"); }));
    EXPECT_EQ(queue->count(), 60);
    clock.advance(30s);
    EXPECT_TRUE(eventuallyEmpty());
    EXPECT_THAT(service.batchSizes(), ElementsAre(25u, 25u, 25u, 10u));
    EXPECT_EQ(service.batches()[1].front(), "cap.event_0");
    EXPECT_EQ(service.batches()[3].back(), "cap.event_59");
    EXPECT_TRUE(log.contains("server dropped analytics batch (400)"));
}

TEST_F(AnalyticsTest, twoProcessesDoNotOverwriteEachOthersEvents) {
    auto other = std::make_unique<Analytics>(file, clock);
    for (int i = 0; i < 60; ++i) {
        trackMany(1);
        other->track("cap.other");
    }
    queue.reset();
    EXPECT_TRUE(eventuallyOnDisk(120));

    // What one has posted does not come back from the other, and what the other adds is posted as well.
    open();
    queue->start(api);
    clock.advance(30s);
    EXPECT_TRUE(eventuallyEmpty());
    EXPECT_TRUE(eventuallyOnDisk(0));
    other->track("cap.late");
    EXPECT_TRUE(eventuallyOnDisk(1));
    clock.advance(30s);
    EXPECT_TRUE(eventually([&] { return service.batches().size() == 6; }));
    EXPECT_THAT(service.batches().back(), ElementsAre("cap.late"));
    EXPECT_TRUE(eventuallyOnDisk(0));

    // One that is stopped in the middle of a change holds nobody up.
    auto held = FileLock::acquire(file, 20s);
    ASSERT_TRUE(held);
    other->track("cap.kept");
    EXPECT_TRUE(eventually([&] { return log.contains("analytics queue write failed: "); }));
    EXPECT_EQ(onDisk().size(), 0u);
    held = std::unexpected(FileLockError{});
    other.reset();
    EXPECT_EQ(onDisk().size(), 1u);
}

TEST_F(AnalyticsTest, keepsWhatIsTrackedWhileABatchIsOnItsWay) {
    queue->start(api);
    service.answers.acquire();
    trackMany(10);
    ASSERT_TRUE(eventually([&] { return service.batches().size() == 1; }));
    trackMany(2); // makes it 12: a second flush beside the first must not start
    settle();
    EXPECT_EQ(service.batches().size(), 1u);
    service.answers.release();
    EXPECT_TRUE(eventuallyEmpty());
    EXPECT_THAT(service.batchSizes(), ElementsAre(10u, 2u));

    // The end of the process keeps the batch.
    service.answers.acquire();
    trackMany(10);
    ASSERT_TRUE(eventually([&] { return service.batches().size() == 3; }));
    queue.reset();
    service.answers.release();
    EXPECT_EQ(onDisk().size(), 10u);
}

TEST_F(AnalyticsTest, recordsNothingWhenTheUserDoesNotWantIt) {
    trackMany(3);
    queue.reset();
    const ScopedEnvironment off("DO_NOT_TRACK", "1");
    open();
    queue->start(api);
    trackMany(20);
    clock.advance(1min);
    EXPECT_TRUE(queue->isOff());
    EXPECT_EQ(queue->count(), 0);
    queue.reset();
    EXPECT_FALSE(std::filesystem::exists(file));
    EXPECT_THAT(service.batches(), IsEmpty());
}

TEST_F(AnalyticsTest, forgetsWhatWaitsWhenTheUserSwitchesItOff) {
    trackMany(3);
    queue->setOff(true);
    EXPECT_EQ(queue->count(), 0);
    trackMany(1);
    EXPECT_EQ(queue->count(), 0);
    queue->setOff(false);
    trackMany(1);
    EXPECT_EQ(queue->count(), 1);
}

} // namespace
} // namespace vantrell::testing
