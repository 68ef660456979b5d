// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "ChildRun.h"

#include "API/SignedCapture.h"
#include "API/VantrellAPI.h"
#include "TestSupport/LocalService.h"

#include <filesystem>
#include <memory>
#include <string>

namespace vantrell::bench {

/// One discarding service, one file, and the programs that send the file to it.
class Contest {
public:
    static constexpr std::int64_t chunkBytes = 6 << 20;

    Contest(bool tls, std::filesystem::path folder);

    /// The file that is sent from now on, of that size.
    void setFile(std::int64_t bytes);
    /// Everything goes through this port instead of the service's own; 0 for its own.
    void setPort(int port) { m_port = port; }
    int servicePort() const;

    RunCost oursTus();
    /// curl sending the same chunks over one kept-alive connection.
    RunCost curlTus();
    RunCost tusJs();
    RunCost oursPut();
    RunCost curlPut();

    testing::LocalService &service() { return m_service; }

private:
    nlohmann::json descriptor(const std::string &transfer);
    std::filesystem::path write(const nlohmann::json &descriptor) const;
    std::string createUpload(const nlohmann::json &descriptor);
    Variables environment() const;
    void splitFile();

    std::filesystem::path m_folder;
    std::filesystem::path m_file;
    std::int64_t m_bytes = 0;
    bool m_tls;
    int m_port = 0;
    testing::LocalService m_service;
    std::string m_key;
    std::string m_project;
};

/// This program's own path, to start it once more as the sender.
std::string ownProgram();

} // namespace vantrell::bench
