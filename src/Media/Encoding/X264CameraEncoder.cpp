// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Media/Encoding/X264CameraEncoder.h"

#include "Platform/ScreenError.h"

#include <cmath>
#include <utility>

namespace vantrell {

namespace {

x264_param_t cameraParameters(PixelSize encoded, PictureContent content, ColourMatrix matrix) {
    x264_param_t p = x264Parameters(encoded, matrix);
    p.i_threads = 1;
    p.b_sliced_threads = 0;
    p.i_fps_num = 30;
    p.i_fps_den = 1;

    // Measured on somebody who talks before a small, noisy sensor: at two fifths of the time this has the
    // likeness and the size of "superfast" at CRF 23. Searching and dividing more finely pays little on soft
    // edges, and so does looking for places where small differences could be dropped. The deblocking filter
    // and the arithmetic coder are worth their time; large transforms cost nothing. With a rate control of
    // its own, or quantizers that differ from place to place, the library looks at each picture twice.
    p.i_frame_reference = 1;
    p.analyse.inter = 0;
    p.analyse.intra = 0;
    p.analyse.b_transform_8x8 = 1;
    p.analyse.b_dct_decimate = 0;
    p.analyse.i_luma_deadzone[0] = 20;
    p.analyse.i_me_method = X264_ME_DIA;
    p.analyse.i_subpel_refine = 0;
    p.analyse.i_weighted_pred = X264_WEIGHTP_NONE;
    if (content == PictureContent::jpegCamera) {
        // A block that the camera's compression has flattened is told more cheaply by itself than by what is
        // missing to the noise that lay there before.
        p.analyse.inter = X264_ANALYSE_I8x8;
        p.analyse.intra = X264_ANALYSE_I8x8;
        // What is left between two such pictures is mostly noise of the compression: dropping what is small
        // of it pays for a finer quantizer where there is more.
        p.analyse.b_dct_decimate = 1;
        p.analyse.i_luma_deadzone[0] = 19;
    }
    p.rc.i_rc_method = X264_RC_CQP;
    p.rc.i_aq_mode = X264_AQ_NONE;
    // Whatever is asked for later is clipped to what lies between that of moving pictures and of key frames.
    constexpr float stepsPerDoubling = 6;
    p.rc.i_qp_constant = CameraQuantizer::coarsest;
    p.rc.f_ip_factor =
        std::exp2(float(CameraQuantizer::coarsest - CameraQuantizer::finestOfKeyFrames) / stepsPerDoubling);
    x264_param_apply_profile(&p, "high");
    return p;
}

} // namespace

std::expected<std::unique_ptr<X264CameraEncoder>, PlatformError>
X264CameraEncoder::create(PixelSize picture, PictureContent content, ColourMatrix matrix) {
    const PixelSize encoded = x264EncodedSize(picture);
    x264_param_t parameters = cameraParameters(encoded, content, matrix);
    X264Ptr encoder(x264_encoder_open(&parameters));
    if (!encoder)
        return std::unexpected(
            screenError(ScreenErrorCode::encoderFailed, "The video encoder could not be started"));
    auto configuration = x264Configuration(*encoder);
    if (!configuration)
        return std::unexpected(configuration.error());
    return std::unique_ptr<X264CameraEncoder>(
        new X264CameraEncoder(std::move(encoder), encoded, std::move(*configuration)));
}

X264CameraEncoder::X264CameraEncoder(X264Ptr encoder, PixelSize encoded,
                                     std::vector<std::uint8_t> configuration)
    : m_encoder(std::move(encoder)), m_encoded(encoded), m_configuration(std::move(configuration)) {}

std::expected<EncodedFrame, PlatformError> X264CameraEncoder::encode(const Nv12Frame &frame, const BlockMap &,
                                                                     std::int64_t presentationTime,
                                                                     bool keyFrame) {
    x264_picture_t picture = x264Picture(frame, presentationTime);
    picture.i_type = keyFrame ? X264_TYPE_IDR : X264_TYPE_P;
    picture.i_qpplus1 = m_quantizer.next(frame, keyFrame) + 1;
    x264_nal_t *units = nullptr;
    int count = 0;
    x264_picture_t encoded;
    const int size = x264_encoder_encode(m_encoder.get(), &units, &count, &picture, &encoded);
    if (size <= 0)
        return std::unexpected(screenError(ScreenErrorCode::encoderFailed, "The video encoder failed"));
    return EncodedFrame{std::span(units[0].p_payload, std::size_t(size)), encoded.i_pts,
                        encoded.b_keyframe != 0};
}

} // namespace vantrell
