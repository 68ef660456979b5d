// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

namespace vantrell {

/// What holds a picture or an encoder goes back to the system when it is freed. Left alone, malloc soon keeps
/// such blocks for the thread that had them, and after some recordings the idle program would be three times
/// as large. To be called before there are threads.
void keepHeapSmall();

} // namespace vantrell
