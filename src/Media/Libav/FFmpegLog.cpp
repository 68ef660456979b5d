// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Media/Libav/FFmpegLog.h"

#include "Support/Log.h"

#include <cstdarg>
#include <cstdio>

extern "C" {
#include <libavutil/log.h>
}

namespace vantrell {

namespace {

void logFromFFmpeg(void *context, int level, const char *format, va_list arguments) {
    if (level > AV_LOG_ERROR)
        return;
    char text[256];
    std::vsnprintf(text, sizeof text, format, arguments);
    for (char &c : text)
        if (c == '\n')
            c = '\0';
    const AVClass *const type = context ? *static_cast<const AVClass *const *>(context) : nullptr;
    qCWarning(logCapture, "%s: %s", type && type->item_name ? type->item_name(context) : "libav", text);
}

} // namespace

void installFFmpegLog() {
    av_log_set_callback(logFromFFmpeg);
}

} // namespace vantrell
