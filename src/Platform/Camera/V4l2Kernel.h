// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include <cstddef>
#include <filesystem>
#include <string>
#include <vector>

#include <sys/types.h>

namespace vantrell {

/// The kernel's side of video devices: its calls with their results and errno. A virtual layer because no
/// machine has every camera. Thread-safe. A device's descriptor can be polled.
class V4l2Kernel {
public:
    virtual ~V4l2Kernel() = default;

    /// "/dev/video0", ...: in the order of their numbers.
    virtual std::vector<std::string> devices() const;
    /// A name that stays with the hardware; empty where there is none.
    virtual std::string stableName(const std::string &device) const;
    virtual int open(const std::string &device);
    virtual void close(int fd);
    /// Repeated when a signal interrupts it.
    virtual int control(int fd, unsigned long request, void *argument);
    /// Null when it fails.
    virtual void *map(int fd, std::size_t length, off_t offset);
    virtual void unmap(void *memory, std::size_t length);
    /// Where devices appear and disappear.
    virtual std::filesystem::path folder() const;
};

} // namespace vantrell
