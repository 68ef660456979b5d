// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Platform/Wayland/PipeWireFrameSource.h"

#include "Platform/Wayland/CastPixels.h"
#include "Support/HostTime.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>
#include <utility>

namespace vantrell {

namespace {

/// A compositor that sends nothing for that long after it was asked to go on has nothing new to show.
constexpr double stillScreen = 0.4;
constexpr int mostCastPatches = 64;

} // namespace

PipeWireFrameSource::PipeWireFrameSource(std::shared_ptr<CastFeed> feed, std::optional<Cut> cut,
                                         Pointer pointer)
    : m_feed(std::move(feed)), m_cut(cut), m_pointerUse(pointer) {}

PipeWireFrameSource::~PipeWireFrameSource() {
    m_feed->release();
    m_feed->setActive(false);
}

std::expected<void, PlatformError> PipeWireFrameSource::open() {
    m_feed->setActive(true);
    if (auto came = m_feed->waitForPicture(stillScreen); !came)
        return came;
    m_lastTime = hostNow();
    m_size = viewOf(m_feed->pictureSize()).size();
    return {};
}

PixelRect PipeWireFrameSource::viewOf(PixelSize picture) const {
    const PixelRect whole{0, 0, picture.width, picture.height};
    if (!m_cut)
        return whole;
    if (m_cut->of == picture)
        return intersection(m_cut->part, whole);
    const double across = double(picture.width) / m_cut->of.width;
    const double down = double(picture.height) / m_cut->of.height;
    const PixelRect &part = m_cut->part;
    const int x = int(std::lround(part.x * across));
    const int y = int(std::lround(part.y * down));
    return intersection(
        {x, y, int(std::lround(part.right() * across)) - x, int(std::lround(part.bottom() * down)) - y},
        whole);
}

std::expected<FrameWait, PlatformError> PipeWireFrameSource::wait(double notBefore,
                                                                  std::optional<double> deadline) {
    return m_feed->wait(notBefore, deadline);
}

std::expected<FrameUpdate, PlatformError> PipeWireFrameSource::fetch() {
    const CastFeed::Look look = m_feed->look();
    m_isAllStale |= look.isAllDamaged || !look.pixels;
    m_patches.clear();
    // Not before what was told already, nor before this stretch began.
    m_lastTime = std::max(m_lastTime, look.hostTime);
    FrameUpdate update{.hostTime = m_lastTime, .size = m_size, .content = {}, .pointer = {}};
    // Nothing to see yet.
    if (!look.pixels && m_view.isEmpty())
        update.size = {};
    const PixelRect view = look.pixels ? viewOf(look.size) : PixelRect();
    if (look.pixels) {
        update.size = view.size();
        if (!view.isEmpty()) {
            markChanges(look, view);
            makePatches(look, view);
        }
    }
    const std::optional<Point> place = look.pointer.place();
    const PixelRect &shown = look.pixels ? view : m_view;
    if (m_pointerUse == Pointer::told && place)
        update.pointer = Point{place->x - shown.x, place->y - shown.y};
    update.content = std::span<const FramePatch>(m_patches);
    return update;
}

void PipeWireFrameSource::markChanges(const CastFeed::Look &look, const PixelRect &view) {
    if (m_view != view) {
        m_view = view;
        m_changed = BlockMap(view.size());
        m_isAllStale = true;
    }
    m_changed.clear();
    if (std::exchange(m_isAllStale, false))
        m_changed.markAll();
    const auto mark = [&](const PixelRect &onPicture) {
        m_changed.mark({onPicture.x - view.x, onPicture.y - view.y, onPicture.width, onPicture.height});
    };
    std::ranges::for_each(look.damage, mark);
    const bool isMoved = look.isPointerChanged || m_drawn.rect != look.pointer.picture().rect;
    if (m_pointerUse == Pointer::drawn && isMoved) {
        mark(m_drawn.rect);
        m_drawn = look.pointer.picture();
        mark(m_drawn.rect);
    }
}

void PipeWireFrameSource::makePatches(const CastFeed::Look &look, const PixelRect &view) {
    const auto at = [&](const PixelRect &rect) {
        return look.pixels + (view.y + rect.y) * look.stride + (view.x + rect.x) * look.step;
    };
    BlockMap direct = m_changed;
    BlockMap copied(view.size());
    if (look.format == PixelFormat::rgbx || look.step != castPixelBytes)
        copied.markAll();
    else if (m_pointerUse == Pointer::drawn)
        copied.mark(
            {m_drawn.rect.x - view.x, m_drawn.rect.y - view.y, m_drawn.rect.width, m_drawn.rect.height});
    direct.remove(copied);
    copied = m_changed;
    copied.remove(direct);
    // Rectangles that cover more than what changed would wipe the pointer out.
    const int most = m_pointerUse == Pointer::drawn ? std::numeric_limits<int>::max() : mostCastPatches;
    for (const PixelRect &rect : direct.rectangles(most))
        m_patches.push_back({rect, at(rect), look.stride});
    if (!copied.any())
        return;
    const std::ptrdiff_t ownStride = std::ptrdiff_t(view.width) * castPixelBytes;
    m_copy.resize(std::size_t(ownStride) * std::size_t(view.height));
    for (const PixelRect &rect : copied.rectangles(most)) {
        copy(rect, at(rect), look);
        std::uint8_t *own = m_copy.data() + rect.y * ownStride + std::ptrdiff_t(rect.x) * castPixelBytes;
        if (m_pointerUse == Pointer::drawn)
            m_drawn.draw({rect.x + view.x, rect.y + view.y, rect.width, rect.height}, own, ownStride);
        m_patches.push_back({rect, own, ownStride});
    }
}

void PipeWireFrameSource::copy(const PixelRect &rect, const std::uint8_t *pixels,
                               const CastFeed::Look &look) {
    const std::ptrdiff_t ownStride = std::ptrdiff_t(m_view.width) * castPixelBytes;
    std::uint8_t *to = m_copy.data() + rect.y * ownStride + std::ptrdiff_t(rect.x) * castPixelBytes;
    for (int y = 0; y < rect.height; ++y, pixels += look.stride, to += ownStride)
        copyCastPixels(pixels, look.step, look.format, to, rect.width);
}

} // namespace vantrell
