// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Auth/PairingClient.h"

#include "Analytics/Analytics.h"
#include "Auth/KeyProvider.h"
#include "ScriptedPairingService.h"
#include "TestSupport/Account/KeyringPrompter.h"
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

TEST_F(PairingClientTest, pairsWhenTheUserApproves) {
    service.pollAnswers(
        {R"({"status":"pending"})", R"({"status":"approved"})", R"({"status":"brand new"})", approved});
    open();
    EXPECT_EQ(client->state(), PairingState::unpaired());
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
    // The third sleep of the first begins before the deadline.
    for (const auto &[expiry, polls] : std::vector<std::pair<int, int>>{{12, 3}, {0, 3}, {-5, 3}}) {
        service.requestAnswer({{"expiresInSeconds", expiry}});
        open();
        changes.clear();
        ASSERT_TRUE(begin());
        const auto lines = log.lines().size();
        while (service.polls() < polls) {
            EXPECT_EQ(client->state().kind, StateKind::waitingForApproval);
            nextPoll();
        }
        EXPECT_TRUE(eventuallyIs(StateKind::unpaired));
        EXPECT_THAT(changes, ElementsAre(StateKind::waitingForApproval, StateKind::unpaired));
        EXPECT_EQ(client->outcome(), PairingOutcome::expired);
        EXPECT_EQ(clock.sleeperCount(), 0);
        EXPECT_EQ(log.lines().size(), lines);
    }
}

