// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include <utility>

namespace vantrell {

/// Runs an action at the end of a scope.
template <typename Action>
class [[nodiscard]] ScopeExit {
public:
    explicit ScopeExit(Action action) : m_action(std::move(action)) {}
    ~ScopeExit() { m_action(); }
    ScopeExit(const ScopeExit &) = delete;
    ScopeExit &operator=(const ScopeExit &) = delete;

private:
    Action m_action;
};

} // namespace vantrell
