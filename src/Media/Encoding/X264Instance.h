// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Media/Encoding/BlockArea.h"
#include "Media/Encoding/ReconstructedPicture.h"
#include "Media/Encoding/X264Library.h"
#include "Media/H264/H264Units.h"
#include "Media/Picture/Nv12Frame.h"
#include "Support/PlatformError.h"

#include <cstdint>
#include <expected>
#include <memory>
#include <span>
#include <vector>

namespace vantrell {

/// One of the library's encoders, set up for screens: no picture waits for another one, each refers to the
/// one right before, and macroblocks that are said not to have changed are passed over. Thread-bound.
class X264Instance {
public:
    struct Options {
        /// Of the pictures. An encoder of whole macroblocks takes no edges into account.
        PixelSize size;
        /// More than one: as many slices, each on a thread of its own.
        int slices = 1;
        /// Encodes with a little less care, as the stream's picture parameters say.
        bool isFast = false;
        /// Drops what differs little.
        bool dropsSmallDifferences = isFast;
        /// Of a picture of which this is a part only, the macroblocks: below this lies not the picture's edge
        /// but what is not its own.
        int partOf = 0;
        /// Few blocks, mostly of letters: they are kept sharp.
        bool isForText = false;
        /// Is quicker about films and pages that move in a part of the whole picture. Not with `isFast`.
        bool savesInPart = false;
        /// level_idc of the stream; 0: as the size asks for.
        int level = 0;
    };

    /// What was made of a picture; valid until the next call.
    struct Picture {
        /// All units behind their lengths.
        std::span<const std::uint8_t> data;
        bool isKey = false;
    };

    /// Null when the library refuses.
    static std::unique_ptr<X264Instance> open(const Options &options);

    /// Encodes pictures of nothing: the memory of a fresh encoder comes with the first ones, which then take
    /// several times as long as others. The next picture may refer to them, and what is said not to change is
    /// then believed, since it is encoded as finely as can be.
    void warmUp(int pictures);

    /// Much of the next picture is what lay so many pixels above or below: it is looked for there too.
    void expectMotion(int distance);

    /// Encodes the part of `frame` whose upper left macroblock `place` names; as large as this encoder's
    /// picture. `hints`: for each macroblock `constantHint` or 0; only those that are as in the picture
    /// before may be constant. Afterwards those are that were left as they had been reconstructed before.
    std::expected<Picture, PlatformError> encode(const Nv12Frame &frame, const BlockArea &place,
                                                 std::vector<std::uint8_t> &hints, int quantizer, bool isKey);

    static constexpr std::uint8_t constantHint = X264_MBINFO_CONSTANT;

    /// The picture that was encoded last, which the next one refers to and which may be overwritten with
    /// another one before. Null when the library does not show it.
    const ReconstructedPicture &reconstruction() const { return m_reconstruction; }

    /// Without lengths and start codes; empty when there are none.
    const std::vector<std::uint8_t> &sequenceParameters() const { return m_sequenceParameters; }
    const std::vector<std::uint8_t> &pictureParameters() const { return m_pictureParameters; }
    int level() const { return m_level; }
    const Options &options() const { return m_options; }

private:
    /// What changes from picture to picture.
    struct Tools {
        /// A part moves.
        bool saves = false;
        bool skipsEarly = false;
        /// The part has so much in it that it is letters, or nearly.
        bool isPage = false;
        /// What is looked for far away, in pixels; zero while nothing is.
        int motion = 0;

        bool operator==(const Tools &) const = default;
    };

    X264Instance(const Options &options, X264Ptr encoder);
    bool learnParameters();
    /// A picture is about to come of which so many macroblocks are to be encoded.
    void chooseTools(std::ptrdiff_t blocks, int quantizer);
    void expectMargin();
    void waitForMargin();

    const Options m_options;
    const X264Ptr m_encoder;
    std::vector<std::uint8_t> m_sequenceParameters;
    std::vector<std::uint8_t> m_pictureParameters;
    int m_level = 0;
    std::int64_t m_pictures = 0;
    /// Pictures in a row in which a part moves.
    int m_picturesOfPart = 0;
    Tools m_tools;
    int m_expectedMotion = 0;
    ReconstructedPicture m_reconstruction;
    /// Where the encoder puts its pictures by turns, as far as it has shown; only if it works in slices.
    std::vector<ReconstructedPicture> m_places;
    /// It was waited for in vain.
    bool m_isUnfinished = false;
};

} // namespace vantrell
