// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "TestSupport/ChildProcess.h"
#include "TestSupport/TemporaryFolder.h"

#include <nlohmann/json.hpp>

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace vantrell::testing {

/// The project's own library service in test mode, started on a free port of this computer with an empty
/// library. It ends with the object, also when the test dies. The control calls block; a call that the
/// service refuses ends the test program with its answer.
class LocalService {
public:
    struct Options {
        /// More of the service's options: {"--transfer", "tus", "--chunk-size", "100000"}.
        std::vector<std::string> arguments;
        /// Serve https with a certificate of its own (`authority`).
        bool tls = false;
    };

    LocalService() : LocalService(Options{}) {}
    explicit LocalService(Options options);
    ~LocalService();
    LocalService(const LocalService &) = delete;
    LocalService &operator=(const LocalService &) = delete;

    /// "http://127.0.0.1:PORT", the same after a restart.
    const std::string &url() const { return m_url; }
    /// The address that makes the first browser that opens it the owner's; another one after a restart.
    const std::string &signInUrl() const { return m_signInUrl; }
    /// The file that a client has to trust when the service speaks https.
    std::filesystem::path authority() const { return m_folder / "authority.pem"; }

    /// A key of the owner's account, or of another one that is made when needed.
    std::string createKey(const std::string &account = {});
    void revokeKey(const std::string &key);
    /// Returns the id.
    std::string createProject(const std::string &name);
    void deleteProject(const std::string &id);

    /// One of its settings: `configure({{"maxVideoUploadBytes", 1000}})`.
    void configure(const nlohmann::json &changes);

    /// Adds a fault for matching requests, see the service's README: `fault("PATCH", "/storage/tus",
    /// {{"resetAfterBytes", 1000}})` or `fault("POST", "/confirm", "swallowAnswer", 2)`. `times` 0: always.
    void fault(const std::string &method, const std::string &pathPattern, const nlohmann::json &action,
               int times = 1, int skip = 0);
    void clearFaults();

    struct LogEntry {
        int connection = 0;
        std::string method;
        std::string path;
        nlohmann::json headers;
        std::int64_t bodyBytes = 0;
        std::optional<int> status;
        std::string outcome;
    };
    /// The requests so far whose path holds `pathPart`, in order of arrival.
    std::vector<LogEntry> requests(const std::string &pathPart = {});
    /// Their methods, separated by spaces.
    std::string methods(const std::string &pathPart = {});
    void clearLog();

    /// The captures of the library as its JSON describes them.
    std::vector<nlohmann::json> captures(const std::string &key);
    /// The usage events received.
    std::vector<nlohmann::json> events();

    /// Any control call; the answer's JSON, null when it has none.
    nlohmann::json call(const std::string &method, const std::string &path,
                        const nlohmann::json &body = nullptr, const std::string &key = {});

    /// Ends the process: the port refuses connections until `restart`, which keeps the library.
    void stop();
    void restart();
    pid_t pid() const { return m_process ? m_process->pid() : -1; }

private:
    void start(int port);

    Options m_options;
    TemporaryFolder m_folder;
    std::string m_url;
    std::string m_signInUrl;
    std::string m_controlKey;
    int m_port = 0;
    std::unique_ptr<ChildProcess> m_process;
};

} // namespace vantrell::testing
