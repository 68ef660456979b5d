// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "App/Ask.h"
#include "Platform/FileOpener.h"
#include "Session/CaptureSettings.h"
#include "Support/Task.h"

#include <filesystem>
#include <optional>
#include <stop_token>
#include <string>

namespace vantrell {

/// Tells the user of a crash that has left a report since the last time, once, and offers the folder. Nothing
/// of a report is sent anywhere. Main thread.
class CrashNotice {
public:
    /// All outlive it.
    CrashNotice(CaptureSettings &settings, FileOpener &opener) : m_settings(settings), m_opener(opener) {}

    /// Asks when there is something new. Only the newest reports are kept.
    Task<> tellIfNew(Ask ask, std::stop_token stop);

private:
    CaptureSettings &m_settings;
    FileOpener &m_opener;
};

} // namespace vantrell
