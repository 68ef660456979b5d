// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include <QTemporaryDir>

#include <filesystem>

namespace vantrell::testing {

/// A folder of the test's own, removed at the end.
class TemporaryFolder {
public:
    std::filesystem::path path() const { return m_dir.path().toStdString(); }
    std::filesystem::path operator/(const std::string &name) const { return path() / name; }

private:
    QTemporaryDir m_dir;
};

} // namespace vantrell::testing
