// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Media/Encoding/EncoderLoad.h"
#include "Media/Encoding/QuantizerControl.h"
#include "Media/Encoding/ScrollFinder.h"
#include "Media/Encoding/SlicedX264.h"
#include "Media/Encoding/SmallEncoders.h"
#include "Media/Encoding/VideoEncoder.h"
#include "Media/H264/CopySlices.h"
#include "Media/H264/SkipSlices.h"

#include <functional>
#include <memory>
#include <optional>

namespace vantrell {

/// H.264 whose cost follows what changed and not the screen's size. Where little changed, only bands and
/// strips around that are encoded, by small encoders of their own, as slices of the picture; all between
/// them are slices that say "as before", or "as what was so much further down" where a page is scrolled.
/// Where much changed otherwise, and for key frames, one encoder takes the whole picture. Its reconstruction
/// is kept as a decoder's: what the small ones make is written into it.
///
/// That relies on where libx264 keeps its reference pictures, which it shows but does not promise, and so on
/// a trial (BandTrials). Without, and once anything is odd, it is the one encoder.
class BandEncoder final : public VideoEncoder {
public:
    struct Options {
        /// Asked before each picture until it answers. False: never bands.
        std::function<std::optional<bool>()> mayUseBands;
        SmallEncoders::Preparation preparation = SmallEncoders::Preparation::aside;
        /// As pictures of a size are, if not of this one's.
        std::optional<bool> isLarge;
        SmallEncoderFactory makeSmall = SmallEncoder::create;
    };

    static std::expected<std::unique_ptr<BandEncoder>, PlatformError> create(PixelSize picture,
                                                                             Options options);

    const std::vector<std::uint8_t> &codecConfiguration() const override { return m_configuration; }
    PixelSize encodedSize() const override { return m_whole->size(); }
    std::expected<EncodedFrame, PlatformError> encode(const Nv12Frame &frame, const BlockMap &changed,
                                                      std::int64_t presentationTime, bool keyFrame) override;
    std::optional<std::int64_t> refinesAt() const override { return m_refinesAt; }
    std::expected<std::optional<EncodedFrame>, PlatformError> refine(const Nv12Frame &frame,
                                                                     std::int64_t presentationTime) override;

    /// What a decoder shows after the last picture. Valid until the next one.
    const ReconstructedPicture &reconstruction() const { return m_whole->instance().reconstruction(); }
    /// Of the pictures so far, those that were encoded in bands.
    std::int64_t picturesInBands() const { return m_picturesInBands; }
    /// Of all blocks so far, those that were only copied from elsewhere.
    std::int64_t blocksCopied() const { return m_blocksCopied; }

private:
    BandEncoder(PixelSize picture, Options options, std::unique_ptr<SlicedX264> whole);

    bool usesBands();
    /// Encodes the blocks of `m_touched`, in bands where that is cheaper; true for a key frame.
    std::expected<bool, PlatformError> encodeTouched(const Nv12Frame &frame, int quantizer, bool keyFrame);
    /// Marks what has stood still and can become finer; false when there is nothing.
    bool findCoarse(double seconds);
    void remember(const BlockMap &changed, int quantizer, double seconds, bool isKey);
    /// False when the picture has to be encoded as a whole.
    bool encodeInBands(const Nv12Frame &frame, int quantizer);
    /// Much in a band comes from further than its encoder looks: the whole picture's takes half the bytes.
    bool movesTooFar(const std::vector<BlockArea> &bands) const;
    /// Upwards or downwards, of what is left to be encoded of the present picture.
    int expectedMotion() const;
    /// What is left to be encoded of a picture that is scrolled.
    const BlockMap &notCopied();
    /// What a picture that is scrolled is, where no band lies: fills `m_copied` and `m_distances`.
    void copyBetween(const std::vector<BlockArea> &bands);
    void reconstructCopies();
    /// The picture is scrolled, and in that row copies lie beside the band.
    bool hasCopies(const BlockArea &band, int row) const;
    int quantizerOf(const BlockArea &band, int quantizer) const;
    /// By one thread or two; why one of them failed.
    std::optional<PlatformError> encodeAll(const std::vector<SmallEncoder *> &encoders,
                                           const std::vector<BlockArea> &bands, const Nv12Frame &frame,
                                           int quantizer);
    void writeSlices(const std::vector<SmallEncoder *> &encoders);
    /// What no encoder took from `begin` to `end`.
    void writeUnencoded(int begin, int end);
    std::expected<bool, PlatformError> encodeWhole(const Nv12Frame &frame, int quantizer, bool keyFrame);
    bool takeOver(std::span<const std::uint8_t> data, bool isKey);
    /// From the next key frame on, which is due now, there is only the one encoder.
    void giveUp(const char *why);

    const Options m_options;
    const std::unique_ptr<SlicedX264> m_whole;
    const std::vector<std::uint8_t> m_configuration;
    /// Present as long as slices can be rewritten.
    std::optional<StreamFacts> m_stream;
    std::optional<bool> m_mayUseBands;
    /// Present while bands are used.
    std::unique_ptr<SmallEncoders> m_small;
    /// Present where two threads can share the bands of a picture.
    std::optional<EncoderLoad> m_load;
    /// One thread does not keep up: large bands are halved.
    bool m_isHalving = false;
    SkipSlices m_skips;
    CopySlices m_copies;
    ScrollFinder m_scroll;
    /// The present picture is scrolled.
    bool m_isScrolled = false;
    /// Its blocks that are copies, and for each block from where, as CopySlices wants to know.
    BlockMap m_copied;
    std::vector<std::int16_t> m_distances;
    QuantizerControl m_quantizer;
    /// Of the last picture, the bands that are as fine as they will be.
    std::vector<BlockArea> m_finished;
    /// For each block the quantizer that it was encoded with last, and when it changed last, in seconds.
    std::vector<std::uint8_t> m_coarseness;
    std::vector<float> m_changedAt;
    std::optional<std::int64_t> m_refinesAt;
    /// Blocks that are to be encoded.
    BlockMap m_touched;
    /// Of these, those that are no copies.
    BlockMap m_rest;
    std::uint32_t m_frameNumber = 0;
    std::uint32_t m_keyId = 0;
    std::int64_t m_picturesInBands = 0;
    std::int64_t m_blocksCopied = 0;
    std::vector<std::uint8_t> m_hints;
    std::vector<std::uint8_t> m_data;
    /// The second thread.
    SerialWorker m_second;
};

} // namespace vantrell
