// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "TestSupport/Network/LocalService.h"

#include <filesystem>
#include <random>
#include <string>

namespace vantrell::testing {

/// One batch of captures: uploaded by a process that is killed again and again while the service has faults,
/// then compared with what the service holds.
class Batch {
public:
    Batch(LocalService &service, int captureCount, unsigned seed);

    /// Kills and restarts until the uploader has ended by itself.
    void upload();
    /// Complains about everything that is not as it must be; true when there was nothing.
    bool verify();

    int kills() const { return m_kills; }
    int faults() const { return m_faults; }
    std::int64_t bytesSentAgain() const { return m_bytesSentAgain; }

private:
    void setRandomFaults();
    /// Whether the process ended by itself before so many milliseconds.
    bool runFor(int milliseconds);
    bool verifyLibrary();
    bool verifyTraffic();
    bool complain(const std::string &what);

    LocalService &m_service;
    std::mt19937 m_random;
    TemporaryFolder m_folder;
    std::string m_key;
    std::string m_project;
    int m_kills = 0;
    int m_faults = 0;
    std::int64_t m_bytesSentAgain = 0;
    bool m_isFine = true;
};

} // namespace vantrell::testing
