// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Platform/Wayland/CastQuestions.h"

#include <QTimer>

#include <chrono>
#include <utility>

namespace vantrell {

namespace {

/// A desktop that still has the earlier choice answers in a second. Any other asks its user, who has just
/// said that nothing is to be shared.
constexpr std::chrono::seconds answerPatience(3);

} // namespace

Task<CastQuestions::Answer> CastQuestions::ask(ScreenCastSession::Wish wish,
                                               std::function<void(std::string)> keep, std::stop_token stop) {
    if (!wish.restoreToken || stop.stop_requested())
        co_return co_await ScreenCastSession::open(&m_portal, std::move(wish), stop);
    Question question{std::move(wish), std::move(keep), {}, stop};
    const OneShot<Answer> answered = question.answered;
    m_scope.start(this, &CastQuestions::hear, std::move(question));
    auto answer = co_await answered.wait(stop);
    if (!answer)
        co_return std::unexpected(ScreenCastSession::Failure(Cancelled{}));
    co_return std::move(*answer);
}

Task<> CastQuestions::hear(Question question, std::stop_token stop) {
    std::stop_source enough;
    // By a copy: this ends within the request, and takes its own along.
    const auto giveUp = [&enough] { std::stop_source(enough).request_stop(); };
    QTimer patience;
    patience.setSingleShot(true);
    QObject::connect(&patience, &QTimer::timeout, &patience, giveUp);
    const std::stop_callback alone(question.asker, [&patience] { patience.start(answerPatience); });
    const std::stop_callback end(stop, giveUp);
    auto opened = co_await ScreenCastSession::open(&m_portal, question.wish, enough.get_token());
    if (opened && opened->session->restoreToken())
        question.keep(*opened->session->restoreToken());
    // Nobody takes it any more: it is closed here.
    question.answered.resolve(std::move(opened));
}

} // namespace vantrell
