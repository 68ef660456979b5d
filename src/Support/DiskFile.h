// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Support/PlatformError.h"
#include "Support/UniqueFd.h"

#include <cstdint>
#include <expected>
#include <filesystem>
#include <span>

namespace vantrell {

/// A file that is read and written at given places, every result checked. Thread-safe as the kernel's file
/// is: calls about different places do not disturb each other.
class DiskFile {
public:
    DiskFile() = default;

    /// Fails when the file exists.
    static std::expected<DiskFile, PlatformError> create(const std::filesystem::path &path);
    static std::expected<DiskFile, PlatformError> openForReading(const std::filesystem::path &path);
    static std::expected<DiskFile, PlatformError> openForWriting(const std::filesystem::path &path);
    /// A file without a name in `folder`: gone when closed, whatever happens to the process.
    static std::expected<DiskFile, PlatformError> createNameless(const std::filesystem::path &folder);

    /// Writes all of it.
    std::expected<void, PlatformError> writeAt(std::uint64_t offset,
                                               std::span<const std::uint8_t> bytes) const;
    /// Reads until `bytes` is full or the file ends; returns how many were read.
    std::expected<std::size_t, PlatformError> readAt(std::uint64_t offset,
                                                     std::span<std::uint8_t> bytes) const;
    std::expected<std::uint64_t, PlatformError> size() const;
    std::expected<void, PlatformError> truncate(std::uint64_t size) const;
    /// Contents only, or with `sync` the file's size and times as well.
    std::expected<void, PlatformError> syncData() const;
    std::expected<void, PlatformError> sync() const;
    /// Sets blocks aside up to `size` without changing the file's length. Success also where the file system
    /// cannot: only a full disk is an error.
    std::expected<void, PlatformError> reserve(std::uint64_t size) const;

    /// Keeps other processes from locking the file as long as it is open here; EWOULDBLOCK when one has.
    std::expected<void, PlatformError> lock() const;

    int fd() const { return m_fd.get(); }
    bool isOpen() const { return m_fd.isValid(); }
    void close() { m_fd.reset(); }

private:
    explicit DiskFile(UniqueFd fd) : m_fd(std::move(fd)) {}

    UniqueFd m_fd;
};

/// Makes the names in a folder survive a power cut.
std::expected<void, PlatformError> syncFolder(const std::filesystem::path &folder);

} // namespace vantrell
