// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include <atomic>
#include <optional>
#include <string>

namespace vantrell {

class Keychain;

/// The API key of the moment: for headless use from the environment variable VANTRELL_API_KEY, else what the
/// keychain has cached. Never blocks. Thread-safe, but for `takeFromEnvironment`.
class KeyProvider {
public:
    /// Reads the variable and wipes it from this process's environment, so that no child inherits it and the
    /// process list does not show it. Called first in main, before any thread runs.
    static std::optional<std::string> takeFromEnvironment();

    /// A key given as `overriding` goes before the keychain's. The keychain must outlive the provider.
    KeyProvider(const Keychain &keychain, std::optional<std::string> overriding);

    std::optional<std::string> key() const;
    /// The key in use is the one from the environment.
    bool isOverridden() const { return m_overriding.has_value() && m_useOverriding; }
    /// The service refused the key from the environment: it is not used any more.
    void dropOverriding() { m_useOverriding = false; }

private:
    const Keychain &m_keychain;
    const std::optional<std::string> m_overriding;
    std::atomic<bool> m_useOverriding = true;
};

} // namespace vantrell
