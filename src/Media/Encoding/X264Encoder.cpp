// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Media/Encoding/X264Encoder.h"

#include "Media/Encoding/EncoderLoad.h"
#include "Media/Encoding/X264Library.h"
#include "Platform/ScreenError.h"
#include "Support/HostTime.h"
#include "Support/Log.h"
#include "Support/WorkerThread.h"

#include <algorithm>
#include <atomic>
#include <optional>
#include <thread>
#include <utility>

namespace vantrell {

namespace {

constexpr int mostSlices = 4;

/// A picture may be cut into slices that are encoded at the same time, which costs 3 % more in all and up to
/// a tenth more bytes.
int slicesHere() {
    return std::clamp(int(std::thread::hardware_concurrency()), 1, mostSlices);
}

/// Whatever the number of slices, the movie's sample description is the same. Large pictures are encoded with
/// a little less care.
x264_param_t parametersFor(PixelSize encoded, int slices) {
    x264_param_t p = x264Parameters(encoded, ColourMatrix::bt709);
    const bool isLarge = X264Encoder::isLarge(encoded);
    p.i_threads = slices;
    p.b_sliced_threads = slices > 1;
    p.i_fps_num = 60;
    p.i_fps_den = 1;

    // The constant-macroblock hints are silently ignored unless the reference is the frame right before, is
    // not weighted and its quantizer is not above the present one.
    p.analyse.b_mb_info = 1;
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
    p.analyse.i_luma_deadzone[0] = 22;
    p.analyse.b_dct_decimate = isLarge;
    p.analyse.i_chroma_qp_offset = 4;
    p.analyse.b_fast_pskip = isLarge;
    p.analyse.b_transform_8x8 = !isLarge;

    x264_param_apply_profile(&p, "high");
    return p;
}

X264Ptr openEncoder(PixelSize encoded, int slices) {
    x264_param_t parameters = parametersFor(encoded, slices);
    return X264Ptr(x264_encoder_open(&parameters));
}

/// Encodes two grey pictures: the memory of a fresh encoder comes with the first ones, which then take
/// several times as long as others.
void warmUp(x264_t &encoder, PixelSize encoded) {
    const Nv12Frame grey(encoded);
    for (int i = 0; i < 2; ++i) {
        x264_picture_t picture = x264Picture(grey, i);
        picture.i_type = i == 0 ? X264_TYPE_IDR : X264_TYPE_P;
        x264_nal_t *units = nullptr;
        int count = 0;
        x264_picture_t out;
        x264_encoder_encode(&encoder, &units, &count, &picture, &out);
    }
}

/// An encoder that is made ready on a thread of its own, while another one is busy.
class PreparedEncoder {
public:
    PreparedEncoder(PixelSize encoded, int slices)
        : m_thread("encoder warm-up", [this, encoded, slices] {
              m_encoder = openEncoder(encoded, slices);
              if (m_encoder)
                  warmUp(*m_encoder, encoded);
              m_isReady = true;
          }) {}

    bool isReady() const { return m_isReady; }
    /// Null when it could not be opened.
    X264Ptr take() {
        m_thread.join();
        return std::move(m_encoder);
    }

private:
    std::atomic<bool> m_isReady = false;
    X264Ptr m_encoder;
    WorkerThread m_thread;
};

} // namespace

struct X264Encoder::State {
    /// True when the next picture has to be a key frame, because another encoder begins.
    bool chooseSlices(bool keyFrame);
    bool goOver(X264Ptr next, int nextSlices);

