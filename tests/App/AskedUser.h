// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "App/Ask.h"

#include <string>
#include <vector>

namespace vantrell::testing {

/// A user who is asked: notes the questions and gives the answers that were prepared, in order; without one
/// the question stays open until its stop.
class AskedUser {
public:
    struct Question {
        std::string message;
        std::string informative;
        std::vector<std::string> buttons;
    };

    Ask ask();
    void answers(int button) { m_answers.push_back(button); }

    std::vector<Question> questions;

private:
    static Task<int> answer(AskedUser *user, Question question, std::stop_token stop);

    std::vector<int> m_answers;
};

} // namespace vantrell::testing
