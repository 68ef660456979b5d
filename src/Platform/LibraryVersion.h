// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include <string>

namespace vantrell {

/// A library that the program uses, in the version that it has found.
struct LibraryVersion {
    std::string name;
    std::string version;
};

} // namespace vantrell
