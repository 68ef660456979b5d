// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "TestSupport/ChildProcess.h"
#include "TestSupport/ScopedEnvironment.h"
#include "TestSupport/TemporaryFolder.h"

#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace vantrell::testing {

/// A sound server of a test's own (PipeWire with its PulseAudio interface) without any hardware, gone with
/// the object. While it lives, this process's PulseAudio and PipeWire programs and libraries find it and no
/// other: the same server has the cameras (VirtualCamera).
class SoundSession {
public:
    /// With the default output `speaker` and the default microphone `microphone`.
    SoundSession();
    ~SoundSession();

    static constexpr const char *speaker = "vspeaker";
    static constexpr const char *microphone = "vmic";

    /// Connects a microphone. What is played into the output "<name>_in" is heard by it.
    void plugMicrophone(const std::string &name);
    /// What is played into its output stays there.
    void unplugMicrophone(const std::string &name);
    void plugSpeaker(const std::string &name);
    void setDefaultMicrophone(const std::string &name);
    void setDefaultSpeaker(const std::string &name);
    void setDefaultCamera(const std::string &name);

    /// Waits until some program records from it; programs that follow the defaults take a moment.
    void waitUntilRecorded(const std::string &source);

    /// SIGKILL to all of the server; its devices are gone.
    void killServer();
    /// As in the beginning.
    void startServer();
    /// Alive, but answers nothing.
    void suspendServer();
    void resumeServer();

private:
    void start(const std::string &program);
    std::string loadModule(const std::string &arguments);
    void control(const std::string &arguments);
    std::optional<std::string> tryControl(const std::string &arguments);
    std::optional<std::string> tryRun(const std::string &command);

    TemporaryFolder m_folder;
    const ChildProcess::Environment m_environment;
    const ScopedEnvironment m_server;
    const ScopedEnvironment m_pipeWire;
    std::unique_ptr<ChildProcess> m_bus;
    std::vector<std::unique_ptr<ChildProcess>> m_programs;
    /// Microphone to the server's number of the module that makes it.
    std::map<std::string, std::string> m_microphones;
};

} // namespace vantrell::testing
