// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "CommandLine/ProgressLines.h"
#include "Session/UploadRun.h"

namespace vantrell {

/// What a terminal shows of a run in place of a panel: one line for each file that is on its way. Main
/// thread.
class UploadProgress {
public:
    /// The run outlives it.
    explicit UploadProgress(UploadRun &run);

    /// Before anything else is written; the next change shows the lines again.
    void clear() { m_lines.clear(); }

private:
    void show();

    UploadRun &m_run;
    ProgressLines m_lines;
    Observation m_observation;
};

} // namespace vantrell
