// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "TestSupport/TemporaryFolder.h"

#include <QProcess>
#include <QProcessEnvironment>

#include <nlohmann/json.hpp>

#include <chrono>
#include <memory>
#include <string>
#include <vector>

namespace vantrell::testing {

/// The program as a user runs it, with folders of its own. Its display is the process's.
class CaptureProgram {
public:
    struct Ended {
        int exitCode = -1;
        std::string output;
        std::string errors;

        /// The last line of the output.
        nlohmann::json json() const;
    };

    CaptureProgram();
    /// Another process of the same user: the same folders and environment.
    CaptureProgram(const CaptureProgram &other)
        : m_folder(other.m_folder), m_environment(other.m_environment) {}

    void set(const std::string &variable, const std::string &value);
    Ended run(const std::vector<std::string> &arguments);

    /// Starts it; with `wrapper`, a command that starts it in turn.
    void start(const std::vector<std::string> &arguments, const std::vector<std::string> &wrapper = {});
    /// Waits until its log says `line`, after what was waited for before.
    void waitForLog(const std::string &line);
    /// The next line of its output, which `finish` then leaves out.
    std::string nextLine();
    qint64 processId() const { return m_process.processId(); }
    /// Lets the process's end be seen, for at most that long.
    void poll(std::chrono::milliseconds patience) { m_process.waitForFinished(int(patience.count())); }
    bool isRunning() const { return m_process.state() != QProcess::NotRunning; }
    void signal(int number);
    /// Waits for the end of what was started.
    Ended finish();

    std::filesystem::path captures() const { return *m_folder / "data/VantrellCapture/Captures"; }
    std::filesystem::path folder() const { return m_folder->path(); }
    /// Names of the files in the captures folder.
    std::vector<std::string> captureFiles() const;

private:
    std::shared_ptr<TemporaryFolder> m_folder;
    QProcessEnvironment m_environment;
    QProcess m_process;
    std::string m_errors;
    /// How much of it was waited for.
    std::size_t m_heard = 0;
};

} // namespace vantrell::testing
