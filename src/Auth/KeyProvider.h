// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include <mutex>
#include <optional>
#include <string>

namespace vantrell {

class Keychain;

/// The API key of the moment: for headless use from the environment variable VANTRELL_API_KEY, else one that
/// the keyring has not taken yet, else what the keychain has cached. Never blocks. Thread-safe, but for
/// `takeFromEnvironment`.
class KeyProvider {
public:
    /// Reads the variable and wipes it from this process's environment, so that no child inherits it and the
    /// process list does not show it. Called first in main, before any thread runs.
    static std::optional<std::string> takeFromEnvironment();
    static constexpr const char *variable = "VANTRELL_API_KEY";

    /// A key given as `overriding` goes before the keychain's. The keychain must outlive the provider.
    KeyProvider(const Keychain &keychain, std::optional<std::string> overriding);

    std::optional<std::string> key() const;
    /// The key in use is the one from the environment.
    bool isOverridden() const;
    /// The service refused the key from the environment, or the user disconnects: this process forgets it.
    void dropOverriding();
    /// A key that is in use before it is stored; nothing ends that.
    void hold(std::optional<std::string> unstored);

private:
    const Keychain &m_keychain;
    mutable std::mutex m_mutex;
    std::optional<std::string> m_overriding;
    std::optional<std::string> m_unstored;
};

} // namespace vantrell
