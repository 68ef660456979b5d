// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "ChildRun.h"
#include "DelayProxy.h"
#include "DiscardServer.h"

#include <nlohmann/json.hpp>

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>

namespace vantrell::bench {

/// One discarding server, one file, and the programs that send the file to it.
class Contest {
public:
    static constexpr std::int64_t chunkBytes = 6 << 20;

    struct Line {
        bool tls = false;
        /// Half of a round trip; 0 leaves the line as it is.
        std::chrono::milliseconds delay{0};
    };

    Contest(Line line, std::filesystem::path folder);

    /// The file that is sent from now on, of that size.
    void setFile(std::int64_t bytes);

    RunCost oursTus();
    /// curl sending the same chunks over one kept-alive connection.
    RunCost curlTus();
    RunCost tusJs();
    RunCost oursPut();
    RunCost curlPut();

    /// Connections since the last call.
    int takeConnectionCount() { return m_server.takeConnectionCount(); }

private:
    std::string url(const std::string &path) const;
    std::filesystem::path describe(const nlohmann::json &descriptor) const;
    std::filesystem::path describeTus() const;
    std::string createUpload();
    RunCost runTus(const Command &command);
    void splitFile();

    std::filesystem::path m_folder;
    std::filesystem::path m_file;
    std::int64_t m_bytes = 0;
    bool m_tls;
    DiscardServer m_server;
    std::unique_ptr<DelayProxy> m_proxy;
    Variables m_environment;
};

/// The path of `upload-send`, which lies beside this program.
std::string senderProgram();

} // namespace vantrell::bench
