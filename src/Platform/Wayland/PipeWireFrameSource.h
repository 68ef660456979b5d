// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Platform/FrameSource.h"
#include "Platform/Wayland/CastFeed.h"
#include "Support/BlockMap.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

namespace vantrell {

/// The pictures of a screen cast, or of a part of it, for one stretch of recording. Pixels are read where the
/// compositor left them; only blocks that the pointer is drawn on, pixels of another order, and pictures that
/// lie turned, are copied.
class PipeWireFrameSource final : public FrameSource {
public:
    /// What of the cast's picture is wanted.
    struct Cut {
        /// In pixels of a picture of size `of`, whatever size the cast's has.
        PixelRect part;
        PixelSize of;
    };
    /// What becomes of a pointer that comes apart from the pictures.
    enum class Pointer { drawn = 1, told, dropped };

    PipeWireFrameSource(std::shared_ptr<CastFeed> feed, std::optional<Cut> cut, Pointer pointer);
    ~PipeWireFrameSource() override;

    std::expected<void, PlatformError> open() override;
    PixelSize size() const override { return m_size; }
    std::expected<FrameWait, PlatformError> wait(double notBefore, std::optional<double> deadline) override;
    std::expected<FrameUpdate, PlatformError> fetch() override;
    void interrupt() override { m_feed->interrupt(); }

private:
    /// The part of the cast's picture that is shown.
    PixelRect viewOf(PixelSize picture) const;
    void markChanges(const CastFeed::Look &look, const PixelRect &view);
    void makePatches(const CastFeed::Look &look, const PixelRect &view);
    void copy(const PixelRect &rect, const std::uint8_t *pixels, const CastFeed::Look &look);

    const std::shared_ptr<CastFeed> m_feed;
    const std::optional<Cut> m_cut;
    const Pointer m_pointerUse;
    PixelSize m_size;
    /// Of the picture of which the last patches were.
    PixelRect m_view;
    /// What a picture that is not there at the moment still has to bring.
    bool m_isAllStale = true;
    BlockMap m_changed;
    PointerPicture m_drawn;
    /// As large as the picture, for what cannot be read where it is.
    std::vector<std::uint8_t> m_copy;
    std::vector<FramePatch> m_patches;
    double m_lastTime = 0;
};

} // namespace vantrell
