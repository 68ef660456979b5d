// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include <cstdint>
#include <filesystem>
#include <string>

namespace vantrell::testing {

/// Fills a file with bytes that differ at every place: another seed, other bytes.
void writeTestFile(const std::filesystem::path &path, std::int64_t bytes, std::uint64_t seed = 1);

std::string fileContents(const std::filesystem::path &path);

/// Hexadecimal SHA-256.
std::string sha256Of(const std::filesystem::path &path);

} // namespace vantrell::testing
