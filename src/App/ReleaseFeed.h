// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "App/UpdateError.h"

#include <cstdint>
#include <expected>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace vantrell {

/// One version of the program for one kind of copy.
struct Release {
    /// Numbers with dots between them.
    std::string version;
    /// "image" or "folder" (a compressed tar archive of it).
    std::string kind;
    /// As `uname -m` says it.
    std::string architecture;
    /// As the list has it: relative to the list's own address, or absolute.
    std::string url;
    std::int64_t size = 0;
    /// Hexadecimal, lower case.
    std::string sha256;
};

/// Reads a list of releases: {"signed": text, "signature": base64}, where the signature is Ed25519's of the
/// text's bytes and the text is JSON: {"releases": [...]}, each with the fields of `Release`. `publicKey` is
/// its 32 bytes. Nothing of the text is looked at before the signature holds. Releases that cannot be read
/// are left out.
std::expected<std::vector<Release>, UpdateError> readReleaseFeed(std::string_view document,
                                                                 const std::string &publicKey);

/// The first is the later version; false for what is no version.
bool isNewerVersion(const std::string &version, const std::string &than);

/// The newest for this kind of copy that is newer than the current version.
std::optional<Release> newestRelease(const std::vector<Release> &releases, const std::string &kind,
                                     const std::string &architecture, const std::string &currentVersion);

} // namespace vantrell
