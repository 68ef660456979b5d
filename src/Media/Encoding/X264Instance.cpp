// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Media/Encoding/X264Instance.h"

#include "Media/Encoding/QuantizerControl.h"
#include "Media/Encoding/ReconstructionMargin.h"
#include "Media/Encoding/X264Library.h"
#include "Platform/ScreenError.h"

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <thread>
#include <utility>

namespace vantrell {

namespace {

constexpr std::size_t unitLengthBytes = 4;
// What moves in a part of the picture that is this large at least, and not so large that nearly all of it
// moves, is a film or a page. It looks the same with one size of transform and without what differs little,
// for nine parts of a hundred of the time less and fewer bytes. What moves as a whole would lose by it.
constexpr double leastMovingShare = 0.05;
constexpr double mostMovingShare = 0.65;
constexpr double wholeMovingShare = 0.75;
/// So many pictures tell a page, whose letters take many bits, from a film with little in it. Of that one,
/// blocks that can be skipped need not be looked at further, which is another tenth of the time; letters
/// would be left in the wrong places.
constexpr int picturesThatTell = 20;
/// A page keeps what differs little and its letters stay sharp: next to no time, and bytes that are there.
constexpr int finerStepsOfPages = 3;
/// What moves further than this from one picture to the next is found by good luck only, or never, which
/// takes up to five times the bytes. To look further costs no time where it is found.
constexpr int foundMotion = 12;
constexpr int nearRange = 16;
/// A thread of the encoder waits for a core like all others.
constexpr std::chrono::seconds longestFinishing(2);

/// Whatever the number of slices and the size, the picture parameters are the same.
x264_param_t parametersFor(const X264Instance::Options &options) {
    x264_param_t p = x264Parameters(options.size, ColourMatrix::bt709);
    if (options.level > 0)
        p.i_level_idc = options.level;

    p.i_threads = options.slices;
    p.b_sliced_threads = options.slices > 1;
    p.i_fps_num = 60;
    p.i_fps_den = 1;

    // The constant-macroblock hints are silently ignored unless the reference is the frame right before, is
    // not weighted and its quantizer is not above the present one.
    p.analyse.b_mb_info = 1;
    p.analyse.b_mb_info_update = 1;
    p.i_frame_reference = 1;
    p.analyse.i_weighted_pred = X264_WEIGHTP_NONE;
    p.rc.i_rc_method = X264_RC_CQP;
    p.rc.i_qp_constant = QuantizerControl::finest;
    p.rc.i_aq_mode = X264_AQ_NONE;

    // Measured on text, scrolling, film and full-screen motion: what moves on a screen moves by whole pixels,
    // so the half-pixel planes, a third of a still frame's cost, pay only on film, and little there. Without
    // the deblocking filter letters stay crisp, and it is cheaper. Bytes are better spent on brightness than
    // on colour, and on small differences, which add up while a picture moves: they are neither dropped nor
    // skipped.
    p.analyse.i_subpel_refine = 0;
    p.b_deblocking_filter = 0;
    p.analyse.i_luma_deadzone[0] = options.isForText ? 17 : 22;
    p.analyse.b_dct_decimate = options.dropsSmallDifferences;
    p.analyse.i_chroma_qp_offset = 4;
    p.analyse.b_fast_pskip = options.dropsSmallDifferences;
    p.analyse.b_transform_8x8 = !options.isFast;

    // A vector that is inferred for a skipped block is taken for cut to 24 pixels beyond the edge. In the
    // margin that makes no difference; below a part of a picture it would. Blocks of the last row alone in
    // their slice infer none, and those above have more room than vectors are long.
    if (options.partOf > 0) {
        p.analyse.i_mv_range = 32;
        if (const int rows = options.size.height / blockEdge; rows > 1)
            p.i_slice_max_mbs = (rows - 1) * (options.size.width / blockEdge);
    }

    x264_param_apply_profile(&p, "high");
    return p;
}

} // namespace

X264Instance::X264Instance(const Options &options, X264Ptr encoder)
    : m_options(options), m_encoder(std::move(encoder)) {
    m_reconstruction.columns = (options.size.width + blockEdge - 1) / blockEdge;
    m_reconstruction.rows = (options.size.height + blockEdge - 1) / blockEdge;
}

std::unique_ptr<X264Instance> X264Instance::open(const Options &options) {
    x264_param_t parameters = parametersFor(options);
    X264Ptr encoder(x264_encoder_open(&parameters));
    if (!encoder)
        return nullptr;
    std::unique_ptr<X264Instance> instance(new X264Instance(options, std::move(encoder)));
    if (!instance->learnParameters())
        return nullptr;
    // The parameter sets are as of all others, and large transforms are only not used: what they leave of a
    // letter is seen on the paper around it.
    if (options.isForText && !options.isFast) {
        parameters.analyse.b_transform_8x8 = 0;
        x264_encoder_reconfig(instance->m_encoder.get(), &parameters);
    }
    return instance;
}

bool X264Instance::learnParameters() {
    x264_param_t used;
    x264_encoder_parameters(m_encoder.get(), &used);
    m_level = used.i_level_idc;
    x264_nal_t *units = nullptr;
    int count = 0;
    if (x264_encoder_headers(m_encoder.get(), &units, &count) < 0)
        return false;
    for (const x264_nal_t &unit : std::span(units, std::size_t(count))) {
        const H264Unit payload(unit.p_payload + unitLengthBytes,
                               std::size_t(unit.i_payload) - unitLengthBytes);
        if (unit.i_type == NAL_SPS)
            m_sequenceParameters.assign(payload.begin(), payload.end());
        else if (unit.i_type == NAL_PPS)
            m_pictureParameters.assign(payload.begin(), payload.end());
    }
    return !m_sequenceParameters.empty() && !m_pictureParameters.empty();
}

void X264Instance::warmUp(int pictures) {
    const Nv12Frame nothing(m_options.size);
    std::vector<std::uint8_t> hints(std::size_t(m_reconstruction.columns) *
                                    std::size_t(m_reconstruction.rows));
    for (int i = 0; i < pictures; ++i)
        (void)encode(nothing, {}, hints, QuantizerControl::finestOfKeyFrames, i == 0);
}

void X264Instance::expectMotion(int distance) {
    m_expectedMotion = std::abs(distance) > foundMotion ? std::abs(distance) : 0;
}

void X264Instance::chooseTools(std::ptrdiff_t blocks, int quantizer) {
    Tools tools{.motion = m_expectedMotion};
    if (m_options.savesInPart) {
        const int own = m_reconstruction.columns * m_reconstruction.rows;
        const double share = double(blocks) / (m_options.partOf > 0 ? m_options.partOf : own);
        tools.saves =
            share > leastMovingShare && share < (m_tools.saves ? wholeMovingShare : mostMovingShare);
        m_picturesOfPart = tools.saves ? m_picturesOfPart + 1 : 0;
        tools.skipsEarly = m_picturesOfPart > picturesThatTell && quantizer <= QuantizerControl::finest;
        tools.isPage = tools.saves && quantizer > QuantizerControl::finest;
    }
    if (tools == m_tools)
        return;
    // All at once: of two wishes before a picture the library forgets the first.
    x264_param_t parameters;
    x264_encoder_parameters(m_encoder.get(), &parameters);
    if (m_options.savesInPart) {
        parameters.analyse.b_transform_8x8 = !tools.saves;
        parameters.analyse.b_dct_decimate = tools.saves && !tools.isPage;
        parameters.analyse.b_fast_pskip = tools.skipsEarly;
    }
    // This one looks half as far upwards and downwards as to the sides.
    parameters.analyse.i_me_method = tools.motion > 0 ? X264_ME_UMH : X264_ME_DIA;
    parameters.analyse.i_me_range = tools.motion > 0 ? 2 * tools.motion + nearRange / 2 : nearRange;
    // Refused, it only goes on as before.
    x264_encoder_reconfig(m_encoder.get(), &parameters);
    m_tools = tools;
}

void X264Instance::expectMargin() {
    for (const ReconstructedPicture &place : m_places)
        if (place.luma != m_reconstruction.luma)
            spoilMargin(place);
}

void X264Instance::waitForMargin() {
    if (m_options.slices <= 1 || m_reconstruction.isNull())
        return;
    if (std::ranges::find(m_places, m_reconstruction.luma, &ReconstructedPicture::luma) == m_places.end())
        m_places.push_back(m_reconstruction);
    const auto patience = std::chrono::steady_clock::now() + longestFinishing;
    while (!m_isUnfinished && !hasMargin(m_reconstruction)) {
        m_isUnfinished = std::chrono::steady_clock::now() > patience;
        std::this_thread::yield();
    }
    // Or it keeps it elsewhere.
    if (m_isUnfinished)
        m_reconstruction.luma = nullptr;
}

std::expected<X264Instance::Picture, PlatformError> X264Instance::encode(const Nv12Frame &frame,
                                                                         const BlockArea &place,
                                                                         std::vector<std::uint8_t> &hints,
                                                                         int quantizer, bool isKey) {
    if (!isKey)
        chooseTools(std::ranges::count(hints, std::uint8_t(0)), quantizer);
    if (m_tools.isPage && !isKey)
        quantizer -= finerStepsOfPages;
    x264_picture_t picture;
    x264_picture_init(&picture);
    picture.i_pts = m_pictures++;
    picture.i_qpplus1 = quantizer + 1;
    picture.i_type = isKey ? X264_TYPE_IDR : X264_TYPE_P;
    // Read until the frame is really encoded, which is before the call returns.
    picture.prop.mb_info = hints.data();
    picture.img.i_csp = X264_CSP_NV12;
    picture.img.i_plane = 2;
    // The encoder only reads the planes.
    picture.img.plane[0] = const_cast<std::uint8_t *>(frame.luma() + place.row * blockEdge * frame.stride() +
                                                      place.column * blockEdge);
    picture.img.plane[1] = const_cast<std::uint8_t *>(
        frame.chroma() + place.row * blockEdge / 2 * frame.stride() + place.column * blockEdge);
    picture.img.i_stride[0] = int(frame.stride());
    picture.img.i_stride[1] = int(frame.stride());

    expectMargin();
    x264_nal_t *units = nullptr;
    int count = 0;
    x264_picture_t encoded;
    const int size = x264_encoder_encode(m_encoder.get(), &units, &count, &picture, &encoded);
    if (size <= 0)
        return std::unexpected(screenError(ScreenErrorCode::encoderFailed, "The video encoder failed"));
    const bool isShown = encoded.img.i_csp == X264_CSP_NV12 && encoded.img.i_plane == 2;
    m_reconstruction.luma = isShown ? encoded.img.plane[0] : nullptr;
    m_reconstruction.chroma = isShown ? encoded.img.plane[1] : nullptr;
    m_reconstruction.lumaStride = encoded.img.i_stride[0];
    m_reconstruction.chromaStride = encoded.img.i_stride[1];
    waitForMargin();
    return Picture{std::span(units[0].p_payload, std::size_t(size)), encoded.b_keyframe != 0};
}

} // namespace vantrell
