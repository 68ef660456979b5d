// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Platform/X11/X11CompositorLag.h"
#include "Platform/X11/X11CompositorWatch.h"
#include "Platform/X11/X11CoveredWindow.h"
#include "Platform/X11/X11OwnWindows.h"
#include "Platform/X11/X11PatchReader.h"
#include "Platform/X11/X11RootBackground.h"
#include "Platform/X11/X11WindowStack.h"
#include "Support/Geometry.h"

#include <QRegion>

#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <vector>

namespace vantrell {

/// What the desktop would show if this application's own panels (X11WindowStack) were not there. While one
/// lies in the picture, what is under it is put together from the windows beneath; what lies above it stays.
/// While none does, only the root's events are listened to. All in pixels of the desktop. On the connection's
/// thread; the connection outlives it.
///
/// A picture is read in this order: `update`, pixels of the root and `ask`, their answers, the events that
/// came with those. When `mayShowPanel` then, the pixels are thrown away and read again. Only while a panel
/// lies in the pixels that are read, others' drawing is stopped for the time of the reading (a fraction of a
/// millisecond), so that what is under the panel and beside it is of one moment.
class X11UnderPanels {
public:
    /// The events that the root window must be asked for.
    static constexpr std::uint32_t rootEvents = X11WindowStack::rootEvents | X11RootBackground::rootEvents;

    /// None on a server that lacks what it takes (COMPOSITE, DAMAGE, XFIXES, MIT-SHM, 24 bit colour).
    static std::unique_ptr<X11UnderPanels> create(const X11Connection &connection);
    ~X11UnderPanels();
    X11UnderPanels(const X11UnderPanels &) = delete;
    X11UnderPanels &operator=(const X11UnderPanels &) = delete;

    /// The captured part of the desktop.
    void setArea(const PixelRect &area);

    /// True when there is something to be fetched since `hostTime`.
    bool handles(const xcb_generic_event_t &event, double now, double &hostTime);
    /// When `look` is to be called although no event came; none: never.
    std::optional<double> looksAt() const;
    /// The same by the passing of time: since when there is something to be fetched.
    std::optional<double> look(double now);

    /// Windows or panels are not as they were when `update` was last called.
    bool isOutdated() const { return m_isOutdated; }
    /// And so that a panel may be in pixels that were read since.
    bool mayShowPanel() const { return m_havePanelsChanged; }

    /// Follows the windows. Shows each part that is to be read again. Round trips only after a change.
    void update(double now, const std::function<void(const PixelRect &)> &stale);

    /// A panel lies in the picture.
    bool isActive() const { return !m_layers.empty(); }
    /// Where the pixels come from the windows beneath and not from the root; what is damaged there on the
    /// root is of no interest.
    const QRegion &composed() const { return m_composed; }
    /// What was drawn there on the root is in no picture.
    bool hides(const PixelRect &drawn) const;
    /// The part of it that cannot be read yet: programs have been asked for it and have not drawn it, or it
    /// is part of something that a compositor has not shown beside the panels yet.
    QRegion held() const;

    /// Asks what was drawn into the windows beneath. True when the server is grabbed: it is to be released
    /// behind the question what was drawn on the root.
    [[nodiscard]] bool askDamage();
    /// Takes the answer and what was drawn on the root, and shows what of it is seen in the picture. The
    /// events that came with the answers have been handled.
    void answerDamage(const QRegion &onRoot, const std::function<void(const PixelRect &)> &stale);
    /// Something was drawn into them since it was asked.
    bool isDrawnMeanwhile() const { return m_isDrawnMeanwhile; }

    /// Asks for what lies under the panels in these parts of the desktop, which are disjoint. True when the
    /// server is grabbed: it is to be released behind the request for the root's pixels.
    [[nodiscard]] bool ask(std::span<const PixelRect> parts);
    /// False when it could not be read: it is to be tried again.
    bool answer();
    /// The pixels are kept: nothing had become outdated when they were read.
    void pictureTaken() { m_fresh.clear(); }
    /// Puts it over the pixels (BGRX) of one of the parts.
    void draw(const PixelRect &part, std::uint8_t *pixels, std::ptrdiff_t stride) const;

private:
    /// A window, or the root's background (XCB_NONE), and the part of it that is seen when no panel is there.
    struct Layer {
        xcb_window_t window = XCB_NONE;
        PixelRect place;
        int border = 0;
        bool blends = false;
        QRegion seen;
        bool operator==(const Layer &) const = default;
    };
    struct Piece {
        std::size_t layer;
        PixelRect place;
    };

    X11UnderPanels(const X11Connection &connection, X11PatchReader reader);
    /// What makes up the picture under the panels, each of them larger by `margin`, from top to bottom;
    /// `composed` is all of it.
    std::vector<Layer> layersUnder(int margin, QRegion &composed) const;
    void followWindow(const xcb_generic_event_t &event);
    void showRoot(double now, const std::function<void(const PixelRect &)> &stale);
    void keepWhole(const std::vector<Layer> &near, double now);
    void releaseAll();
    void bringToRoot();
    bool noteChange(double hostTime);
    void missWhatIsCovered(X11CoveredWindow &window, double now) const;
    void placeCovered();
    X11CoveredWindow *find(xcb_window_t window);
    const X11CoveredWindow *find(xcb_window_t window) const;
    std::optional<X11PatchReader::Cut> cutOf(const Layer &layer) const;

    const X11Connection *m_connection;
    X11WindowStack m_stack;
    X11CompositorWatch m_compositor;
    X11RootBackground m_background;
    X11PatchReader m_reader;
    PixelRect m_area;
    bool m_isOutdated = true;
    bool m_havePanelsChanged = true;
    X11OwnWindows m_panels;
    /// From bottom to top.
    std::vector<Layer> m_layers;
    QRegion m_composed;
    std::vector<X11CoveredWindow> m_covered;
    /// Those with new pixels: what covered them at that moment is known when a picture has been read.
    std::vector<xcb_window_t> m_fresh;
    /// No panel has been in the picture since then, but windows are still kept whole.
    std::optional<double> m_idleSince;
    bool m_isDrawnMeanwhile = false;
    /// All that was drawn into the windows had come to the root when it was last asked.
    bool m_isAskedWhole = false;
    /// What is asked of the windows is all that has come from them to the root since the question before.
    bool m_isDamageExact = false;
    /// A pixel of the root, which nobody looks at; both end with the connection.
    xcb_pixmap_t m_lookPixmap = XCB_NONE;
    xcb_gcontext_t m_lookContext = XCB_NONE;
    X11CompositorLag m_lag;
    std::vector<Piece> m_pieces;
    std::span<FramePatch> m_read;
};

} // namespace vantrell
