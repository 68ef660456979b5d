// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Recording/RecordingError.h"

namespace vantrell {

std::string description(RecordingError error) {
    switch (error) {
    case RecordingError::streamEnded:
        return "The recording ended unexpectedly";
    case RecordingError::finalizeTimedOut:
        return "Saving the recording timed out";
    case RecordingError::lowDiskSpace:
        return "Not enough free disk space to record (2 GB needed)";
    }
    return {};
}

} // namespace vantrell
