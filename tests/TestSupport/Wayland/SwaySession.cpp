// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "TestSupport/Wayland/SwaySession.h"

#include "TestSupport/RunTask.h"

#include <csignal>
#include <fstream>
#include <sstream>
#include <stdexcept>

#include <unistd.h>

namespace vantrell::testing {

namespace {

constexpr const char *castBackend = "/usr/libexec/xdg-desktop-portal-wlr";
constexpr const char *castLog = "cast.log";

/// The first file of the folder whose name begins and ends so.
std::string found(const std::filesystem::path &folder, const std::string &start, const std::string &end) {
    for (const auto &entry : std::filesystem::directory_iterator(folder)) {
        const std::string name = entry.path().filename();
        if (name.starts_with(start) && name.ends_with(end) && !name.ends_with(".lock"))
            return name;
    }
    return {};
}

} // namespace

SwaySession::SwaySession(const Options &options) : m_options(options) {
    startSway();
    startBackend();
    std::vector<std::string> interfaces{"ScreenCast", "Screenshot"};
    // The portals tell of no stills where nobody could be asked for them.
    if (options.failsAtStills)
        interfaces.push_back("Access");
    m_ground.startPortal("wlr", interfaces);
}

SwaySession::~SwaySession() {
    m_numbers.reset();
}

ChildProcess::Environment SwaySession::environment() const {
    auto variables = m_ground.environment();
    variables.insert(variables.end(), {{"WAYLAND_DISPLAY", m_socket},
                                       {"SWAYSOCK", m_control},
                                       {"XDG_CURRENT_DESKTOP", "wlr"},
                                       {"QT_QPA_PLATFORM", "wayland"}});
    return variables;
}

void SwaySession::startSway() {
    const std::filesystem::path folder = m_ground.folder();
    const std::string configuration = folder / "sway.conf";
    {
        std::ofstream out(configuration);
        for (int i = 0; i < m_options.outputs; ++i)
            out << "output HEADLESS-" << i + 1 << " resolution " << m_options.width << "x" << m_options.height
                << " position " << i * int(m_options.width / m_options.scale) << " 0 scale "
                << m_options.scale << " bg #306090 solid_color\n";
        out << "default_border none\nfocus_follows_mouse no\nxwayland disable\nseat seat0 fallback true\n"
            << "for_window [title=\"numbers\"] fullscreen enable\n";
    }
    auto variables = m_ground.environment();
    variables.insert(variables.end(), {{"WLR_BACKENDS", "headless"},
                                       {"WLR_RENDERER", "pixman"},
                                       {"WLR_LIBINPUT_NO_DEVICES", "1"},
                                       {"WLR_HEADLESS_OUTPUTS", std::to_string(m_options.outputs)}});
    std::vector<std::string> command{"sway", "-c", configuration};
    // It does not run as root, and looks only whether it could become root again.
    if (::geteuid() == 0)
        command.insert(command.begin(), {"unshare", "--user"});
    m_sway = std::make_unique<ChildProcess>(command, variables);
    m_ground.require(
        [&] {
            m_socket = found(folder, "wayland-", "");
            m_control = found(folder, "sway-ipc.", ".sock");
            return !m_socket.empty() && !m_control.empty();
        },
        "sway does not start");
    m_control = folder / m_control;
    m_display.emplace("WAYLAND_DISPLAY", m_socket);
    m_ground.require([this] { return tell("nop") == 0; }, "sway does not answer");
}

void SwaySession::startBackend() {
    const std::filesystem::path folder = m_ground.folder() / "config/xdg-desktop-portal-wlr";
    std::filesystem::create_directories(folder);
    const auto asks = m_options.choiceSeconds;
    const std::string chooser =
        asks ? "simple\nchooser_cmd=sleep " + std::to_string(*asks) + "; echo HEADLESS-1"
             : "none\noutput_name=HEADLESS-1";
    std::ofstream(folder / "config") << "[screencast]\nmax_fps=60\nchooser_type=" << chooser << "\n";
    auto variables = environment();
    variables.emplace_back("LD_PRELOAD", VANTRELL_SCREENCOPY_SHIM);
    const std::string plainly =
        std::string(m_options.failsAtStills ? "PATH=/nowhere " : "") + "exec " + castBackend + " -r";
    const std::string noting = plainly + " -l TRACE 2>\"$0\"";
    m_backend = std::make_unique<ChildProcess>(
        std::vector<std::string>{"sh", "-c", m_options.notesPictures ? noting : plainly,
                                 m_ground.folder() / castLog},
        variables);
    m_ground.require([this] { return bus().isOwned("org.freedesktop.impl.portal.desktop.wlr"); },
                     "no screen casts of sway");
}

int SwaySession::tell(const std::string &command) const {
    return ChildProcess({"swaymsg", "-s", m_control, "--", command}, environment())
        .waitForExit()
        .value_or(-1);
}

void SwaySession::showNumbers(double rate) {
    m_numbers = std::make_unique<ChildProcess>(
        std::vector<std::string>{VANTRELL_NUMBERS, std::to_string(rate)}, environment());
    m_ground.require([this] { return tell("[title=\"numbers\"] focus") == 0; }, "the numbers do not show");
}

void SwaySession::hideNumbers() {
    m_numbers.reset();
}

std::vector<double> SwaySession::sentPictures() const {
    const std::string key = "pipewire: timestamp ";
    std::vector<double> times;
    std::ifstream in(m_ground.folder() / castLog);
    for (std::string line; std::getline(in, line);)
        if (const auto at = line.find(key); at != std::string::npos)
            times.push_back(std::stod(line.substr(at + key.size())) / 1e9);
    return times;
}

double SwaySession::desktopCpuSeconds() const {
    double ticks = 0;
    for (const ChildProcess *process : {m_sway.get(), m_backend.get()}) {
        std::ifstream in("/proc/" + std::to_string(process->pid()) + "/stat");
        std::string line;
        std::getline(in, line);
        // Behind the name, which may hold anything: the 14th and 15th of all fields.
        std::istringstream fields(line.substr(line.rfind(')') + 1));
        std::string field;
        for (int i = 3; fields >> field && i <= 15; ++i)
            if (i >= 14)
                ticks += std::stod(field);
    }
    return ticks / double(::sysconf(_SC_CLK_TCK));
}

void SwaySession::killCompositor() {
    m_sway->signal(SIGKILL);
}

void SwaySession::killBackend() {
    m_backend->signal(SIGKILL);
}

void SwaySession::freezeBackend() {
    m_backend->signal(SIGSTOP);
}

} // namespace vantrell::testing
