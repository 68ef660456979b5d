// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "AskedUser.h"

#include "Support/OneShot.h"

namespace vantrell::testing {

Ask AskedUser::ask() {
    return [this](std::string message, std::string informative, std::vector<std::string> buttons,
                  std::stop_token stop) {
        return answer(this, {std::move(message), std::move(informative), std::move(buttons)}, stop);
    };
}

Task<int> AskedUser::answer(AskedUser *user, Question question, std::stop_token stop) {
    const int last = int(question.buttons.size()) - 1;
    user->questions.push_back(std::move(question));
    const OneShot<int> given;
    if (!user->m_answers.empty()) {
        given.resolve(user->m_answers.front());
        user->m_answers.erase(user->m_answers.begin());
    }
    co_return (co_await given.wait(stop)).value_or(last);
}

} // namespace vantrell::testing
