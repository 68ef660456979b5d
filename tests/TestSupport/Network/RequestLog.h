// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "TestSupport/Network/ScriptedConnection.h"

#include <mutex>
#include <string>
#include <vector>

namespace vantrell::testing {

/// Requests noted by the threads of a server.
class RequestLog {
public:
    void note(const ReceivedRequest &request);
    std::vector<ReceivedRequest> all() const;
    int count() const { return int(all().size()); }
    /// Methods in order, separated by spaces.
    std::string methods() const;

private:
    mutable std::mutex m_mutex;
    std::vector<ReceivedRequest> m_requests;
};

} // namespace vantrell::testing
