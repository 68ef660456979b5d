// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Platform/Wayland/WaylandCapture.h"

#include "Platform/ScreenError.h"
#include "Support/BlockingWork.h"

#include <utility>

namespace vantrell {

WaylandCapture::WaylandCapture(CastCloser &closer, std::unique_ptr<ScreenCastSession> session,
                               std::shared_ptr<CastFeed> feed, Facts facts,
                               std::optional<PipeWireFrameSource::Cut> cut)
    : m_closer(closer), m_session(std::move(session)), m_feed(std::move(feed)), m_facts(std::move(facts)),
      m_cut(cut) {
    m_session->onClosed([feed = m_feed] {
        feed->end(screenError(ScreenErrorCode::sharingEnded, "The desktop ended the sharing of the screen"));
    });
    m_feed->setActive(false);
}

WaylandCapture::~WaylandCapture() {
    m_closer.close(std::move(m_session), m_feed);
}

std::optional<PixelRect> WaylandCapture::place() const {
    // Where a window lies nobody tells, but it may grow.
    if (m_facts.kind != CaptureKind::window || !m_facts.place)
        return m_facts.place;
    const PixelSize size = m_feed->pictureSize();
    return PixelRect{m_facts.place->x, m_facts.place->y, size.width, size.height};
}

std::unique_ptr<FrameSource> WaylandCapture::makeFrames(CursorMode cursor) {
    using Pointer = PipeWireFrameSource::Pointer;
    const Pointer pointer = cursor == CursorMode::inPicture    ? Pointer::drawn
                            : cursor == CursorMode::asMetadata ? Pointer::told
                                                               : Pointer::dropped;
    return std::make_unique<PipeWireFrameSource>(m_feed, m_cut, pointer);
}

Task<QImage> WaylandCapture::pictureInUse(std::stop_token stop) const {
    if (!m_session->isPointerOutAsCanBe())
        co_return QImage();
    const auto picture = co_await runBlocking([feed = m_feed] { return feed->pictureInUse(); }, stop);
    co_return picture.value_or(QImage());
}

} // namespace vantrell
