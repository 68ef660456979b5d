// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace vantrell {

/// One line of the report: how it is, and what to do about it. Nothing in it is secret or tells who the user
/// is: people put it into bug reports.
struct Finding {
    enum class State {
        ok = 1,
        /// Recording works; something would be better.
        advice,
        /// Something that is wanted does not work.
        problem,
    };
    State state = State::ok;
    /// "Sound".
    std::string topic;
    std::string text;
    /// Empty when there is nothing to do.
    std::string advice;
};

using Findings = std::vector<Finding>;

/// "ok", "advice", "problem".
std::string_view spelling(Finding::State state);

inline Finding okFinding(std::string topic, std::string text) {
    return {Finding::State::ok, std::move(topic), std::move(text), {}};
}
inline Finding adviceFinding(std::string topic, std::string text, std::string advice) {
    return {Finding::State::advice, std::move(topic), std::move(text), std::move(advice)};
}
inline Finding problemFinding(std::string topic, std::string text, std::string advice) {
    return {Finding::State::problem, std::move(topic), std::move(text), std::move(advice)};
}

} // namespace vantrell
