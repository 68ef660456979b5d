// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Platform/Bus/BusClient.h"
#include "Platform/LoginItem.h"

#include <filesystem>
#include <memory>
#include <optional>

namespace vantrell {

/// A start with the session by an entry in the desktop's autostart folder. Main thread; touches one small
/// file. In a sandbox the desktop's portal is asked to start the program, and the file, which then nobody
/// else reads, remembers that.
class AutostartLoginItem final : public LoginItem {
public:
    struct Options {
        /// .
        std::filesystem::path configuration;
        /// , where a distribution may have put an entry.
        std::vector<std::filesystem::path> systemConfigurations;
        /// What is started: the running program, unless it lies where it does not stay.
        std::filesystem::path program;
        /// Asked when the program is in a sandbox.
        std::optional<QDBusConnection> portal;

        static Options fromEnvironment();
    };

    explicit AutostartLoginItem(Options options);

    bool isEnabled() const override;
    std::expected<void, PlatformError> setEnabled(bool enabled) override;

private:
    std::filesystem::path entry() const;
    bool isInSystem() const;
    std::expected<void, PlatformError> write(const std::string &text) const;
    std::expected<void, PlatformError> remove() const;
    void askPortal(bool enabled);

    const Options m_options;
    std::unique_ptr<BusClient> m_portal;
    bool m_isListening = false;
};

} // namespace vantrell
