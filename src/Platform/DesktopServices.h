// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Platform/Appearance.h"
#include "Platform/FileOpener.h"
#include "Platform/HotKeyBackend.h"
#include "Platform/LoginItem.h"
#include "Platform/Notifier.h"
#include "Platform/ScreenAccess.h"
#include "Platform/SessionMonitor.h"

#include <memory>

namespace vantrell {

/// What the desktop does for an application besides letting it record. None is null; what a desktop does not
/// have does nothing.
struct DesktopServices {
    std::unique_ptr<HotKeyBackend> hotKeys;
    std::unique_ptr<SessionMonitor> session;
    std::unique_ptr<Notifier> notifications;
    std::unique_ptr<LoginItem> loginItem;
    std::unique_ptr<ScreenAccess> screenAccess;
    std::unique_ptr<FileOpener> files;
    std::unique_ptr<Appearance> appearance;
};

} // namespace vantrell
