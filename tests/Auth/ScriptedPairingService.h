// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "TestSupport/Network/ScriptedHttpServer.h"

#include <nlohmann/json.hpp>

#include <deque>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

namespace vantrell::testing {

/// The service's side of a pairing: answers what it was told to, in order, and the last answer for ever.
class ScriptedPairingService {
public:
    struct Answer {
        int status = 200;
        std::string body;
        /// Closes the connection instead.
        bool reset = false;
        /// Says nothing at all.
        bool silent = false;
    };

    ScriptedPairingService() { pollAnswers({R"({"status":"pending"})"}); }

    std::string url() const { return m_server.url(""); }

    /// The answer to the request for a code; more keys replace the usual ones, null removes one.
    void requestAnswer(const nlohmann::json &changes = nlohmann::json::object(), int status = 201) {
        nlohmann::json body{{"deviceCode", "code-1"},
                            {"approvalUrl", "https://example.com/pair/1"},
                            {"pollIntervalSeconds", 5},
                            {"expiresInSeconds", 600}};
        body.merge_patch(changes);
        requestAnswer(Answer{status, body.dump()});
    }
    void requestAnswer(Answer answer) {
        std::scoped_lock lock(m_mutex);
        m_request = std::move(answer);
    }

    void pollAnswers(const std::vector<std::string> &bodies) {
        std::vector<Answer> answers;
        for (const std::string &body : bodies)
            answers.push_back({200, body});
        pollAnswers(answers);
    }
    void pollAnswers(const std::vector<Answer> &answers) {
        std::scoped_lock lock(m_mutex);
        m_polls.assign(answers.begin(), answers.end());
    }

    /// What arrived under a path.
    std::vector<ReceivedRequest> requests(const std::string &target) const {
        std::vector<ReceivedRequest> found;
        for (const ReceivedRequest &request : m_log->all()) {
            if (request.target == target)
                found.push_back(request);
        }
        return found;
    }
    int polls() const { return int(requests("/v1/keys/poll").size()); }

private:
    void answer(ScriptedConnection &connection, const ReceivedRequest &request) {
        std::unique_lock lock(m_mutex);
        Answer answer = m_request;
        if (request.target == "/v1/keys/poll") {
            answer = m_polls.front();
            if (m_polls.size() > 1)
                m_polls.pop_front();
        }
        lock.unlock();
        if (answer.silent)
            connection.waitForClose();
        else if (answer.reset)
            connection.reset();
        else
            connection.answer(answer.status, "Content-Type: application/json\r\n", answer.body);
    }

    std::mutex m_mutex;
    Answer m_request;
    std::deque<Answer> m_polls;
    const std::shared_ptr<RequestLog> m_log = std::make_shared<RequestLog>();
    ScriptedHttpServer m_server{
        answering(m_log, [this](ScriptedConnection &c, const ReceivedRequest &r) { answer(c, r); })};
};

} // namespace vantrell::testing
