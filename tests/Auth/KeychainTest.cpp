// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Auth/Keychain.h"

#include "TestSupport/Account/SecretServiceSession.h"
#include "TestSupport/LogCapture.h"
#include "TestSupport/RunTask.h"

#include <QElapsedTimer>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <set>

using namespace std::chrono_literals;

namespace vantrell::testing {
namespace {

using Kind = KeychainError::Kind;

constexpr char service[] = "app.vantrell.capture.apikey";
constexpr char account[] = "api-key";
constexpr char key[] = "vk_live_ümlaut-0123456789";

class KeychainTest : public ::testing::Test {
protected:
    static Keychain::Result<std::optional<std::string>> read(Keychain &keychain) {
        return runTask(keychain.read(account, {}));
    }
    static Keychain::Result<void> write(Keychain &keychain, const std::string &value = key) {
        return runTask(keychain.write(value, account, {}));
    }
    static Keychain::Result<void> remove(Keychain &keychain) { return runTask(keychain.remove(account, {})); }

    static Kind kindOf(const auto &result) { return result ? Kind{} : result.error().kind; }

    LogCapture log;
    SecretServiceSession session;
};

TEST_F(KeychainTest, keepsTheKeyInTheKeyringAndServesItFromMemory) {
    session.startUnlocked();
    Keychain keychain;
    EXPECT_EQ(read(keychain).value(), std::nullopt);
    ASSERT_TRUE(write(keychain, "an older key"));
    ASSERT_TRUE(write(keychain));
    EXPECT_EQ(session.lookup(service, account), key);

    // Another process, or this one after a restart.
    Keychain other;
    EXPECT_EQ(other.cached(account), std::nullopt);
    EXPECT_EQ(read(other).value(), key);

    session.kill();
    EXPECT_EQ(keychain.cached(account), key);
    EXPECT_EQ(read(other).value(), key);
    EXPECT_FALSE(other.problem());
}

TEST_F(KeychainTest, removesAndCallsAMissingEntryRemoved) {
    session.startUnlocked();
    Keychain keychain;
    EXPECT_TRUE(remove(keychain));
    ASSERT_TRUE(write(keychain));
    EXPECT_TRUE(remove(keychain));
    EXPECT_EQ(keychain.cached(account), std::nullopt);
    EXPECT_EQ(read(keychain).value(), std::nullopt);
    EXPECT_EQ(session.lookup(service, account), std::nullopt);
}

TEST_F(KeychainTest, aReadUnderWayDoesNotBringARemovedKeyBack) {
    session.startUnlocked();
    session.store(service, account, key);
    Keychain keychain;
    auto reading = keychain.read(account, {});
    auto removing = keychain.remove(account, {});
    EXPECT_TRUE(runTask(std::move(reading)));
    EXPECT_TRUE(runTask(std::move(removing)));
    EXPECT_EQ(keychain.cached(account), std::nullopt);
}

TEST_F(KeychainTest, tellsAbsentLockedKilledAndHungApartWithinFiveSeconds) {
    session.startUnlocked();
    session.store(service, account, key);
    std::set<std::string> sentences;
    const auto expectKind = [&sentences](Kind kind, bool alsoChange) {
        Keychain keychain;
        QElapsedTimer elapsed;
        elapsed.start();
        EXPECT_EQ(kindOf(read(keychain)), kind);
        EXPECT_LT(elapsed.elapsed(), 5500);
        if (alsoChange) {
            EXPECT_EQ(kindOf(write(keychain)), kind);
            EXPECT_EQ(kindOf(remove(keychain)), kind);
        }
        ASSERT_TRUE(keychain.problem());
        sentences.insert(keychain.problem()->description());
    };
    session.lock();
    expectKind(Kind::locked, true);
    session.suspend();
    expectKind(Kind::notAnswering, false); // a change would still be made when the daemon goes on
    session.resume();
    session.kill();
    expectKind(Kind::absent, true);
    EXPECT_EQ(sentences.size(), 3u);
    // Nothing of this has touched what is stored.
    session.startUnlocked();
    EXPECT_EQ(session.lookup(service, account), key);
}

TEST_F(KeychainTest, survivesADaemonThatIsKilledInTheMiddle) {
    session.startUnlocked();
    session.store(service, account, key);
    session.suspend();
    Keychain keychain;
    auto reading = keychain.read(account, {});
    // Long enough for the request to be on its way; the daemon has not seen it.
    eventually([] { return false; }, 200ms);
    session.kill();
    EXPECT_EQ(kindOf(runTask(std::move(reading))), Kind::notAnswering);
    EXPECT_TRUE(log.contains("keychain notAnswering"));

    bool reachable = false;
    keychain.onReachable = [&reachable] { reachable = true; };
    session.startUnlocked();
    EXPECT_TRUE(eventually([&reachable] { return reachable; }));
    EXPECT_EQ(read(keychain).value(), key);
    EXPECT_TRUE(log.contains("keychain available"));
}

TEST_F(KeychainTest, asksToUnlockOnceAndLooksAgainWhenTheUserUnlocksElsewhere) {
    session.startUnlocked();
    session.store(service, account, key);
    session.kill();
    session.startLocked();
    Keychain keychain;
    for (int attempt = 0; attempt < 3; ++attempt)
        EXPECT_EQ(kindOf(read(keychain)), Kind::locked);
    EXPECT_EQ(kindOf(write(keychain)), Kind::locked);
    EXPECT_EQ(kindOf(remove(keychain)), Kind::locked);
    EXPECT_EQ(log.count("asks to be unlocked"), 1);
    EXPECT_EQ(log.count("keychain locked"), 1);

    bool reachable = false;
    keychain.onReachable = [&reachable] { reachable = true; };
    session.unlock();
    EXPECT_TRUE(eventually([&reachable] { return reachable; }));
    EXPECT_EQ(read(keychain).value(), key);
}

TEST_F(KeychainTest, saysThatThereIsNoKeyringToStoreIn) {
    session.startLocked();
    Keychain keychain;
    EXPECT_EQ(read(keychain).value(), std::nullopt);
    EXPECT_EQ(kindOf(write(keychain)), Kind::noKeyring);
}

TEST_F(KeychainTest, neverAsksWhenItMayNot) {
    session.startUnlocked();
    session.store(service, account, key);
    session.lock();
    Keychain keychain({.mayAskToUnlock = false});
    EXPECT_EQ(kindOf(read(keychain)), Kind::locked);
    EXPECT_FALSE(log.contains("asks to be unlocked"));
}

TEST_F(KeychainTest, endsWhatRunsWhenItIsDestroyedOrNotWaitedFor) {
    session.startUnlocked();
    session.suspend();
    auto keychain = std::make_unique<Keychain>();
    QElapsedTimer elapsed;
    elapsed.start();
    std::stop_source stop;
    auto stopped = keychain->read(account, stop.get_token());
    auto writing = keychain->write(key, account, {});
    stop.request_stop();
    EXPECT_EQ(kindOf(runTask(std::move(stopped))), Kind::cancelled);
    keychain.reset();
    EXPECT_EQ(kindOf(runTask(std::move(writing))), Kind::cancelled);
    EXPECT_LT(elapsed.elapsed(), 2000);
}

TEST_F(KeychainTest, neverKeepsTheCallersThreadWaiting) {
    session.startUnlocked();
    session.suspend();
    Keychain keychain({.patience = 1s});
    QElapsedTimer sinceBeat;
    qint64 longestGap = 0;
    QTimer heart;
    heart.setTimerType(Qt::PreciseTimer);
    sinceBeat.start();
    QObject::connect(&heart, &QTimer::timeout, &heart,
                     [&] { longestGap = std::max(longestGap, sinceBeat.restart()); });
    heart.start(5ms);
    EXPECT_EQ(kindOf(read(keychain)), Kind::notAnswering);
    // Generous for a busy machine; a call that blocks takes the whole second.
    EXPECT_LT(longestGap, 500);
}

} // namespace
} // namespace vantrell::testing
