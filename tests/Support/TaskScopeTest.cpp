// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Support/TaskScope.h"
#include "Support/BlockingWork.h"
#include "Support/OneShot.h"
#include "Support/SystemClock.h"
#include "TestSupport/ManualClock.h"
#include "TestSupport/RunTask.h"

#include <gtest/gtest.h>

#include <semaphore>
#include <thread>

using namespace std::chrono_literals;

namespace vantrell::testing {

namespace {

/// What a task saw, outliving the owner that the task belonged to.
struct Witness {
    bool resumed = false;
    bool cancelled = false;
    bool ownerWasAlive = false;
};

/// An object with a coroutine in the middle of some wait.
class Owner {
public:
    explicit Owner(std::shared_ptr<Witness> witness) : m_witness(std::move(witness)) {}

    void waitForOneShot(const OneShot<int> &shot) {
        m_scope.start(
            [](Owner *self, OneShot<int> s, std::stop_token stop) -> Task<> {
                const auto result = co_await s.wait(stop);
                self->saw(!result);
            },
            this, shot);
    }

    void sleep(Clock &clock) {
        m_scope.start(
            [](Owner *self, Clock *c, std::stop_token stop) -> Task<> {
                const auto result = co_await c->sleep(1h, stop);
                self->saw(!result);
            },
            this, &clock);
    }

    void block(std::shared_ptr<std::binary_semaphore> gate) {
        m_scope.start(
            [](Owner *self, std::shared_ptr<std::binary_semaphore> g, std::stop_token stop) -> Task<> {
                const auto result = co_await runBlocking(
                    [g] {
                        g->acquire();
                        return 1;
                    },
                    stop);
                self->saw(!result);
            },
            this, std::move(gate));
    }

    void nested(const OneShot<int> &shot) { m_scope.start(this, &Owner::outer, shot); }

    TaskScope &scope() { return m_scope; }

private:
    Task<> outer(OneShot<int> shot, std::stop_token stop) {
        const bool cancelled = co_await inner(shot, stop);
        saw(cancelled);
    }

    Task<bool> inner(OneShot<int> shot, std::stop_token stop) {
        const auto result = co_await shot.wait(stop);
        co_return !result;
    }

    void saw(bool cancelled) {
        m_witness->resumed = true;
        m_witness->cancelled = cancelled;
        m_witness->ownerWasAlive = m_alive;
    }

    std::shared_ptr<Witness> m_witness;
    bool m_alive = true;
    TaskScope m_scope;
};

class TaskScopeDestruction : public ::testing::Test {
protected:
    void expectUnwound() const {
        EXPECT_TRUE(witness->resumed);
        EXPECT_TRUE(witness->cancelled);
        EXPECT_TRUE(witness->ownerWasAlive);
    }

    std::shared_ptr<Witness> witness = std::make_shared<Witness>();
    std::unique_ptr<Owner> owner = std::make_unique<Owner>(witness);
};

TEST_F(TaskScopeDestruction, endsATaskThatWaitsForAOneShot) {
    const OneShot<int> shot;
    owner->waitForOneShot(shot);
    owner.reset();
    expectUnwound();
    EXPECT_FALSE(shot.resolve(1));
    settle();
}

TEST_F(TaskScopeDestruction, endsATaskWhoseResultIsAlreadyOnItsWay) {
    const OneShot<int> shot;
    owner->waitForOneShot(shot);
    EXPECT_TRUE(shot.resolve(1)); // posted, not yet delivered
    owner.reset();
    expectUnwound();
    settle(); // the posted resume finds nobody
}

TEST_F(TaskScopeDestruction, endsATaskThatSleepsOnEitherClock) {
    ManualClock manual;
    owner->sleep(manual);
    owner.reset();
    expectUnwound();
    EXPECT_EQ(manual.sleeperCount(), 0);

    witness = std::make_shared<Witness>();
    owner = std::make_unique<Owner>(witness);
    SystemClock real;
    owner->sleep(real);
    settle();
    owner.reset();
    expectUnwound();
}

TEST_F(TaskScopeDestruction, endsATaskThatWaitsForAWorkerThread) {
    const auto gate = std::make_shared<std::binary_semaphore>(0);
    owner->block(gate);
    owner.reset();
    expectUnwound();
    gate->release(); // the worker ends on its own, with nobody to resume
    settle();
}

TEST_F(TaskScopeDestruction, endsNestedTasksFromTheInsideOut) {
    const OneShot<int> shot;
    owner->nested(shot);
    owner.reset();
    expectUnwound();
}

TEST(TaskScopeDeathTest, endsTheProgramRatherThanWaitForATaskThatThrew) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_DEATH(
        {
            TaskScope scope;
            scope.start([](std::stop_token) -> Task<> {
                co_await std::suspend_never();
                throw std::out_of_range("nobody catches it");
            });
            std::_Exit(0);
        },
        "a task threw .*out_of_range");
}

TEST(TaskScope, joinsWhenItsTasksHaveEndedAndIsUsableAfterCancel) {
    const auto witness = std::make_shared<Witness>();
    Owner owner(witness);
    OneShot<int> first;
    owner.waitForOneShot(first);
    EXPECT_EQ(owner.scope().active(), 1);
    std::thread([first] { first.resolve(7); }).detach();
    runTask(owner.scope().join({}));
    EXPECT_EQ(owner.scope().active(), 0);
    EXPECT_FALSE(witness->cancelled);

    const OneShot<int> second;
    owner.waitForOneShot(second);
    owner.scope().cancel();
    EXPECT_TRUE(witness->cancelled);

    const OneShot<int> third;
    owner.waitForOneShot(third);
    third.resolve(1);
    settle();
    EXPECT_FALSE(witness->cancelled);
}

TEST(OneShot, keepsAResultThatCameBeforeTheWaitAndIgnoresLaterOnes) {
    const OneShot<int> shot;
    EXPECT_TRUE(shot.resolve(1));
    EXPECT_FALSE(shot.resolve(2));
    const auto wait = [](OneShot<int> s) -> Task<int> {
        const auto value = co_await s.wait({});
        co_return value.value_or(-1);
    };
    EXPECT_EQ(runTask(wait(shot)), 1);
}

TEST(OneShot, deliversOnTheWaitersThread) {
    const OneShot<int> shot;
    const auto wait = [](OneShot<int> s) -> Task<bool> {
        const auto here = std::this_thread::get_id();
        co_await s.wait({});
        co_return std::this_thread::get_id() == here;
    };
    Task<bool> task = wait(shot);
    std::thread resolver([shot] { shot.resolve(1); });
    EXPECT_TRUE(runTask(std::move(task)));
    resolver.join();
}

TEST(ManualClock, wakesSleepersInTheOrderOfTheirTimes) {
    ManualClock clock;
    TaskScope scope;
    auto order = std::make_shared<std::vector<int>>();
    const auto sleeper = [](Clock *c, std::shared_ptr<std::vector<int>> o, int seconds,
                            std::stop_token stop) -> Task<> {
        co_await c->sleep(std::chrono::seconds(seconds), stop);
        o->push_back(seconds);
    };
    scope.start(sleeper, &clock, order, 3);
    scope.start(sleeper, &clock, order, 1);
    clock.advance(2s);
    EXPECT_EQ(*order, std::vector{1});
    clock.advance(1s);
    EXPECT_EQ(*order, (std::vector{1, 3}));
}

} // namespace
} // namespace vantrell::testing
