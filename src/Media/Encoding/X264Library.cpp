// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Media/Encoding/X264Library.h"

#include "Media/Encoding/VideoEncoder.h"
#include "Media/H264/H264Units.h"
#include "Platform/ScreenError.h"
#include "Support/Log.h"

#include <cstdarg>
#include <cstdio>
#include <span>

namespace vantrell {

namespace {

void logFromX264(void *, int level, const char *format, va_list arguments) {
    if (level > X264_LOG_ERROR)
        return;
    char text[256];
    std::vsnprintf(text, sizeof text, format, arguments);
    qCWarning(logCapture, "x264: %s", text);
}

} // namespace

PixelSize x264EncodedSize(PixelSize picture) {
    return {(picture.width + 1) / 2 * 2, (picture.height + 1) / 2 * 2};
}

x264_param_t x264Parameters(PixelSize encoded, ColourMatrix matrix) {
    x264_param_t p;
    x264_param_default_preset(&p, "superfast", nullptr);
    p.i_width = encoded.width;
    p.i_height = encoded.height;
    p.i_csp = X264_CSP_NV12;
    p.pf_log = logFromX264;
    p.i_log_level = X264_LOG_ERROR;

    // A frame must not wait for the next one, which may come minutes later.
    p.b_vfr_input = 0;
    p.i_bframe = 0;
    p.rc.i_lookahead = 0;
    p.i_sync_lookahead = 0;
    p.rc.b_mb_tree = 0;
    p.i_timebase_num = 1;
    p.i_timebase_den = VideoEncoder::timeScale;

    // Key frames are asked for by time, by the caller.
    p.i_keyint_max = X264_KEYINT_MAX_INFINITE;
    p.i_scenecut_threshold = 0;

    p.b_annexb = 0;
    p.b_repeat_headers = 0;
    p.b_aud = 0;

    p.vui.b_fullrange = 0;
    p.vui.i_colorprim = h273Number(ColourMatrix::bt709);
    p.vui.i_transfer = h273Number(ColourMatrix::bt709);
    p.vui.i_colmatrix = h273Number(matrix);
    return p;
}

x264_picture_t x264Picture(const Nv12Frame &frame, std::int64_t presentationTime) {
    x264_picture_t picture;
    x264_picture_init(&picture);
    picture.i_pts = presentationTime;
    picture.img.i_csp = X264_CSP_NV12;
    picture.img.i_plane = 2;
    // The encoder only reads the planes.
    picture.img.plane[0] = const_cast<std::uint8_t *>(frame.luma());
    picture.img.plane[1] = const_cast<std::uint8_t *>(frame.chroma());
    picture.img.i_stride[0] = int(frame.stride());
    picture.img.i_stride[1] = int(frame.stride());
    return picture;
}

std::expected<std::vector<std::uint8_t>, PlatformError> x264Configuration(x264_t &encoder) {
    x264_nal_t *units = nullptr;
    int count = 0;
    if (x264_encoder_headers(&encoder, &units, &count) < 0)
        return std::unexpected(
            screenError(ScreenErrorCode::encoderFailed, "The video encoder could not be started"));
    constexpr int sizeBytes = 4;
    H264Unit sps;
    H264Unit pps;
    for (const x264_nal_t &unit : std::span(units, std::size_t(count))) {
        const H264Unit payload(unit.p_payload + sizeBytes, std::size_t(unit.i_payload - sizeBytes));
        if (unit.i_type == NAL_SPS)
            sps = payload;
        else if (unit.i_type == NAL_PPS)
            pps = payload;
    }
    return avcConfiguration(sps, pps);
}

} // namespace vantrell
