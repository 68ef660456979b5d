// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "App/HotKeys.h"

#include "Support/EventLoop.h"

#include <QtGlobal>

#include <utility>

namespace vantrell {

const char *nameOf(HotKeys::Action action) {
    switch (action) {
    case HotKeys::Action::captureArea:
        return "captureArea";
    case HotKeys::Action::captureWindow:
        return "captureWindow";
    case HotKeys::Action::toggleRecording:
        return "toggleRecording";
    }
    return "";
}

namespace {

HotKeyBackend::Key keyOf(HotKeys::Action action) {
    switch (action) {
    case HotKeys::Action::captureArea:
        return HotKeyBackend::Key::digit7;
    case HotKeys::Action::captureWindow:
        return HotKeyBackend::Key::digit8;
    case HotKeys::Action::toggleRecording:
        break;
    }
    return HotKeyBackend::Key::digit9;
}

} // namespace

void HotKeys::install(std::function<void(Action)> onAction) {
    m_handler = std::make_shared<const Handler>(std::move(onAction));
    for (const Action action : {Action::captureArea, Action::captureWindow, Action::toggleRecording})
        registerKey(keyOf(action), action);
}

std::optional<std::string> HotKeys::assigned(Action action) const {
    return m_backend.assigned(keyOf(action));
}

std::optional<std::string> HotKeys::inForce(Action action) const {
    return problem() || m_failed.contains(action) ? std::string() : assigned(action);
}

void HotKeys::registerKey(HotKeyBackend::Key key, Action action) {
    const std::weak_ptr<const Handler> weak = m_handler;
    const auto taken = m_backend.grab(key, [weak, action] {
        // Not from within the backend: what an action starts may take a while.
        EventLoop::main().post([weak, action] {
            if (const auto handler = weak.lock())
                (*handler)(action);
        });
    });
    if (taken) {
        m_registered.push_back(action);
        return;
    }
    m_failed.emplace(action, taken.error());
    qWarning("HotKeys: registration failed for %s (status %d)", nameOf(action), taken.error().code);
}

} // namespace vantrell
