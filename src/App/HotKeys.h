// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Platform/HotKeyBackend.h"
#include "Support/PlatformError.h"

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace vantrell {

/// The application's three key combinations and what they stand for. Main thread.
class HotKeys {
public:
    enum class Action { captureArea = 0, captureWindow, toggleRecording };

    /// The backend must outlive what is made of it here.
    explicit HotKeys(HotKeyBackend &backend) : m_backend(backend) {}
    HotKeys(const HotKeys &) = delete;
    HotKeys &operator=(const HotKeys &) = delete;

    /// Takes the combinations; once. `onAction` is called from the event loop, and no more when this object
    /// is gone. A combination that cannot be had is not tried again; the others work.
    void install(std::function<void(Action)> onAction);

    /// In the order of their registration.
    const std::vector<Action> &registeredHotKeys() const { return m_registered; }
    /// Why the others are not in force; the sentence is for the user.
    const std::map<Action, PlatformError> &failedHotKeys() const { return m_failed; }

    /// The keys of the action, as the desktop that has assigned them words it; absent: those asked for.
    std::optional<std::string> assigned(Action action) const;
    /// The same to tell the user of: empty when no keys do it.
    std::optional<std::string> inForce(Action action) const;
    /// Why there are no hot keys at all.
    std::optional<PlatformError> problem() const { return m_backend.problem(); }
    /// What the desktop tells of them has changed.
    void onChange(std::function<void()> changed) { m_backend.onChange = std::move(changed); }

private:
    using Handler = std::function<void(Action)>;

    void registerKey(HotKeyBackend::Key key, Action action);

    HotKeyBackend &m_backend;
    std::shared_ptr<const Handler> m_handler;
    std::vector<Action> m_registered;
    std::map<Action, PlatformError> m_failed;
};

/// The action as it is written in the log and in the program's status: "captureArea".
const char *nameOf(HotKeys::Action action);

} // namespace vantrell
