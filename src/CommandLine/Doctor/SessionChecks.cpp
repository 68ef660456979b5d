// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "CommandLine/Doctor/Checks.h"
#include "CommandLine/Doctor/Probe.h"
#include "CommandLine/Doctor/WaylandServer.h"

#include <QSysInfo>
#include <QtGlobal>

#include <sys/utsname.h>

namespace vantrell {

namespace {

std::string variable(const char *name) {
    return qgetenv(name).toStdString();
}

std::string joinedWords(const std::vector<std::string> &words) {
    std::string text;
    for (const std::string &word : words)
        text += (text.empty() ? "" : ", ") + word;
    return text;
}

Findings displayFindings(const DisplayServer &display) {
    Findings findings;
    const std::string manager = display.windowManager.empty() ? "no window manager" : display.windowManager;
    findings.push_back(
        okFinding("Windows", manager + (display.hasCompositor ? ", composited" : ", no compositor")));
    if (display.missing.empty())
        findings.push_back(okFinding("X extensions", "all there"));
    else
        findings.push_back(
            problemFinding("X extensions", "missing: " + joinedWords(display.missing),
                           "Recording needs them: use an X server that has them, or switch them on "
                           "in its configuration"));
    return findings;
}

} // namespace

Task<Findings> checkSystem(const Surroundings &, std::stop_token) {
    utsname names{};
    ::uname(&names);
    co_return Findings{okFinding("Program", "version " VANTRELL_VERSION ", build " VANTRELL_BUILD_ID),
                       okFinding("System", QSysInfo::prettyProductName().toStdString() + ", kernel " +
                                               names.release + ", " + names.machine)};
}

Task<Findings> checkSession(const Surroundings &around, std::stop_token stop) {
    const std::string desktop = variable("XDG_CURRENT_DESKTOP");
    const std::string of = desktop.empty() ? "" : " of " + desktop;
    Findings findings;
    if (around.isWayland) {
        const auto compositor = co_await Probe::run(waylandCompositor, stop);
        if (!compositor || !*compositor)
            co_return Findings{problemFinding("Session", "no compositor answers at WAYLAND_DISPLAY",
                                              "Name the socket of a running session in WAYLAND_DISPLAY, and "
                                              "its folder in XDG_RUNTIME_DIR")};
        findings.push_back(
            okFinding("Session", "Wayland" + of + ((*compositor)->empty() ? "" : " (" + **compositor + ")")));
        co_return findings;
    }
    if (around.displayHangs) {
        findings.push_back(
            problemFinding("Session", "the X server at DISPLAY does not answer",
                           "Log out and in again; a debugger or a full disk may be holding it"));
        co_return findings;
    }
    if (!around.display) {
        findings.push_back(problemFinding("Session", "no desktop: neither DISPLAY nor WAYLAND_DISPLAY is set",
                                          "Run this in a desktop session, or name its display in DISPLAY"));
        co_return findings;
    }
    if (!around.display->isReachable) {
        findings.push_back(
            problemFinding("Session", "nothing answers at DISPLAY",
                           "Name the display of a running session in DISPLAY, and its cookie in XAUTHORITY"));
        co_return findings;
    }
    findings.push_back(okFinding("Session", "X11" + of + " (" + around.display->vendor + ")"));
    std::ranges::move(displayFindings(*around.display), std::back_inserter(findings));
    co_return findings;
}

Task<Findings> checkScreen(const Surroundings &around, std::stop_token) {
    if (!around.platform)
        co_return Findings{};
    const auto displays = around.platform->capture->displays();
    if (!displays)
        co_return Findings{problemFinding("Screen", displays.error().description(), "See the lines above")};
    if (displays->empty())
        co_return Findings{
            problemFinding("Screen", "no display is connected", "Connect and switch on a display")};
    std::vector<std::string> sizes;
    for (const Display &display : *displays)
        sizes.push_back(std::to_string(display.pixels.width) + "x" + std::to_string(display.pixels.height));
    co_return Findings{okFinding("Screen", "can be recorded: " + joinedWords(sizes))};
}

} // namespace vantrell
