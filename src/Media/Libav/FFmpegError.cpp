// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Media/Libav/FFmpegError.h"

extern "C" {
#include <libavutil/error.h>
}

namespace vantrell {

PlatformError ffmpegError(const std::string &what, int code) {
    char text[AV_ERROR_MAX_STRING_SIZE] = "";
    av_strerror(code, text, sizeof text);
    return PlatformError{"ffmpeg", code, what + ": " + text};
}

} // namespace vantrell
