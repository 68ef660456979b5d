// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Auth/KeyProvider.h"

#include "Auth/Keychain.h"

#include <cstdlib>
#include <cstring>

namespace vantrell {

std::optional<std::string> KeyProvider::takeFromEnvironment() {
    char *value = std::getenv(variable);
    if (!value)
        return std::nullopt;
    const std::string key = value;
    // Removing the variable alone would leave the text where /proc shows the initial environment.
    explicit_bzero(value, key.size());
    ::unsetenv(variable);
    return key.empty() ? std::nullopt : std::optional(key);
}

KeyProvider::KeyProvider(const Keychain &keychain, std::optional<std::string> overriding)
    : m_keychain(keychain), m_overriding(std::move(overriding)) {}

std::optional<std::string> KeyProvider::key() const {
    std::unique_lock lock(m_mutex);
    if (m_overriding)
        return m_overriding;
    if (m_unstored)
        return m_unstored;
    lock.unlock();
    return m_keychain.cached(Keychain::apiKeyAccount);
}

bool KeyProvider::isOverridden() const {
    std::scoped_lock lock(m_mutex);
    return m_overriding.has_value();
}

void KeyProvider::dropOverriding() {
    std::scoped_lock lock(m_mutex);
    m_overriding.reset();
}

void KeyProvider::hold(std::optional<std::string> unstored) {
    std::scoped_lock lock(m_mutex);
    m_unstored = std::move(unstored);
}

} // namespace vantrell