    X264Ptr encoder;
    int slices = 1;
    /// The one with slices, while it may soon be needed.
    std::unique_ptr<PreparedEncoder> prepared;
    /// Present while there is a choice.
    std::optional<EncoderLoad> load;
    PixelSize encoded;
    std::vector<std::uint8_t> configuration;
    /// Must stay until the frame is really encoded, which is before `encode` returns.
    std::vector<std::uint8_t> hints;
    QuantizerControl quantizer;
};

bool X264Encoder::State::chooseSlices(bool keyFrame) {
    if (!load)
        return false;
    if (slices > 1)
        return keyFrame && load->canDoWithoutSlices() && goOver(openEncoder(encoded, 1), 1);
    if (load->canDoWithoutSlices())
        prepared.reset();
    else if (load->mayNeedSlices() && !prepared)
        prepared = std::make_unique<PreparedEncoder>(encoded, slicesHere());
    if (!load->needsSlices() || !prepared || !prepared->isReady())
        return false;
    X264Ptr next = prepared->take();
    prepared.reset();
    return goOver(std::move(next), slicesHere());
}

bool X264Encoder::State::goOver(X264Ptr next, int nextSlices) {
    if (!next) {
        load.reset();
        return false;
    }
    qCInfo(logCapture, "encoding in slices: %d", nextSlices);
    encoder = std::move(next);
    slices = nextSlices;
    return true;
}

X264Encoder::X264Encoder(std::unique_ptr<State> state) : m_state(std::move(state)) {}
X264Encoder::~X264Encoder() = default;

const std::vector<std::uint8_t> &X264Encoder::codecConfiguration() const {
    return m_state->configuration;
}
PixelSize X264Encoder::encodedSize() const {
    return m_state->encoded;
}

std::expected<std::unique_ptr<X264Encoder>, PlatformError> X264Encoder::create(PixelSize picture) {
    const BlockMap blocks(picture);
    auto state =
        std::make_unique<State>(State{.quantizer = QuantizerControl(blocks.columns() * blocks.rows())});
    state->encoded = x264EncodedSize(picture);
    if (isLarge(state->encoded))
        state->slices = slicesHere();
    else if (slicesHere() > 1)
        state->load.emplace(slicesHere());
    state->encoder = openEncoder(state->encoded, state->slices);
    if (!state->encoder)
        return std::unexpected(
            screenError(ScreenErrorCode::encoderFailed, "The video encoder could not be started"));

    auto configuration = x264Configuration(*state->encoder);
    if (!configuration)
        return std::unexpected(configuration.error());
    state->configuration = std::move(*configuration);
    return std::unique_ptr<X264Encoder>(new X264Encoder(std::move(state)));
}

std::expected<EncodedFrame, PlatformError> X264Encoder::encode(const Nv12Frame &frame,
                                                               const BlockMap &changed,
                                                               std::int64_t presentationTime, bool keyFrame) {
    const double begin = hostNow();
    keyFrame = m_state->chooseSlices(keyFrame) || keyFrame;
    auto &hints = m_state->hints;
    hints.resize(changed.marks().size());
    std::ranges::transform(changed.marks(), hints.begin(),
                           [](std::uint8_t mark) { return std::uint8_t(mark ? 0 : X264_MBINFO_CONSTANT); });

    x264_picture_t picture = x264Picture(frame, presentationTime);
    picture.i_qpplus1 = m_state->quantizer.quantizer(keyFrame) + 1;
    picture.i_type = keyFrame ? X264_TYPE_IDR : X264_TYPE_P;
    picture.prop.mb_info = hints.data();

    x264_nal_t *units = nullptr;
    int count = 0;
    x264_picture_t encoded;
    const int size = x264_encoder_encode(m_state->encoder.get(), &units, &count, &picture, &encoded);
    if (size <= 0)
        return std::unexpected(screenError(ScreenErrorCode::encoderFailed, "The video encoder failed"));
    m_state->quantizer.frameEncoded(double(presentationTime) / timeScale, changed.count(), std::size_t(size),
                                    encoded.b_keyframe != 0);
    if (m_state->load)
        m_state->load->frameEncoded(begin, hostNow());
    return EncodedFrame{std::span(units[0].p_payload, std::size_t(size)), encoded.i_pts,
                        encoded.b_keyframe != 0};
}

} // namespace vantrell
