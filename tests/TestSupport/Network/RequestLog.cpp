// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "TestSupport/Network/RequestLog.h"

namespace vantrell::testing {

void RequestLog::note(const ReceivedRequest &request) {
    std::scoped_lock lock(m_mutex);
    m_requests.push_back(request);
}

std::vector<ReceivedRequest> RequestLog::all() const {
    std::scoped_lock lock(m_mutex);
    return m_requests;
}

std::string RequestLog::methods() const {
    std::string text;
    for (const ReceivedRequest &request : all())
        text += (text.empty() ? "" : " ") + request.method;
    return text;
}

} // namespace vantrell::testing
