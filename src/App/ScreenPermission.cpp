// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "App/ScreenPermission.h"

#include "Support/Log.h"

#include <utility>

using namespace std::chrono_literals;

namespace vantrell {

namespace {

constexpr const char *primedKey = "screenPermissionPrimed";
constexpr auto grantLookInterval = 1s;
constexpr int mostGrantLooks = 300;

void logStillDenied() {
    qCInfo(logApp, "screen permission not granted");
}

} // namespace

ScreenPermission::ScreenPermission(ScreenAccess &access, Settings &settings, Clock &clock, Ask ask,
                                   Options options)
    : m_access(access), m_settings(settings), m_clock(clock), m_ask(std::move(ask)),
      m_options(std::move(options)) {}

Task<> ScreenPermission::primeScreenPermission(bool needsMove, std::stop_token stop) {
    if (!m_settings.boolean(primedKey)) {
        if (const std::string missing = m_access.whatToDo(); !missing.empty()) {
            co_await m_ask("Screen Recording permission needed", missing, {"OK"}, stop);
            co_return;
        }
        const int answer =
            co_await m_ask("Screen Recording permission needed",
                           "Vantrell Capture needs " + m_access.systemName() +
                               " Screen Recording permission. You will approve once, then the app restarts.",
                           {"Continue", "Not Now"}, stop);
        if (answer != 0 || stop.stop_requested())
            co_return;
        m_settings.setBoolean(primedKey, true);
    }
    if (needsMove) {
        qCInfo(logApp, "tcc register skipped: app not installed in Applications");
        co_return;
    }
    m_access.request();
    registerWithTCC();
    startWatching(logStillDenied);
}

Task<bool> ScreenPermission::ensureScreenPermission(std::stop_token stop) {
    if (m_access.isGranted())
        co_return true;
    co_await menuRequestPermission(stop);
    co_return false;
}

Task<> ScreenPermission::menuRequestPermission(std::stop_token stop) {
    m_access.request();
    startWatching(logStillDenied);
    if (const std::string missing = m_access.whatToDo(); !missing.empty()) {
        co_await m_ask("Allow Vantrell Capture to record the screen", missing, {"OK"}, stop);
        co_return;
    }
    const int answer = co_await m_ask(
        "Allow Vantrell Capture to record the screen",
        m_access.systemName() + " asks for this once. Turn on Vantrell Capture under Screen & System Audio "
                                "Recording, and this window will close and reopen the app for you "
                                "automatically.",
        {"Open System Settings", "Cancel"}, stop);
    if (stop.stop_requested())
        co_return;
    if (answer == 0) {
        openSettings();
        co_return;
    }
    m_watch.cancel();
    logStillDenied();
}

void ScreenPermission::registerWithTCC() {
    if (m_options.tryCapture)
        m_scope.start(this, &ScreenPermission::tryToCapture);
}

Task<> ScreenPermission::tryToCapture(std::stop_token stop) {
    const auto captured = co_await m_options.tryCapture(stop);
    if (stop.stop_requested())
        co_return;
    qCInfo(logApp, "tcc register: %s", captured ? "authorized" : captured.error().description().c_str());
}

void ScreenPermission::startWatching(std::function<void()> onStillDenied) {
    m_watch.cancel();
    m_watch.start(this, &ScreenPermission::watch, std::move(onStillDenied));
}

Task<> ScreenPermission::watch(std::function<void()> onStillDenied, std::stop_token stop) {
    for (int look = 0; look < mostGrantLooks; ++look) {
        if (m_access.isGranted()) {
            relaunch();
            co_return;
        }
        if (!co_await m_clock.sleep(grantLookInterval, stop))
            co_return;
    }
    onStillDenied();
}

void ScreenPermission::relaunch() {
    if (std::exchange(m_hasRelaunched, true))
        return;
    if (!m_options.relaunch()) {
        // Another try may go better.
        m_hasRelaunched = false;
        qCCritical(logApp, "relaunch failed");
    }
}

} // namespace vantrell