TEST_F(PairingClientTest, pollsAtLeastASecondApart) {
    for (const std::int64_t interval : {std::int64_t(0), std::numeric_limits<std::int64_t>::min()}) {
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
    session.store(keyService, keyAccount, "vk_old");
    open();
    int failures = 0;
    const auto expectRefusal = [&](const std::string &sentence) {
        const auto result = begin();
        ASSERT_FALSE(result);
        EXPECT_EQ(result.error().description(), sentence);
        EXPECT_EQ(log.count("app.vantrell.capture.auth: pairing request failed"), ++failures);
    };
    service.requestAnswer(nlohmann::json::object(), 200);
    expectRefusal("Request failed (200)");
    service.requestAnswer({.reset = true});
    expectRefusal("Network error");
    service.requestAnswer(ScriptedPairingService::Answer{201, "<html>"});
    expectRefusal("Unexpected server response");
    using Changes = nlohmann::json::object_t;
    for (const Changes &change :
         {Changes{{"deviceCode", nullptr}}, Changes{{"pollIntervalSeconds", 2.5}},
          Changes{{"expiresInSeconds", "600"}}, Changes{{"approvalUrl", "http://example.com/pair"}},
          Changes{{"approvalUrl", "javascript:alert(1)"}}, Changes{{"approvalUrl", "https://"}},
          Changes{{"approvalUrl", "https://trusted.com@example.com/"}}}) {
        SCOPED_TRACE(nlohmann::json(change));
        service.requestAnswer(nlohmann::json(change));
        expectRefusal("Unexpected server response");
    }
    EXPECT_EQ(client->state(), PairingState::paired());
    EXPECT_THAT(changes, Each(StateKind::paired));
    EXPECT_EQ(stored(), "vk_old");
    service.requestAnswer({{"approvalUrl", "http://127.0.0.1:8787/pair/1"}});
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

TEST_F(PairingClientTest, disconnectsFromEveryStateForGood) {
    service.pollAnswers({approved});
    open();
    EXPECT_TRUE(runTask(client->unpair()));
    ASSERT_TRUE(begin());
    EXPECT_TRUE(runTask(client->unpair()));
    EXPECT_EQ(clock.sleeperCount(), 0);
    ASSERT_TRUE(begin());
    // The answer is under way, or being stored, when the user disconnects.
    nextPoll();
    EXPECT_TRUE(runTask(client->unpair()));
    settle();
    EXPECT_EQ(client->state(), PairingState::unpaired());
    EXPECT_EQ(stored(), std::nullopt);

    ASSERT_TRUE(begin());
    nextPoll();
    ASSERT_TRUE(eventuallyIs(StateKind::paired));
    changes.clear();
    EXPECT_TRUE(runTask(client->unpair()));
    EXPECT_THAT(changes, ElementsAre(StateKind::unpaired));
    EXPECT_EQ(keys->key(), std::nullopt);
    EXPECT_EQ(stored(), std::nullopt);
}

TEST_F(PairingClientTest, aClosedKeyringDoesNotLookUnpairedForGood) {
    session.store(keyService, keyAccount, "vk_old");
    session.lock();
    open();
    EXPECT_EQ(client->state(), PairingState::unpaired());
    EXPECT_EQ(keychain->problem()->kind, KeychainError::Kind::locked);
    auto certain = client->certain({});
    settle();
    EXPECT_FALSE(certain.isReady());
    session.unlock();
    runTask(std::move(certain));
    EXPECT_TRUE(eventuallyIs(StateKind::paired));
    EXPECT_EQ(keys->key(), "vk_old");

    session.lock();
    open();
    session.unlockSilently();
    EXPECT_EQ(clock.advanceToNextSleeper(), 30s);
    EXPECT_TRUE(eventuallyIs(StateKind::paired));

    session.kill();
    open();
    EXPECT_EQ(client->state(), PairingState::unpaired());
    EXPECT_EQ(clock.sleeperCount(), 0);
    session.startUnlocked();
    EXPECT_TRUE(eventuallyIs(StateKind::paired));
    EXPECT_THAT(changes, Each(StateKind::paired));
}

TEST_F(PairingClientTest, anApprovalWhileTheKeyringIsClosedIsNeverLost) {
    service.pollAnswers({approved});
    open();
    session.lock();
    KeyringPrompter prompter;
    ASSERT_TRUE(begin());
    ASSERT_TRUE(eventually([&] { return prompter.isOpen(); }));
    nextPoll();
    // For longer than the keyring itself is given.
    EXPECT_FALSE(eventually([&] { return client->state().kind != StateKind::waitingForApproval; }, 6s));
    EXPECT_EQ(keys->key(), "vk_approved");

    prompter.dismiss();
    EXPECT_TRUE(eventuallyIs(StateKind::paired));
    EXPECT_EQ(client->outcome(), PairingOutcome::notStoredYet);
    EXPECT_EQ(keys->key(), "vk_approved");
    EXPECT_EQ(clock.advanceToNextSleeper(), 30s);
    settle();
    EXPECT_EQ(prompter.shown(), 1);

    auto wish = client->ready({});
    ASSERT_TRUE(eventually([&] { return prompter.isOpen(); }));
    prompter.typePassword(session);
    runTask(std::move(wish));
    EXPECT_EQ(client->outcome(), PairingOutcome::approved);
    EXPECT_EQ(client->state(), PairingState::paired());
    EXPECT_EQ(stored(), "vk_approved");
    EXPECT_EQ(keys->key(), "vk_approved");
    EXPECT_EQ(analytics.count(), 1);
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

TEST_F(PairingClientTest, aKeyOfTheEnvironmentIsForgottenWhenItIsRefusedOrTheUserDisconnects) {
    session.store(keyService, keyAccount, "vk_stored");
    open("vk_environment");
    EXPECT_EQ(client->state(), PairingState::paired());
    EXPECT_EQ(keys->key(), "vk_environment");
    client->keyRejected();
    EXPECT_TRUE(eventuallyIs(StateKind::paired));
    EXPECT_THAT(changes, ElementsAre(StateKind::unpaired, StateKind::paired));
    EXPECT_EQ(keys->key(), "vk_stored");
    client->keyRejected();
    EXPECT_EQ(client->state(), PairingState::unpaired());
    EXPECT_TRUE(eventually([&] { return !stored(); }));

    session.store(keyService, keyAccount, "vk_stored");
    open("vk_environment");
    EXPECT_TRUE(runTask(client->unpair()));
    EXPECT_EQ(keys->key(), std::nullopt);
    EXPECT_EQ(stored(), std::nullopt);
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
