// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Platform/Wayland/CastCloser.h"

#include <utility>

namespace vantrell {

void CastCloser::close(std::unique_ptr<ScreenCastSession> session, std::shared_ptr<CastFeed> feed) {
    if (!feed)
        return;
    m_scope.start(
        [](std::unique_ptr<ScreenCastSession> closing, std::shared_ptr<CastFeed> pictures,
           std::stop_token stop) -> Task<> {
            co_await pictures->rest(stop);
            closing.reset();
            co_await pictures->gone(stop);
        },
        std::move(session), std::move(feed));
}

} // namespace vantrell
