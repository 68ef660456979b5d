// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

namespace vantrell::bench {

/// `upload-bench send DESCRIPTOR FILE [LOCATION-FILE]`: this project's transfer alone, as a process of its
/// own that can be measured and killed. The location file keeps the upload's address, so that a later run
/// resumes it.
int runSend(int argc, char **argv);

} // namespace vantrell::bench
