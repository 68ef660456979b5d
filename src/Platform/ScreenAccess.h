// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include <string>

namespace vantrell {

/// Port: whether this program may record the screen at all. Main thread.
class ScreenAccess {
public:
    virtual ~ScreenAccess() = default;

    /// Looks each time.
    virtual bool isGranted() const = 0;
    /// Asks the desktop for it, so that the desktop lists the application; returns at once.
    virtual void request() = 0;
    /// Shows where the user can grant it.
    virtual void openSettings() = 0;
    /// What the desktop calls itself and the place of its setting, for the sentences that name them.
    virtual std::string systemName() const = 0;
    /// What the user has to do where no setting grants it; empty where one does.
    virtual std::string whatToDo() const { return {}; }
};

} // namespace vantrell
