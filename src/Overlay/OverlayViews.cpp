// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Overlay/OverlayViews.h"

#include "Overlay/QtGeometry.h"
#include "Panels/PanelShell.h"

#include <QCursor>

#include <algorithm>
#include <utility>

namespace vantrell {

SelectionView &OverlayViews::add(View added) {
    SelectionView &view = *m_views.emplace_back(std::move(added));
    view.onSelectionBegan = [this, &view] { beginSelection(view); };
    view.onMoveSelection = [this, &view](const Rect &rect) { moveSelection(view, rect); };
    view.onMoveEnded = [this, &view] { endMove(view); };
    view.onSelectionKept = [this, &view](const Rect &rect) { remember(rect, view.display().id); };
    return view;
}

void OverlayViews::dismiss() {
    for (View &view : m_views) {
        view->dismiss();
        // It may be the one that is calling.
        view.release()->deleteLater();
    }
    m_views.clear();
}

void OverlayViews::keepSelection(bool isKept) {
    const SelectionView *const view = selected();
    if (!isKept)
        m_kept.reset();
    else if (view)
        m_kept = KeptSelection{view->display().id, *view->area().rect()};
}

SelectionView *OverlayViews::withPointer() const {
    // Qt keeps another place of the pointer for each display there, and gives out that of the primary one.
    if (PanelShell::instance().knowsPointer())
        return nullptr;
    const auto found = std::ranges::find_if(
        m_views, [](const View &view) { return view->pointer() && !view->isDragging(); });
    return found != m_views.end() ? found->get() : nullptr;
}

SelectionView *OverlayViews::atPointer() const {
    if (SelectionView *view = withPointer())
        return view;
    const QPoint pointer = QCursor::pos();
    const auto found =
        std::ranges::find_if(m_views, [&](const View &view) { return view->geometry().contains(pointer); });
    return found != m_views.end() ? found->get() : nullptr;
}

SelectionView *OverlayViews::selected() const {
    const auto found =
        std::ranges::find_if(m_views, [](const View &view) { return view->area().rect().has_value(); });
    return found != m_views.end() ? found->get() : nullptr;
}

SelectionView *OverlayViews::active() const {
    const auto dragging = std::ranges::find_if(m_views, [](const View &view) { return view->isDragging(); });
    if (dragging != m_views.end())
        return dragging->get();
    if (SelectionView *view = selected())
        return view;
    if (SelectionView *view = atPointer())
        return view;
    return m_views.empty() ? nullptr : m_views.front().get();
}

void OverlayViews::seedArea() {
    if (selected())
        return;
    if (const auto before = std::exchange(m_kept, std::nullopt)) {
        for (const View &view : m_views) {
            if (view->display().id == before->displayId && contains(view->area().bounds(), before->rect))
                view->setSelection(before->rect);
        }
        return;
    }
    SelectionView *view = atPointer();
    if (!view && !m_views.empty())
        view = m_views.front().get();
    if (view)
        view->setSelection(m_memory.restore(view->display().id, view->area().bounds()));
}

void OverlayViews::beginSelection(const SelectionView &view) {
    for (const View &other : m_views) {
        if (other.get() != &view && other->area().rect())
            other->setSelection(std::nullopt);
    }
}

void OverlayViews::moveSelection(const SelectionView &from, const Rect &rect) {
    const SelectionView *target = atPointer();
    const auto pointer = from.pointer();
    for (const View &view : m_views) {
        if (view.get() == &from)
            continue;
        std::optional<Rect> shown;
        if (view.get() == target && pointer) {
            const Point here = fromQt(QPointF(QCursor::pos() - view->geometry().topLeft()));
            shown =
                Rect{here.x - (pointer->x - rect.x), here.y - (pointer->y - rect.y), rect.width, rect.height};
        }
        if (shown || view->area().rect())
            view->showMovedSelection(shown);
    }
}

void OverlayViews::endMove(const SelectionView &from) {
    for (const View &view : m_views) {
        if (view.get() != &from && view->area().rect()) {
            // Its buttons come back with it.
            const Rect rect = *view->area().rect();
            view->setSelection(rect);
            m_memory.save(rect, view->display().id);
        }
    }
}

} // namespace vantrell
