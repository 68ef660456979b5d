// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "TestSupport/Sound/SoundSession.h"

#include "TestSupport/RunTask.h"

#include <csignal>
#include <fstream>
#include <iterator>
#include <limits>
#include <sstream>
#include <stdexcept>

#include <sys/wait.h>

namespace vantrell::testing {

namespace {

ChildProcess::Environment soundEnvironment(const TemporaryFolder &folder) {
    const std::string path = folder.path();
    return {{"HOME", path},
            {"XDG_RUNTIME_DIR", path},
            {"XDG_STATE_HOME", path + "/state"},
            {"XDG_CONFIG_HOME", path + "/config"},
            {"DBUS_SESSION_BUS_ADDRESS", "unix:path=" + path + "/bus"},
            {"PULSE_SERVER", "unix:" + path + "/pulse/native"},
            {"PIPEWIRE_REMOTE", "pipewire-0"},
            {"DISPLAY", ""}};
}

void requireEventually(const std::function<bool()> &condition, const char *complaint) {
    if (!eventually(condition))
        throw std::runtime_error(complaint);
}

} // namespace

SoundSession::SoundSession()
    : m_environment(soundEnvironment(m_folder)),
      m_server("PULSE_SERVER", "unix:" + (m_folder / "pulse/native").string()),
      m_pipeWire("PIPEWIRE_REMOTE", (m_folder / "pipewire-0").string()) {
    std::filesystem::permissions(m_folder.path(), std::filesystem::perms::owner_all);
    m_bus = std::make_unique<ChildProcess>(
        std::vector<std::string>{"dbus-daemon", "--session", "--nofork", "--nopidfile",
                                 "--address=unix:path=" + (m_folder / "bus").string()},
        m_environment);
    requireEventually([this] { return std::filesystem::exists(m_folder / "bus"); }, "no session bus");
    startServer();
}

SoundSession::~SoundSession() {
    killServer();
}

void SoundSession::startServer() {
    start("pipewire");
    requireEventually([this] { return std::filesystem::exists(m_folder / "pipewire-0"); }, "no pipewire");
    start("wireplumber");
    start("pipewire-pulse");
    requireEventually([this] { return tryControl("info").has_value(); }, "no sound server");
    plugSpeaker(speaker);
    plugMicrophone(microphone);
    setDefaultSpeaker(speaker);
    setDefaultMicrophone(microphone);
}

void SoundSession::killServer() {
    for (const auto &program : m_programs)
        program->signal(SIGKILL);
    m_programs.clear();
    m_microphones.clear();
    std::filesystem::remove(m_folder / "pipewire-0");
    std::filesystem::remove(m_folder / "pulse/native");
}

void SoundSession::suspendServer() {
    for (const auto &program : m_programs)
        program->signal(SIGSTOP);
}

void SoundSession::resumeServer() {
    for (const auto &program : m_programs)
        program->signal(SIGCONT);
}

void SoundSession::plugSpeaker(const std::string &name) {
    loadModule("module-null-sink sink_name=" + name);
    requireEventually([&] { return tryControl("get-sink-volume " + name).has_value(); }, "no speaker");
}

void SoundSession::plugMicrophone(const std::string &name) {
    if (!tryControl("get-sink-volume " + name + "_in"))
        plugSpeaker(name + "_in");
    m_microphones[name] =
        loadModule("module-remap-source master=" + name + "_in.monitor source_name=" + name +
                   " source_properties=device.description=Virtual-" + name);
    requireEventually([&] { return tryControl("get-source-volume " + name).has_value(); }, "no microphone");
}

void SoundSession::unplugMicrophone(const std::string &name) {
    control("unload-module " + m_microphones.at(name));
    m_microphones.erase(name);
    requireEventually([&] { return !tryControl("get-source-volume " + name); }, "the microphone stays");
}

/// The defaults are set through the session manager, which takes a moment.
void SoundSession::setDefaultMicrophone(const std::string &name) {
    control("set-default-source " + name);
    requireEventually([&] { return tryControl("get-default-source") == name + "\n"; },
                      "no default microphone");
}

void SoundSession::setDefaultSpeaker(const std::string &name) {
    control("set-default-sink " + name);
    requireEventually([&] { return tryControl("get-default-sink") == name + "\n"; }, "no default speaker");
}

void SoundSession::setDefaultCamera(const std::string &name) {
    if (!tryRun("pw-metadata -n default 0 default.configured.video.source '{\"name\":\"" + name +
                "\"}' Spa:String:JSON"))
        throw std::runtime_error("cannot choose a default camera");
    requireEventually(
        [&] {
            const auto told = tryRun("pw-metadata -n default 0 default.video.source");
            return told && told->find("\"" + name + "\"") != std::string::npos;
        },
        "no default camera");
}

/// "<number> <source's number> ..." a recording program, "<number> <name> ..." a source.
void SoundSession::waitUntilRecorded(const std::string &source) {
    requireEventually(
        [&] {
            std::istringstream sources(tryControl("list short sources").value_or(""));
            std::string number;
            std::string name;
            while (sources >> number >> name && name != source)
                sources.ignore(std::numeric_limits<std::streamsize>::max(), '\n');
            const std::string programs = tryControl("list short source-outputs").value_or("");
            return name == source && programs.find("\t" + number + "\t") != std::string::npos;
        },
        "nobody records from the default device");
}

void SoundSession::start(const std::string &program) {
    m_programs.push_back(std::make_unique<ChildProcess>(std::vector{program}, m_environment));
}

std::string SoundSession::loadModule(const std::string &arguments) {
    auto number = tryControl("load-module " + arguments);
    if (!number)
        throw std::runtime_error("cannot load " + arguments);
    return number->substr(0, number->find('\n'));
}

void SoundSession::control(const std::string &arguments) {
    if (!tryControl(arguments))
        throw std::runtime_error("pactl " + arguments + " failed");
}

std::optional<std::string> SoundSession::tryControl(const std::string &arguments) {
    return tryRun("pactl " + arguments);
}

std::optional<std::string> SoundSession::tryRun(const std::string &command) {
    const std::filesystem::path answer = m_folder / "answer";
    const ChildProcess program({"sh", "-c", "timeout 10 " + command + " >" + answer.string()}, m_environment);
    int status = 0;
    ::waitpid(program.pid(), &status, 0);
    if (!WIFEXITED(status) || WEXITSTATUS(status) != 0)
        return std::nullopt;
    std::ifstream file(answer);
    return std::string(std::istreambuf_iterator<char>(file), {});
}

} // namespace vantrell::testing
