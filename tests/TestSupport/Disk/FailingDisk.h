// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

namespace vantrell::testing {

/// Makes one of the disk's calls fail: creating a temporary file, write, fsync, rename, link, and opening a
/// file or folder. Calls of every thread count, from the construction on.
class FailingDisk {
public:
    /// The `call`-th call (from 1) fails with `error`; with `stays`, every later one too.
    FailingDisk(int call, int error, bool stays = false);
    ~FailingDisk();
    FailingDisk(const FailingDisk &) = delete;
    FailingDisk &operator=(const FailingDisk &) = delete;

    /// The call came, and was failed.
    bool hasFailed() const;
};

} // namespace vantrell::testing
