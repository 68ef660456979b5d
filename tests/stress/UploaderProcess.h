// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include <filesystem>
#include <string>

namespace vantrell::testing {

/// The program that is killed: hands the folder's captures over, unless an earlier life of it did, and
/// uploads until everything is done. Address, key and project come from the environment.
class UploaderProcess {
public:
    /// The exit code: 0 when every capture is uploaded and the journal is empty.
    static int run(const std::filesystem::path &folder);
};

} // namespace vantrell::testing
