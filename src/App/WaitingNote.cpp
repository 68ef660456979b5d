// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "App/WaitingNote.h"

#include "Panels/Sentence.h"
#include "Support/Log.h"

#include <utility>

using namespace std::chrono_literals;

namespace vantrell {

namespace {

/// Longer than it takes to answer a question that can be seen.
constexpr auto desktopPatience = 15s;

} // namespace

WaitingNote::WaitingNote(Notifier &notifier, Clock &clock, std::function<void()> cancel)
    : m_notifier(notifier), m_clock(clock), m_cancel(std::move(cancel)) {}

void WaitingNote::follow(bool isWaiting) {
    if (!isWaiting) {
        m_scope.cancel();
        if (const auto shown = std::exchange(m_shown, 0))
            m_notifier.withdraw(shown);
    } else if (m_scope.active() == 0 && !m_shown) {
        m_scope.start(this, &WaitingNote::tell);
    }
}

Task<> WaitingNote::tell(std::stop_token stop) {
    if (!co_await m_clock.sleep(desktopPatience, stop))
        co_return;
    qCInfo(logApp, "the desktop lets the recording wait");
    m_shown = m_notifier.show(
        {.title = inUsersLanguage(std::string("Waiting for the desktop")),
         .body = inUsersLanguage(std::string("It has not said yet what may be recorded. If it asks nothing, "
                                             "cancel, then log out and in again.")),
         .actions = {{"cancel", inUsersLanguage(std::string("Cancel"))}}},
        [this](const std::string &) { m_cancel(); });
}

} // namespace vantrell
