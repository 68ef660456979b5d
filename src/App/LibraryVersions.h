// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Platform/LibraryVersion.h"

#include <vector>

namespace vantrell {

/// The libraries that faults come from most often, as they are loaded now.
std::vector<LibraryVersion> libraryVersions();

} // namespace vantrell
