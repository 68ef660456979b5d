// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Overlay/AreaMemory.h"
#include "Overlay/SelectionView.h"
#include "Platform/Display.h"
#include "Support/Geometry.h"

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace vantrell {

/// The views of the overlay, one on each display, and the one selection of the area tool that they have among
/// them. Main thread.
class OverlayViews {
public:
    using View = std::unique_ptr<SelectionView>;

    explicit OverlayViews(Settings &settings) : m_memory(settings) {}
    ~OverlayViews() { dismiss(); }
    OverlayViews(const OverlayViews &) = delete;
    OverlayViews &operator=(const OverlayViews &) = delete;

    const std::vector<View> &all() const { return m_views; }
    bool isEmpty() const { return m_views.empty(); }
    /// A view that takes part in the selection.
    SelectionView &add(View view);
    /// Takes them from the screen. The one that is calling lives on until it has returned.
    void dismiss();

    /// The view that the pointer is on.
    SelectionView *atPointer() const;
    /// The same where only the window below the pointer is told of it; null elsewhere.
    SelectionView *withPointer() const;
    SelectionView *selected() const;
    /// The view that keys are for; null when there is none.
    SelectionView *active() const;

    /// A selection to begin with: that which was kept, or the remembered one of the display with the pointer.
    void seedArea();
    /// For the next views; false: none is kept any more.
    void keepSelection(bool isKept);
    /// What the next overlay begins with on that display.
    void remember(const Rect &rect, const std::string &displayId) { m_memory.save(rect, displayId); }

private:
    struct KeptSelection {
        std::string displayId;
        Rect rect;
    };

    void beginSelection(const SelectionView &view);
    void moveSelection(const SelectionView &from, const Rect &rect);
    void endMove(const SelectionView &from);

    AreaMemory m_memory;
    std::vector<View> m_views;
    std::optional<KeptSelection> m_kept;
};

} // namespace vantrell
