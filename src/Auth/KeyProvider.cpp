// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Auth/KeyProvider.h"

#include "Auth/Keychain.h"

#include <cstdlib>
#include <cstring>

namespace vantrell {

namespace {
constexpr char keyVariable[] = "VANTRELL_API_KEY";
}

std::optional<std::string> KeyProvider::takeFromEnvironment() {
    char *value = std::getenv(keyVariable);
    if (!value)
        return std::nullopt;
    const std::string key = value;
    // Removing the variable alone would leave the text where /proc shows the initial environment.
    explicit_bzero(value, key.size());
    ::unsetenv(keyVariable);
    return key.empty() ? std::nullopt : std::optional(key);
}

KeyProvider::KeyProvider(const Keychain &keychain, std::optional<std::string> overriding)
    : m_keychain(keychain), m_overriding(std::move(overriding)) {}

std::optional<std::string> KeyProvider::key() const {
    return isOverridden() ? m_overriding : m_keychain.cached(Keychain::apiKeyAccount);
}

} // namespace vantrell
