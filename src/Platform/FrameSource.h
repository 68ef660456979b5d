// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Support/Geometry.h"
#include "Support/PlatformError.h"

#include <cstddef>
#include <cstdint>
#include <expected>
#include <optional>
#include <span>
#include <variant>

namespace vantrell {

/// The order of a pixel's four bytes in memory; x is not used.
enum class PixelFormat { bgrx = 1, rgbx };

/// Pixels of one changed part of the picture, rows top down.
struct FramePatch {
    /// Where it belongs. x and y are multiples of 16; width and height are too, unless the patch reaches the
    /// picture's right or bottom edge.
    PixelRect rect;
    const std::uint8_t *pixels = nullptr;
    std::ptrdiff_t stride = 0;
};

/// A whole picture in memory of the graphics card.
struct DmaBufPicture {
    /// Borrowed.
    int fd = -1;
    std::uint32_t offset = 0;
    std::uint32_t stride = 0;
    /// How the card has laid the pixels out (a DRM modifier).
    std::uint64_t modifier = 0;
};

/// What changed since the update before.
struct FrameUpdate {
    /// When the screen changed, in host time.
    double hostTime = 0;
    /// The picture's size now. When it is another one than before, the whole picture is in the update; empty
    /// as long as there is nothing to see.
    PixelSize size;
    PixelFormat format = PixelFormat::bgrx;
    /// Patches, or the whole picture. Valid until the source's next call. Parts that did not really change
    /// may be among them.
    std::variant<std::span<const FramePatch>, DmaBufPicture> content;
    /// The pointer's place on the picture, from a source that tells it (CursorMode::asMetadata).
    std::optional<Point> pointer;
};

/// Why a wait ended.
enum class FrameWait {
    changed = 1,
    timedOut,
    interrupted,
};

/// Where pixels come from. All calls on the capture thread, except `interrupt`. Errors end the stream.
class FrameSource {
public:
    virtual ~FrameSource() = default;

    /// Called first; the whole picture counts as changed afterwards.
    virtual std::expected<void, PlatformError> open() = 0;

    /// The picture's size in pixels, as it was opened; it may change with any update.
    virtual PixelSize size() const = 0;

    /// Sleeps until something has changed, `deadline` (host time; absent: for ever) has passed, or somebody
    /// interrupts. A change is not looked for before `notBefore` (host time), so that a busy screen does not
    /// wake the thread more often than frames are wanted. A change that was not fetched is reported again.
    virtual std::expected<FrameWait, PlatformError> wait(double notBefore,
                                                         std::optional<double> deadline) = 0;

    /// Takes what changed. There are no patches when nothing that can be seen did.
    virtual std::expected<FrameUpdate, PlatformError> fetch() = 0;

    /// Ends the present or else the next wait. Thread-safe.
    virtual void interrupt() = 0;
};

} // namespace vantrell
