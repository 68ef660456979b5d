// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include <utility>

#include <unistd.h>

namespace vantrell {

/// Owns one file descriptor.
class UniqueFd {
public:
    UniqueFd() = default;
    explicit UniqueFd(int fd) : m_fd(fd) {}
    ~UniqueFd() { reset(); }
    UniqueFd(UniqueFd &&other) noexcept : m_fd(other.release()) {}
    UniqueFd &operator=(UniqueFd &&other) noexcept {
        if (this != &other)
            reset(other.release());
        return *this;
    }
    UniqueFd(const UniqueFd &) = delete;
    UniqueFd &operator=(const UniqueFd &) = delete;

    int get() const { return m_fd; }
    bool isValid() const { return m_fd >= 0; }
    explicit operator bool() const { return isValid(); }

    /// The caller closes it from now on.
    [[nodiscard]] int release() { return std::exchange(m_fd, -1); }
    void reset(int fd = -1) {
        if (m_fd >= 0)
            ::close(m_fd);
        m_fd = fd;
    }

private:
    int m_fd = -1;
};

} // namespace vantrell
