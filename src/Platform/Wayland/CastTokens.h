// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Support/Settings.h"

#include <filesystem>
#include <optional>
#include <string>

namespace vantrell {

/// The desktop's names for what its user chose to share, kept among the settings so that the dialog comes
/// once for each display. Never logged. Main thread.
class CastTokens {
public:
    explicit CastTokens(const std::filesystem::path &settings = Settings::defaultFile())
        : m_settings(settings) {}

    std::optional<std::string> ofDisplay(const std::string &id) {
        m_settings.reload();
        return m_settings.string(key(id));
    }
    /// None forgets it.
    void keep(const std::string &displayId, const std::optional<std::string> &token) {
        m_settings.setString(key(displayId), token);
    }

private:
    static std::string key(const std::string &displayId) { return "screenCast." + displayId + ".token"; }

    Settings m_settings;
};

} // namespace vantrell
