// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Auth/PairingClient.h"

#include "Analytics/Analytics.h"
#include "Auth/KeyProvider.h"
#include "Auth/Keychain.h"
#include "ScriptedPairingService.h"
#include "TestSupport/Account/SecretServiceSession.h"
#include "TestSupport/LogCapture.h"
#include "TestSupport/ManualClock.h"
#include "TestSupport/RunTask.h"
#include "TestSupport/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>

using namespace std::chrono_literals;

namespace vantrell::testing {
namespace {

using ::testing::Each;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using StateKind = PairingState::Kind;

constexpr char keyService[] = "app.vantrell.capture.apikey";
constexpr char keyAccount[] = "api-key";
constexpr char approvalUrl[] = "https://example.com/pair/1";
constexpr char approved[] = R"({"status":"approved","apiKey":"vk_approved"})";

class PairingClientTest : public ::testing::Test {
protected:
    PairingClientTest() {
        session.startUnlocked();
        service.requestAnswer();
    }

    /// As after a start of the program.
    void open(std::optional<std::string> environmentKey = std::nullopt) {
        client.reset();
        keychain = std::make_unique<Keychain>();
        keys = std::make_unique<KeyProvider>(*keychain, std::move(environmentKey));
        client =
            std::make_unique<PairingClient>(PairingClient::Services{http, clock, *keychain, *keys, analytics},
                                            *ServiceURL::parse(service.url()));
        client->onChange = [this] { changes.push_back(client->state().kind); };
        runTask(client->ready({}));
    }
    std::expected<std::string, APIError> begin() { return runTask(client->begin({})); }
    /// Lets the next poll happen; how long it had slept before.
    std::chrono::milliseconds nextPoll() {
        const int before = service.polls();
        const auto slept = clock.advanceToNextSleeper();
        EXPECT_TRUE(eventually([&] { return service.polls() == before + 1; }));
        return slept.value_or(0ms);
    }
    bool eventuallyIs(StateKind kind) {
        return eventually([&] { return client->state().kind == kind; });
    }
    std::optional<std::string> stored() { return session.lookup(keyService, keyAccount); }

