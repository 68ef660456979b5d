// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Media/Encoding/EncoderLoad.h"
#include "Media/Encoding/X264Instance.h"

#include <expected>
#include <memory>
#include <optional>
#include <vector>

namespace vantrell {

class PreparedX264;

/// An encoder of whole pictures, which are cut into slices on several threads where one thread does not keep
/// up, for as long as it would not. Thread-bound.
class SlicedX264 {
public:
    /// One thread of an ordinary machine encodes 1080p at 60 frames a second with ease; larger pictures take
    /// several from the start.
    static bool isLarge(PixelSize picture) { return picture.width * picture.height > 2'500'000; }

    /// What happens to the picture when another encoder takes over.
    enum class Change {
        /// It becomes a key frame.
        withKeyFrame = 1,
        /// The new encoder is given the reconstruction of the one before and goes on. Its frame numbers are
        /// its own.
        carriedOver,
    };

    /// Large ones are encoded with a little less care.
    static std::expected<std::unique_ptr<SlicedX264>, PlatformError> create(PixelSize picture, bool isLarge);
    ~SlicedX264();

    /// The picture's size, rounded up to even numbers.
    PixelSize size() const { return m_size; }
    /// The one that encoded last.
    const X264Instance &instance() const { return *m_instance; }
    /// As X264Instance does.
    void expectMotion(int distance) { m_instance->expectMotion(distance); }

    /// As X264Instance does.
    std::expected<X264Instance::Picture, PlatformError> encode(const Nv12Frame &frame,
                                                               std::vector<std::uint8_t> &hints,
                                                               int quantizer, bool isKey, Change change);

private:
    SlicedX264(PixelSize size, std::unique_ptr<X264Instance> instance);

    /// True when another encoder begins.
    bool chooseSlices(bool isKey);
    bool goOver(std::unique_ptr<X264Instance> next);

    const PixelSize m_size;
    std::unique_ptr<X264Instance> m_instance;
    /// The one before, while the present one takes over from it.
    std::unique_ptr<X264Instance> m_previous;
    /// The one with slices, while it may soon be needed.
    std::unique_ptr<PreparedX264> m_prepared;
    /// Present while there is a choice.
    std::optional<EncoderLoad> m_load;
};

} // namespace vantrell
