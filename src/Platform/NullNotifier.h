// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Platform/Notifier.h"

namespace vantrell {

/// Stands in where there is nobody to show notifications.
class NullNotifier final : public Notifier {
public:
    bool isAvailable() const override { return false; }
    Id show(Notification, std::function<void(const std::string &key)>) override { return 0; }
    void withdraw(Id) override {}
};

} // namespace vantrell
