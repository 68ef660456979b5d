// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Media/Encoding/BlockArea.h"
#include "Media/Encoding/X264Instance.h"
#include "Media/H264/SliceHeader.h"
#include "Support/BlockMap.h"

#include <expected>
#include <memory>
#include <vector>

namespace vantrell {

/// What a stream's parameter sets say and what its slices have to be encoded with.
struct StreamFacts {
    StreamLayout layout;
    std::vector<std::uint8_t> pictureParameters;
    int level = 0;
    bool isFast = false;
    /// Pixels around a band that its encoder is taken to refer to.
    int margin = ReconstructedPicture::margin;

    /// Nothing when slices of this encoder's stream cannot be rewritten.
    static std::optional<StreamFacts> of(const X264Instance &whole);
};

/// An encoder of a band or a strip of a larger picture, wherever it lies: before each picture it is given the
/// larger picture's reconstruction of that place, unless it is its own work, and around it, so that it refers
/// to what a decoder will have there. Thread-bound.
class SmallEncoder {
public:
    /// So many pixels beyond its edges it refers to.
    static constexpr int farthestMotion = 24;

    /// Null when the library refuses or is laid out otherwise than expected. Takes 1 to 30 ms.
    static std::unique_ptr<SmallEncoder> create(const StreamFacts &stream, int columns, int rows);

    int columns() const { return m_instance->reconstruction().columns; }
    int rows() const { return m_instance->reconstruction().rows; }

    /// Encodes what is at `place`; `touched` are the larger picture's blocks that are not as in `whole`, its
    /// reconstruction, which stays as it is.
    std::expected<void, PlatformError> encode(const Nv12Frame &frame, const BlockArea &place,
                                              const BlockMap &touched, int quantizer,
                                              const ReconstructedPicture &whole);

    /// As X264Instance does, for the next picture and those after it.
    void expectMotion(int distance) { m_instance->expectMotion(distance); }

    const BlockArea &place() const { return m_place; }
    /// Appends the slices of what was encoded last, as those of the larger picture's number.
    void appendTo(std::vector<std::uint8_t> &stream, std::uint32_t frameNumber) const;
    /// Brings what was encoded last into the larger picture's reconstruction.
    void reconstructIn(const ReconstructedPicture &whole);
    /// Others may have changed the larger picture's reconstruction since.
    void outdate() { m_isUpToDate = false; }

private:
    struct Slice {
        H264Unit unit;
        ParsedSlice parsed;
    };
    SmallEncoder(const StreamFacts &stream, const StreamLayout &own, std::unique_ptr<X264Instance> instance)
        : m_stream(stream), m_own(own), m_instance(std::move(instance)) {}

    const StreamFacts m_stream;
    const StreamLayout m_own;
    const std::unique_ptr<X264Instance> m_instance;
    std::vector<std::uint8_t> m_hints;
    BlockArea m_place;
    /// What of it the encoder changed.
    BlockArea m_changed;
    std::vector<Slice> m_slices;
    /// It shows at `m_place` what the larger picture's reconstruction does.
    bool m_isUpToDate = false;
};

} // namespace vantrell