    const LogCapture log;
    SecretServiceSession session;
    ScriptedPairingService service;
    ManualClock clock;
    HttpClient http;
    const TemporaryFolder folder;
    Analytics analytics{folder / "queue.json", clock};
    std::unique_ptr<Keychain> keychain;
    std::unique_ptr<KeyProvider> keys;
    std::unique_ptr<PairingClient> client;
    std::vector<StateKind> changes;
};

TEST_F(PairingClientTest, startsFromWhatIsStored) {
    open();
    EXPECT_EQ(client->state(), PairingState::unpaired());
    EXPECT_THAT(changes, IsEmpty());
    session.store(keyService, keyAccount, "vk_old");
    open();
    EXPECT_EQ(client->state(), PairingState::paired());
    EXPECT_EQ(keys->key(), "vk_old");
}

TEST_F(PairingClientTest, pairsWhenTheUserApproves) {
    service.pollAnswers(
        {R"({"status":"pending"})", R"({"status":"approved"})", R"({"status":"brand new"})", approved});
    open();
    EXPECT_EQ(begin().value(), approvalUrl);
    EXPECT_EQ(client->state(), PairingState::waitingForApproval(approvalUrl));
    for (int poll = 0; poll < 4; ++poll)
        EXPECT_EQ(nextPoll(), 5s);
    EXPECT_TRUE(eventuallyIs(StateKind::paired));
    EXPECT_THAT(changes, ElementsAre(StateKind::waitingForApproval, StateKind::paired));
    EXPECT_EQ(client->outcome(), PairingOutcome::approved);
    EXPECT_EQ(stored(), "vk_approved");
    EXPECT_EQ(keys->key(), "vk_approved");
    EXPECT_EQ(analytics.count(), 1);
    EXPECT_TRUE(log.contains("app.vantrell.capture.auth: pairing approved"));
    EXPECT_EQ(clock.sleeperCount(), 0);

    const auto requests = service.requests("/v1/keys/request");
    ASSERT_EQ(requests.size(), 1u);
    EXPECT_EQ(requests[0].method, "POST");
    EXPECT_EQ(nlohmann::json::parse(requests[0].body),
              (nlohmann::json{{"name", "Vantrell Capture (Linux)"}}));
    EXPECT_EQ(requests[0].header("content-type"), "application/json");
    EXPECT_EQ(requests[0].header("authorization"), "");
    EXPECT_EQ(requests[0].header("x-vantrell-capture-version"), "");
    EXPECT_EQ(service.requests("/v1/keys/poll")[0].body, R"({"deviceCode":"code-1"})");
}

TEST_F(PairingClientTest, endsWhenTheServiceSaysSo) {
    for (const auto &[status, outcome] :
         std::vector<std::pair<std::string, PairingOutcome>>{{"denied", PairingOutcome::denied},
                                                             {"expired", PairingOutcome::expired},
                                                             {"claimed", PairingOutcome::claimed}}) {
        service.pollAnswers({R"({"status":")" + status + R"("})"});
        open();
        changes.clear();
        ASSERT_TRUE(begin());
        nextPoll();
        EXPECT_TRUE(eventuallyIs(StateKind::unpaired)) << status;
        EXPECT_THAT(changes, ElementsAre(StateKind::waitingForApproval, StateKind::unpaired));
        EXPECT_EQ(client->outcome(), outcome);
        EXPECT_TRUE(log.contains("pairing ended: " + status));
        EXPECT_EQ(clock.sleeperCount(), 0);
    }
    EXPECT_EQ(stored(), std::nullopt);
}

TEST_F(PairingClientTest, dropsThePairingWhenTheKeyringDoesNotTakeTheKey) {
    service.pollAnswers({approved});
    open();
    ASSERT_TRUE(begin());
    session.kill();
    nextPoll();
    EXPECT_TRUE(eventuallyIs(StateKind::unpaired));
    EXPECT_EQ(client->outcome(), PairingOutcome::notStored);
    EXPECT_EQ(keychain->problem()->kind, KeychainError::Kind::absent);
    EXPECT_TRUE(log.contains("keychain write failed; pairing dropped"));
    EXPECT_EQ(keys->key(), std::nullopt);
    EXPECT_EQ(analytics.count(), 0);
}

TEST_F(PairingClientTest, givesUpAtTheDeadlineWithoutALogLine) {
    service.requestAnswer({{"expiresInSeconds", 12}});
    open();
    ASSERT_TRUE(begin());
    const int lines = int(log.lines().size());
    nextPoll();
    nextPoll();
    EXPECT_EQ(client->state().kind, StateKind::waitingForApproval);
    nextPoll(); // the third sleep began before the deadline
    EXPECT_TRUE(eventuallyIs(StateKind::unpaired));
    EXPECT_EQ(service.polls(), 3);
    EXPECT_EQ(client->outcome(), PairingOutcome::expired);
    EXPECT_EQ(int(log.lines().size()), lines);
}

TEST_F(PairingClientTest, fallsBackAtOnceWhenTheCodeHasExpiredAlready) {
    for (const int expiry : {0, -5}) {
        service.requestAnswer({{"expiresInSeconds", expiry}});
        open();
        changes.clear();
        EXPECT_TRUE(begin());
        EXPECT_THAT(changes, ElementsAre(StateKind::waitingForApproval, StateKind::unpaired));
        EXPECT_EQ(clock.sleeperCount(), 0);
    }
    EXPECT_EQ(service.polls(), 0);
}

TEST_F(PairingClientTest, pollsAtLeastASecondApart) {
    for (const std::int64_t interval :
         {std::int64_t(0), std::int64_t(-3), std::numeric_limits<std::int64_t>::min()}) {
        service.requestAnswer({{"pollIntervalSeconds", interval}});
        open();
        ASSERT_TRUE(begin());
        EXPECT_EQ(nextPoll(), 1s);
        EXPECT_EQ(nextPoll(), 1s);
    }
    service.requestAnswer({{"pollIntervalSeconds", std::numeric_limits<std::int64_t>::max()}});
    open();
    ASSERT_TRUE(begin());
    EXPECT_GT(clock.advanceToNextSleeper().value(), 1h);
}

TEST_F(PairingClientTest, pollsOnThroughAnswersThatMeanNothing) {
    service.pollAnswers(std::vector<ScriptedPairingService::Answer>{
        {200, "<html>Log in to the hotel's network</html>"},
        {200, R"({"apiKey":"vk_without_status"})"},
        {200, R"({"status":"approved","apiKey":17})"},
        {200, R"({"status":"approved","apiKey":""})"},
        {200, R"({"status":"approved","apiKey":"two\r\nX-Header: lines"})"},
        {503, ""},
        {.reset = true},
        {200, approved}});
    open();
    ASSERT_TRUE(begin());
    for (int poll = 0; poll < 7; ++poll) {
        nextPoll();
        EXPECT_EQ(client->state().kind, StateKind::waitingForApproval);
    }
    nextPoll();
    EXPECT_TRUE(eventuallyIs(StateKind::paired));
    EXPECT_EQ(stored(), "vk_approved");
}

TEST_F(PairingClientTest, refusesABadAnswerToTheRequestAndStaysAsItWas) {
    using Answer = ScriptedPairingService::Answer;
    const auto changed = [](const nlohmann::json &changes) {
        nlohmann::json body{{"deviceCode", "c"},
                            {"approvalUrl", approvalUrl},
                            {"pollIntervalSeconds", 5},
                            {"expiresInSeconds", 600}};
        body.merge_patch(changes);
        return Answer{201, body.dump()};
    };
    const std::vector<std::pair<Answer, std::string>> answers{
        {{200, changed({}).body}, "Request failed (200)"},
        {{500, "oops"}, "Request failed (500)"},
        {{201, "<html>"}, "Unexpected server response"},
        {{201, "[]"}, "Unexpected server response"},
        {changed({{"deviceCode", nullptr}}), "Unexpected server response"},
        {changed({{"approvalUrl", nullptr}}), "Unexpected server response"},
        {changed({{"pollIntervalSeconds", 2.5}}), "Unexpected server response"},
        {changed({{"expiresInSeconds", "600"}}), "Unexpected server response"},
        {changed({{"approvalUrl", "http://example.com/pair"}}), "Unexpected server response"},
        {changed({{"approvalUrl", "javascript:alert(1)"}}), "Unexpected server response"},
        {changed({{"approvalUrl", "file:///etc/passwd"}}), "Unexpected server response"},
        {changed({{"approvalUrl", "example.com/pair"}}), "Unexpected server response"},
        {changed({{"approvalUrl", "https://"}}), "Unexpected server response"},
        {changed({{"approvalUrl", "https://trusted.com@example.com/"}}), "Unexpected server response"},
        {{.reset = true}, "Network error"}};
    session.store(keyService, keyAccount, "vk_old");
    open();
    changes.clear();
    int failures = 0;
    for (const auto &[answer, sentence] : answers) {
        service.requestAnswer(answer);
        const auto result = begin();
        ASSERT_FALSE(result) << answer.body;
        EXPECT_EQ(result.error().description(), sentence) << answer.body;
        EXPECT_EQ(log.count("app.vantrell.capture.auth: pairing request failed"), ++failures);
    }
    EXPECT_EQ(client->state(), PairingState::paired());
    EXPECT_THAT(changes, IsEmpty());
    EXPECT_EQ(stored(), "vk_old");
    service.requestAnswer(changed({{"approvalUrl", "http://127.0.0.1:8787/pair/1"}}));
    EXPECT_EQ(begin().value(), "http://127.0.0.1:8787/pair/1");
}

TEST_F(PairingClientTest, beginningAgainReplacesThePairingUnderWay) {
    open();
    ASSERT_TRUE(begin());
    service.requestAnswer({{"deviceCode", "code-2"}, {"approvalUrl", "https://example.com/pair/2"}});
    ASSERT_TRUE(begin());
    EXPECT_EQ(client->state().approvalURL, "https://example.com/pair/2");
    EXPECT_TRUE(eventually([&] { return clock.sleeperCount() == 1; }));
    service.pollAnswers({approved});
    nextPoll();
    EXPECT_TRUE(eventuallyIs(StateKind::paired));
    EXPECT_EQ(service.polls(), 1);
    EXPECT_EQ(service.requests("/v1/keys/poll")[0].body, R"({"deviceCode":"code-2"})");
}

TEST_F(PairingClientTest, disconnectsFromEveryState) {
    open();
    EXPECT_TRUE(runTask(client->unpair()));
    EXPECT_EQ(client->state(), PairingState::unpaired());

    ASSERT_TRUE(begin());
    EXPECT_TRUE(runTask(client->unpair()));
    EXPECT_EQ(client->state(), PairingState::unpaired());
    EXPECT_EQ(clock.sleeperCount(), 0);

    service.pollAnswers({approved});
    ASSERT_TRUE(begin());
    nextPoll();
    ASSERT_TRUE(eventuallyIs(StateKind::paired));
    changes.clear();
    EXPECT_TRUE(runTask(client->unpair()));
    EXPECT_EQ(client->state(), PairingState::unpaired());
    EXPECT_THAT(changes, ElementsAre(StateKind::unpaired));
    EXPECT_EQ(keys->key(), std::nullopt);
    EXPECT_EQ(stored(), std::nullopt);
}

TEST_F(PairingClientTest, neverActsOnAnAnswerAfterDisconnecting) {
    service.pollAnswers({approved});
    open();
    ASSERT_TRUE(begin());
    // The answer is under way, or being stored, when the user disconnects.
    nextPoll();
    EXPECT_TRUE(runTask(client->unpair()));
    settle();
    EXPECT_EQ(client->state(), PairingState::unpaired());
    EXPECT_EQ(keys->key(), std::nullopt);
    EXPECT_EQ(stored(), std::nullopt);
}

TEST_F(PairingClientTest, aLockedKeyringDoesNotLookUnpairedForGood) {
    session.store(keyService, keyAccount, "vk_old");
    session.lock();
    open();
    EXPECT_EQ(client->state(), PairingState::unpaired());
    EXPECT_EQ(keychain->problem()->kind, KeychainError::Kind::locked);
    session.unlock();
    EXPECT_TRUE(eventuallyIs(StateKind::paired));
    EXPECT_EQ(keys->key(), "vk_old");
}

TEST_F(PairingClientTest, anAbsentKeyringDoesNotLookUnpairedForGood) {
    session.store(keyService, keyAccount, "vk_old");
    session.kill();
    open();
    EXPECT_EQ(client->state(), PairingState::unpaired());
    EXPECT_EQ(clock.sleeperCount(), 0);
    session.startUnlocked();
    EXPECT_TRUE(eventuallyIs(StateKind::paired));
    EXPECT_THAT(changes, Each(StateKind::paired));
}

TEST_F(PairingClientTest, looksAgainByItselfWhenAKeyringOpensWithoutAWord) {
    session.store(keyService, keyAccount, "vk_old");
    session.lock();
    open();
    session.unlockSilently();
    EXPECT_EQ(clock.advanceToNextSleeper(), 30s);
    EXPECT_TRUE(eventuallyIs(StateKind::paired));
}

TEST_F(PairingClientTest, removesTheKeyLaterWhenTheKeyringIsGoneWhileDisconnecting) {
    session.store(keyService, keyAccount, "vk_old");
    open();
    session.kill();
    const auto removed = runTask(client->unpair());
    ASSERT_FALSE(removed);
    EXPECT_EQ(removed.error().kind, KeychainError::Kind::absent);
    EXPECT_EQ(client->state(), PairingState::unpaired());
    session.startUnlocked();
    EXPECT_TRUE(eventually([&] { return !stored(); }));
    EXPECT_EQ(client->state(), PairingState::unpaired());
}

TEST_F(PairingClientTest, aRefusedKeyFromTheEnvironmentLeavesTheStoredOneAlone) {
    session.store(keyService, keyAccount, "vk_stored");
    open("vk_environment");
    EXPECT_EQ(client->state(), PairingState::paired());
    EXPECT_EQ(keys->key(), "vk_environment");
    client->keyRejected();
    EXPECT_EQ(client->state(), PairingState::unpaired());
    EXPECT_EQ(keys->key(), std::nullopt);
    EXPECT_EQ(stored(), "vk_stored");

    open();
    client->keyRejected();
    EXPECT_EQ(client->state(), PairingState::unpaired());
    EXPECT_TRUE(eventually([&] { return !stored(); }));
}

TEST_F(PairingClientTest, mayBeDestroyedAtAnyMoment) {
    service.requestAnswer({.silent = true});
    open();
    auto beginning = client->begin({});
    client.reset();
    EXPECT_FALSE(runTask(std::move(beginning)));

    service.requestAnswer();
    open();
    ASSERT_TRUE(begin());
    ASSERT_TRUE(eventually([&] { return clock.sleeperCount() == 1; }));
    client.reset();
    EXPECT_EQ(clock.sleeperCount(), 0);

    // By its own observer, in the middle of a pairing that succeeds and of one that starts.
    service.pollAnswers({approved});
    open();
    ASSERT_TRUE(begin());
    client->onChange = [this] { client.reset(); };
    nextPoll();
    EXPECT_TRUE(eventually([&] { return client == nullptr; }));
    open();
    client->onChange = [this] { client.reset(); };
    EXPECT_TRUE(begin());
    EXPECT_EQ(client, nullptr);
}

} // namespace
} // namespace vantrell::testing
