// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace vantrell {

/// Port: the desktop's notifications. Main thread. Without a daemon nothing is shown and nothing fails.
class Notifier {
public:
    struct Action {
        /// What `onAction` is told; "default" is a click on the notification itself.
        std::string key;
        std::string label;
    };
    struct Notification {
        std::string title;
        std::string body;
        std::vector<Action> actions;
        /// Stays until it is withdrawn or dismissed.
        bool stays = false;
        /// Nothing that should come up over other windows; where the desktop keeps a list, only there.
        bool isQuiet = false;
    };
    /// 0 names no notification.
    using Id = std::uint32_t;

    virtual ~Notifier() = default;

    /// Somebody shows notifications, with actions too.
    virtual bool isAvailable() const = 0;

    /// `onAction` is called with the key of each action that the user takes.
    virtual Id show(Notification notification, std::function<void(const std::string &key)> onAction) = 0;
    virtual void withdraw(Id id) = 0;
};

} // namespace vantrell
