// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include <filesystem>

namespace vantrell::testing {

/// Makes a certificate for this computer that signs itself: "authority.pem" (also what a client has to trust)
/// and "key.pem" in the folder. Ends the program when openssl cannot.
void makeTestCertificate(const std::filesystem::path &folder);

} // namespace vantrell::testing
