// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Support/Task.h"

#include <QCoroTask>

#include <chrono>
#include <functional>
#include <memory>
#include <optional>

namespace vantrell::testing {

/// Runs the event loop until the task has ended and returns its result.
template <typename T>
T runTask(Task<T> task) {
    return QCoro::waitFor(std::move(task));
}

/// Runs the event loop until `condition` holds; false when it does not within `patience`.
bool eventually(const std::function<bool()> &condition,
                std::chrono::milliseconds patience = std::chrono::seconds(20));

/// Runs what is queued in the event loop now, and what that queues.
void settle();

} // namespace vantrell::testing
