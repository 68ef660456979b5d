// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Auth/Keychain.h"

#include "TestSupport/Account/KeyringPrompter.h"
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
using Asking = Keychain::Asking;

constexpr char service[] = "app.vantrell.capture.apikey";
constexpr char account[] = "api-key";
constexpr char key[] = "vk_live_ümlaut-0123456789";

class KeychainTest : public ::testing::Test {
protected:
    static Keychain::Result<std::optional<std::string>> read(Keychain &keychain) {
        return runTask(keychain.read(account, Asking::allowed, {}));
    }
    static Keychain::Result<void> write(Keychain &keychain, const std::string &value = key) {
        return runTask(keychain.write(value, account, Asking::allowed, {}));
    }
    static Keychain::Result<void> remove(Keychain &keychain) {
        return runTask(keychain.remove(account, Asking::allowed, {}));
    }

    static Kind kindOf(const auto &result) { return result ? Kind{} : result.error().kind; }

    LogCapture log;
    SecretServiceSession session;
};

TEST_F(KeychainTest, keepsTheKeyInTheKeyringAndServesItFromMemory) {
    session.startUnlocked();
    Keychain keychain;
    EXPECT_TRUE(remove(keychain)); // nothing there is as good as removed
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

TEST_F(KeychainTest, aReadUnderWayDoesNotBringARemovedKeyBack) {
    session.startUnlocked();
    session.store(service, account, key);
    Keychain keychain;
    auto reading = keychain.read(account, Asking::never, {});
    EXPECT_TRUE(remove(keychain));
    EXPECT_TRUE(runTask(std::move(reading)));
    EXPECT_EQ(keychain.cached(account), std::nullopt);
    EXPECT_EQ(session.lookup(service, account), std::nullopt);
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
    auto reading = keychain.read(account, Asking::never, {});
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

TEST_F(KeychainTest, waitsForTheDialogAndAsksAgainOnlyForANewWish) {
    session.startUnlocked();
    session.store(service, account, key);
    session.lock();
    KeyringPrompter prompter;
    Keychain keychain;
    int told = 0;
    keychain.onDialog = [&told] { ++told; };
    EXPECT_EQ(kindOf(runTask(keychain.read(account, Asking::never, {}))), Kind::locked);
    EXPECT_EQ(prompter.shown(), 0);

    // Two wishes share a dialog. Longer than the keyring itself is given.
    auto reading = keychain.read(account, Asking::allowed, {});
    auto writing = keychain.write("new", account, Asking::allowed, {});
    EXPECT_FALSE(eventually([&] { return reading.isReady() || writing.isReady(); }, 6s));
    EXPECT_EQ(told, 1);
    prompter.dismiss();
    EXPECT_EQ(kindOf(runTask(std::move(reading))), Kind::locked);
    EXPECT_EQ(kindOf(runTask(std::move(writing))), Kind::locked);
    EXPECT_EQ(kindOf(runTask(keychain.read(account, Asking::never, {}))), Kind::locked);
    EXPECT_EQ(prompter.shown(), 1);

    auto again = keychain.read(account, Asking::allowed, {});
    ASSERT_TRUE(eventually([&] { return prompter.isOpen(); }));
    EXPECT_EQ(prompter.shown(), 2);
    prompter.typePassword(session);
    EXPECT_EQ(runTask(std::move(again)).value(), key);
    EXPECT_EQ(log.count("keychain locked"), 1);
}

TEST_F(KeychainTest, anUnansweredDialogIsNotWaitedForWithoutLimitAndDoesNotTakeTheKeyringDown) {
    session.startUnlocked();
    session.store(service, account, key);
    session.lock();
    KeyringPrompter prompter;
    auto keychain = std::make_unique<Keychain>(Keychain::Options{.dialogPatience = 1s});
    EXPECT_EQ(kindOf(read(*keychain)), Kind::locked);
    EXPECT_TRUE(prompter.isOpen());
    keychain.reset();
    keychain = std::make_unique<Keychain>();
    prompter.typePassword(session);
    EXPECT_EQ(read(*keychain).value(), key);
}

TEST_F(KeychainTest, saysThatThereIsNoKeyringToStoreIn) {
    session.startLocked();
    Keychain keychain;
    EXPECT_EQ(read(keychain).value(), std::nullopt);
    EXPECT_EQ(kindOf(write(keychain)), Kind::noKeyring);
}

TEST_F(KeychainTest, endsWhatRunsWhenItIsDestroyedOrNotWaitedFor) {
    session.startUnlocked();
    session.suspend();
    auto keychain = std::make_unique<Keychain>();
    QElapsedTimer elapsed;
    elapsed.start();
    std::stop_source stop;
    auto stopped = keychain->read(account, Asking::never, stop.get_token());
    auto writing = keychain->write(key, account, Asking::never, {});
    stop.request_stop();
    EXPECT_EQ(kindOf(runTask(std::move(stopped))), Kind::cancelled);
    int mon = system("timeout 4 dbus-monitor --session > /tmp/dbusmon.txt 2>&1 & sleep 0.3");
    (void)mon;
    keychain.reset();
    EXPECT_EQ(kindOf(runTask(std::move(writing))), Kind::cancelled);
    EXPECT_LT(elapsed.elapsed(), 2000);
}

TEST_F(KeychainTest, neverKeepsTheCallersThreadWaiting) {
    session.startUnlocked();
    session.suspend();
    Keychain keychain({.patience = 1s, .dialogPatience = 1s});
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
