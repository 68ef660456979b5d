// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "FlashScene.h"

#include "Support/HostTime.h"
#include "TestSupport/Desktop/X11Painter.h"

#include <algorithm>
#include <chrono>
#include <random>

namespace vantrell::bench {

namespace {

constexpr double announced = 0.3;
constexpr double shortestGap = 0.85;
constexpr double longestGap = 1.35;
constexpr std::uint32_t black = 0;
constexpr std::uint32_t white = 0xffffff;

void sleepUntil(double hostTime) {
    std::this_thread::sleep_for(std::chrono::duration<double>(hostTime - hostNow()));
}

} // namespace

FlashScene::FlashScene(int width, int height, Players players)
    : m_players(players),
      m_thread([this, width, height](const std::stop_token &stop) { play(stop, width, height); }) {}

void FlashScene::play(const std::stop_token &stop, int width, int height) {
    testing::X11Painter painter;
    const PixelRect light{0, flashTop, width, height - flashTop};
    painter.movePointer(width - 1, height - 1);
    std::mt19937 random(1);
    std::uniform_real_distribution<double> gap(shortestGap, longestGap);
    double next = hostNow() + 1;
    for (std::uint32_t number = 1; !stop.stop_requested(); ++number) {
        Planned flash{.number = number, .frames = {}};
        for (std::size_t i = 0; i < outputs; ++i)
            flash.frames[i] = m_players[i]->plan(next);
        sleepUntil(next - announced);
        painter.drawNumber(number, flashCodeX, flashCodeY);
        sleepUntil(next);
        painter.fill(light, white);
        painter.sync();
        flash.shownAt = hostNow();
        sleepUntil(next + flashLasts);
        painter.fill(light, black);
        painter.sync();
        m_shown.push_back(flash);
        next = std::max(next + gap(random), hostNow() + shortestGap - flashLasts);
    }
}

std::vector<Flash> FlashScene::finish() {
    m_thread.request_stop();
    m_thread.join();
    std::vector<Flash> flashes;
    for (const Planned &planned : m_shown) {
        Flash flash{planned.number, planned.shownAt, {}};
        for (std::size_t i = 0; i < outputs; ++i)
            if (planned.frames[i])
                flash.heardAt[i] = m_players[i]->heardAt(*planned.frames[i], planned.shownAt);
        flashes.push_back(flash);
    }
    return flashes;
}

} // namespace vantrell::bench
