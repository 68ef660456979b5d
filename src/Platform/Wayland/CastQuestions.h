// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Platform/Wayland/ScreenCastSession.h"
#include "Support/OneShot.h"
#include "Support/Task.h"
#include "Support/TaskScope.h"

#include <expected>
#include <functional>
#include <stop_token>
#include <string>

namespace vantrell {

/// Asks the desktop to share. To name an earlier choice uses its name up, and the answer brings the next one:
/// so such a question is heard to its end even when nobody waits for the sharing any more, which is then
/// closed unseen. Main thread.
class CastQuestions {
public:
    using Answer = std::expected<ScreenCastSession::Opened, ScreenCastSession::Failure>;

    /// `portal` outlives it.
    explicit CastQuestions(PortalRequests &portal) : m_portal(portal) {}

    /// As ScreenCastSession::open. `keep` is told of the name that replaces the wish's.
    Task<Answer> ask(ScreenCastSession::Wish wish, std::function<void(std::string)> keep,
                     std::stop_token stop);

    /// Waits for the questions that nobody waits for, some seconds at most.
    Task<> answered(std::stop_token stop) { return m_scope.join(std::move(stop)); }

private:
    struct Question {
        ScreenCastSession::Wish wish;
        std::function<void(std::string)> keep;
        OneShot<Answer> answered;
        std::stop_token asker;
    };
    Task<> hear(Question question, std::stop_token stop);

    PortalRequests &m_portal;
    TaskScope m_scope;
};

} // namespace vantrell
