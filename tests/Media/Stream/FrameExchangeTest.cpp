// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Media/Stream/FrameExchange.h"

#include "Support/HostTime.h"

#include <gtest/gtest.h>

#include <atomic>
#include <random>
#include <thread>

namespace vantrell::testing {

namespace {

constexpr PixelSize exchangeSize{64, 64};

/// Writes `value` into a block of a slot as the capture thread does, after what the slot misses.
void update(FrameExchange &exchange, FrameExchange::Slot &slot, int column, int row, std::uint8_t value) {
    if (exchange.latest() && exchange.latest() != &slot) {
        for (int y = 0; y < 4; ++y)
            for (int x = 0; x < 4; ++x)
                if (slot.stale.isMarked(x, y))
                    slot.frame.copyBlock(exchange.latest()->frame, x, y);
    }
    slot.stale.clear();
    for (int y = 0; y < 16; ++y)
        std::fill_n(slot.frame.luma() + (row * 16 + y) * slot.frame.stride() + column * 16, 16, value);
}

TEST(FrameExchange, updatesOnePictureInPlaceWhileTheEncoderKeepsUp) {
    FrameExchange exchange(exchangeSize, 3);
    const FrameExchange::Slot *only = nullptr;
    for (int i = 0; i < 5; ++i) {
        auto *slot = exchange.acquire();
        only = only ? only : slot;
        EXPECT_EQ(slot, only);
        exchange.submit(slot, BlockMap(exchangeSize), i);
        const auto job = exchange.next();
        ASSERT_TRUE(job);
        exchange.done(*job);
    }
}

TEST(FrameExchange, everyJobShowsEverythingUpToItsTimeHoweverTheThreadsRun) {
    FrameExchange exchange(exchangeSize, 3);
    std::array<std::array<std::uint8_t, 16>, 501> expected{};
    std::atomic<int> wrong = 0;
    std::thread encoder([&] {
        std::mt19937 random(2);
        while (const auto job = exchange.next()) {
            const auto &wanted = expected[std::size_t(job->hostTime)];
            for (int block = 0; block < 16; ++block) {
                const std::uint8_t *luma = job->slot->frame.luma() +
                                           std::ptrdiff_t(block / 4) * 16 * job->slot->frame.stride() +
                                           block % 4 * 16;
                wrong += luma[5 * job->slot->frame.stride() + 7] != wanted[std::size_t(block)];
            }
            for (unsigned i = 0; i < random() % 2000; ++i)
                std::atomic_signal_fence(std::memory_order_seq_cst);
            exchange.done(*job);
        }
    });
    std::mt19937 random(1);
    expected[0].fill(16);
    for (std::size_t time = 1; time <= 500; ++time) {
        auto *slot = exchange.acquire();
        const int block = int(random() % 16);
        const auto value = std::uint8_t(random());
        update(exchange, *slot, block % 4, block / 4, value);
        expected[time] = expected[time - 1];
        expected[time][std::size_t(block)] = value;
        BlockMap changed(exchangeSize);
        changed.markBlock(block % 4, block / 4);
        exchange.submit(slot, changed, double(time));
    }
    exchange.close();
    encoder.join();
    EXPECT_EQ(wrong, 0);
}

TEST(FrameExchange, makesTheCaptureWaitWhenAllPicturesAreTakenAndLetsItGoWhenTheEncoderFails) {
    FrameExchange exchange(exchangeSize, 2);
    exchange.submit(exchange.acquire(), BlockMap(exchangeSize), 1);
    exchange.submit(exchange.acquire(), BlockMap(exchangeSize), 2);
    std::atomic<bool> returned = false;
    FrameExchange::Slot *slot = nullptr;
    std::thread capture([&] {
        slot = exchange.acquire();
        returned = true;
    });
    EXPECT_FALSE(returned);
    exchange.abandon();
    capture.join();
    EXPECT_EQ(slot, nullptr);
    EXPECT_FALSE(exchange.next());
}

TEST(FrameExchange, givesAPictureThatRestsOnceMoreUnlessItIsBeingChanged) {
    FrameExchange exchange(exchangeSize, 2);
    exchange.submit(exchange.acquire(), BlockMap(exchangeSize), 1);
    const auto job = exchange.next();
    exchange.done(*job);
    const auto repeated = exchange.next(2, *job);
    ASSERT_TRUE(repeated);
    EXPECT_TRUE(repeated->isRepeated);
    EXPECT_EQ(repeated->slot, job->slot);
    EXPECT_EQ(repeated->hostTime, 2);
    // The capture goes on in another picture meanwhile.
    auto *other = exchange.acquire();
    EXPECT_NE(other, job->slot);
    exchange.giveBack(other);
    exchange.done(*repeated);

    auto *changing = exchange.acquire();
    ASSERT_EQ(changing, job->slot);
    std::optional<FrameExchange::Job> next;
    std::thread encoder([&] { next = exchange.next(2, *repeated); });
    exchange.submit(changing, BlockMap(exchangeSize), 3);
    encoder.join();
    ASSERT_TRUE(next);
    EXPECT_FALSE(next->isRepeated);
    EXPECT_EQ(next->hostTime, 3);
    exchange.close();
    EXPECT_FALSE(exchange.next(hostNow() + 3600, *next));
}

} // namespace
} // namespace vantrell::testing
