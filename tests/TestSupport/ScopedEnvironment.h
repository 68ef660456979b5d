// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include <cstdlib>
#include <optional>
#include <string>

namespace vantrell::testing {

/// Sets an environment variable, or removes it, and puts the old state back.
class ScopedEnvironment {
public:
    ScopedEnvironment(std::string name, const std::optional<std::string> &value) : m_name(std::move(name)) {
        if (const char *old = std::getenv(m_name.c_str()))
            m_old = old;
        set(value);
    }
    ~ScopedEnvironment() { set(m_old); }
    ScopedEnvironment(const ScopedEnvironment &) = delete;
    ScopedEnvironment &operator=(const ScopedEnvironment &) = delete;

private:
    void set(const std::optional<std::string> &value) const {
        if (value)
            ::setenv(m_name.c_str(), value->c_str(), 1);
        else
            ::unsetenv(m_name.c_str());
    }

    std::string m_name;
    std::optional<std::string> m_old;
};

} // namespace vantrell::testing
