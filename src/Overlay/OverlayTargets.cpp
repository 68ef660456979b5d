// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Overlay/OverlayTargets.h"

#include "Overlay/OverlayText.h"
#include "Overlay/QtGeometry.h"
#include "Panels/Sentence.h"
#include "Platform/DisplayLayout.h"
#include "Support/Log.h"

#include <QCursor>

#include <algorithm>
#include <chrono>
#include <utility>

namespace vantrell {

namespace {

using namespace std::chrono_literals;

/// Windows come and go while the window tool looks at them.
constexpr auto windowsInterval = 400ms;

/// The part of the desktop on which windows are not as they were, with their frames.
PixelRect changedPart(const std::vector<WindowDescription> &before,
                      const std::vector<WindowDescription> &now) {
    constexpr int frame = 64;
    PixelRect all;
    for (const auto *windows : {&before, &now}) {
        const auto &others = windows == &before ? now : before;
        for (const WindowDescription &window : *windows) {
            const auto same = std::ranges::find(others, window.id, &WindowDescription::id);
            const PixelRect &place = window.pixels;
            if (same == others.end() || same->pixels != place || others.size() == windows->size())
                all = united(all, {place.x - frame, place.y - frame, place.width + 2 * frame,
                                   place.height + 2 * frame});
        }
    }
    return all;
}

} // namespace

OverlayTargets::OverlayTargets(CaptureBackend &capture, const OverlayViews &views)
    : m_capture(capture), m_views(views) {
    m_windowsTimer.setInterval(windowsInterval);
    QObject::connect(&m_windowsTimer, &QTimer::timeout, &m_windowsTimer, [this] { refreshWindows(); });
}

void OverlayTargets::begin(ToolMode tool) {
    m_tool = tool;
    m_picker = {};
    m_windowsTimer.stop();
}

void OverlayTargets::setTool(ToolMode tool) {
    m_tool = tool;
    m_picker.clear();
    for (const OverlayViews::View &view : m_views.all())
        view->setTool(tool);
    m_windowsTimer.stop();
    if (tool == ToolMode::window && !m_views.isEmpty())
        refreshWindows();
    followPointer();
}

void OverlayTargets::show() {
    if (m_tool == ToolMode::window) {
        refreshWindows();
        showWindows();
    }
    followPointer();
}

void OverlayTargets::refreshWindows() {
    if (m_tool != ToolMode::window || m_capture.hasOwnPicker())
        return;
    auto windows = m_capture.windows();
    if (!windows) {
        qCCritical(logCapture, "windows not listed: %s", windows.error().message.c_str());
        windows = std::vector<WindowDescription>();
    }
    m_windowsTimer.start();
    if (*windows == m_picker.windows() && !windows->empty())
        return;
    const bool hadWindows = !m_picker.windows().empty();
    const PixelRect changed = changedPart(m_picker.windows(), *windows);
    m_picker.setWindows(std::move(*windows));
    if (!m_picker.lit())
        followPointer();
    showWindows();
    if (hadWindows && !changed.isEmpty() && onWindowsChanged)
        onWindowsChanged(changed);
}

void OverlayTargets::showWindows() {
    const WindowDescription *lit = m_picker.lit();
    const WindowAppearance appearance = lit ? m_capture.appearance(lit->id) : WindowAppearance();
    QRegion visible = m_picker.visiblePart();
    if (appearance.visible)
        visible &= *appearance.visible;
    for (const OverlayViews::View &view : m_views.all())
        view->setWindows(m_picker, appearance.icon, visible);
}

void OverlayTargets::lightDisplay(const SelectionView *view) {
    m_litDisplay = view ? view->display().id : std::string();
    for (const OverlayViews::View &each : m_views.all())
        each->setLit(m_tool == ToolMode::screen && each.get() == view);
}

void OverlayTargets::followPointer() {
    if (m_tool == ToolMode::area)
        return;
    const SelectionView *view = m_views.withPointer();
    if (!view && !(isCursorOverBar && isCursorOverBar()))
        view = m_views.atPointer();
    if (m_tool == ToolMode::screen) {
        lightDisplay(view);
        return;
    }
    bool isOther = false;
    if (view) {
        const Point here =
            view->pointer().value_or(fromQt(QPointF(QCursor::pos() - view->geometry().topLeft())));
        isOther = m_picker.pointAt(inPixelsOf(view->display(), here));
    } else {
        isOther = m_picker.clear();
    }
    if (isOther)
        showWindows();
}

void OverlayTargets::cycle(bool backward) {
    if (m_tool == ToolMode::window) {
        if (m_picker.cycle(backward))
            showWindows();
        return;
    }
    const auto &views = m_views.all();
    const auto now = std::ranges::find(views, m_litDisplay,
                                       [](const OverlayViews::View &view) { return view->display().id; });
    const std::size_t count = views.size();
    std::size_t next = backward ? count - 1 : 0;
    if (now != views.end())
        next = (std::size_t(now - views.begin()) + (backward ? count - 1 : 1)) % count;
    lightDisplay(views[next].get());
}

std::optional<SelectionOutcome> OverlayTargets::pick(bool record) {
    if (m_tool == ToolMode::window)
        return pickWindow(record);
    return m_tool == ToolMode::screen ? pickDisplay(record) : std::nullopt;
}

std::optional<SelectionOutcome> OverlayTargets::pickWindow(bool record) {
    if (m_capture.hasOwnPicker()) {
        const SelectionView *view = m_views.active();
        if (!view)
            return std::nullopt;
        return SelectionOutcome{SelectionOutcome::DesktopPicker{
            {CaptureRequest::LetDesktopAsk::Kind::window, std::nullopt}, view->display(), record}};
    }
    const WindowDescription *lit = m_picker.lit();
    if (!lit)
        return std::nullopt;
    // As it is now: it may have moved or gone since it was lit.
    const std::uint32_t id = lit->id;
    auto windows = m_capture.windows();
    const auto found = windows ? std::ranges::find(*windows, id, &WindowDescription::id)
                               : std::vector<WindowDescription>::iterator();
    if (windows && found != windows->end()) {
        std::vector<Display> displays;
        for (const OverlayViews::View &view : m_views.all())
            displays.push_back(view->display());
        return SelectionOutcome{
            SelectionOutcome::Window{*found, displayHolding(displays, found->pixels), record}};
    }
    m_picker.setWindows(windows ? std::move(*windows) : std::vector<WindowDescription>());
    showWindows();
    for (const OverlayViews::View &view : m_views.all())
        view->setNotice(windows ? overlayText("That window has been closed")
                                : inUsersLanguage(QString::fromStdString(windows.error().message)));
    return std::nullopt;
}

std::optional<SelectionOutcome> OverlayTargets::pickDisplay(bool record) const {
    for (const OverlayViews::View &view : m_views.all())
        if (view->display().id == m_litDisplay)
            return SelectionOutcome{SelectionOutcome::WholeDisplay{view->display(), record}};
    return std::nullopt;
}

} // namespace vantrell
