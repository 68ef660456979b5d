// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Overlay/SelectionOverlayController.h"

#include "Overlay/AreaMemory.h"
#include "Overlay/OverlayKeyboard.h"
#include "Overlay/OverlayText.h"
#include "Overlay/QtGeometry.h"
#include "Overlay/SelectionView.h"
#include "Overlay/WindowPicker.h"
#include "Panels/DesktopLink.h"
#include "Panels/FloatingPanel.h"
#include "Panels/PanelShell.h"
#include "Platform/DisplayLayout.h"
#include "Support/HostTime.h"
#include "Support/Log.h"
#include "Support/TaskScope.h"

#include <QApplication>
#include <QCursor>
#include <QGuiApplication>
#include <QKeyEvent>
#include <QPointer>
#include <QScreen>
#include <QTimer>

#include <algorithm>
#include <chrono>
#include <utility>

namespace vantrell {

namespace {

using namespace std::chrono_literals;

/// How long the windows below need, after ours have gone, until they are whole on the screen again.
constexpr auto settleTime = 120ms;
/// How long a desktop takes to have a window fade away.
constexpr auto fadeTime = 350ms;
/// A picture of the screen that takes longer was asked for in a dialog.
constexpr double dialogSeconds = 1;
/// Windows come and go while the window tool looks at them.
constexpr auto windowsInterval = 400ms;
/// Monitors change in several steps.
constexpr auto rebuildDelay = 100ms;

QScreen *screenOf(const Display &display) {
    const QList<QScreen *> screens = QGuiApplication::screens();
    const auto named = std::ranges::find(screens, QString::fromStdString(display.id), &QScreen::name);
    if (named != screens.end())
        return *named;
    const auto placed = std::ranges::find_if(screens, [&](const QScreen *screen) {
        return screen->geometry().topLeft() == QPoint(display.pixels.x, display.pixels.y);
    });
    return placed != screens.end() ? *placed : QGuiApplication::primaryScreen();
}

/// What lies below shows through a window that covers the screen.
bool canBlend() {
    return PanelShell::instance().placesWindows() && DesktopLink::instance().isComposited();
}

/// The smallest rectangle that holds them, in the desktop's pixels.
PixelRect visibleOwnWindows(const std::vector<Display> &displays) {
    PixelRect all;
    for (const QWidget *widget : QApplication::topLevelWidgets()) {
        if (!widget->isVisible())
            continue;
        const QRect frame = widget->geometry();
        for (const Display &display : displays) {
            const PixelRect place =
                inPixelsOf(display, {frame.x() - display.frame.x, frame.y() - display.frame.y,
                                     double(frame.width()), double(frame.height())});
            if (!place.isEmpty())
                all = united(all, place);
        }
    }
    return all;
}

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

struct SelectionOverlayController::Private {
    using View = std::unique_ptr<SelectionView>;
    struct KeptSelection {
        std::string displayId;
        Rect rect;
    };

    Private(SelectionOverlayController &controller, Services ports);
    ~Private();

    void build();
    /// Where a window that covers the screen lets nothing through, it lies on a picture of it.
    Task<> buildOnPicture(std::stop_token stop);
    void buildViews(const QImage &picture, const QPoint &corner);
    /// Brings what has changed on a part of the desktop into the picture that the views lie on, without our
    /// own windows.
    Task<> retakePicture(PixelRect area, std::stop_token stop);
    void show();
    void wire(SelectionView &view);
    void dismissViews();
    void watchScreens();
    void rebuild();
    bool isCurrent() const;

    void seedAreaIfNeeded();
    void beginSelection(SelectionView &view);
    void moveSelection(SelectionView &from, const Rect &rect);
    void endMove(SelectionView &from);

    void setTool(ToolMode wanted);
    void followPointer();
    void refreshWindows();
    void showWindows();
    void lightDisplay(const SelectionView *view);
    void cycle(bool backward);
    void pick(bool record);
    void pickWindow(bool record);
    void pickDisplay(bool record);

    void handleKey(SelectionView &view, QKeyEvent &event);
    void confirm(SelectionView &view, bool record);
    void wantTool(ToolMode wanted);
    void wantBar();
    void finish(SelectionOutcome outcome);

    SelectionView *viewWithPointer() const;
    SelectionView *viewAtPointer() const;
    SelectionView *activeView() const;
    SelectionView *selectedView() const;
    Task<> fetchLoupePixels(QPointer<SelectionView> view, QRect pixels, std::stop_token stop);

    SelectionOverlayController &owner;
    const Services services;
    AreaMemory memory;
    ToolMode tool = ToolMode::area;
    bool isUp = false;
    bool isBlended = false;
    bool isFetchingPixels = false;
    /// The desktop's dialog was seen, by the time that it took.
    bool hasAsked = false;
    std::function<bool()> isCursorOverBar;
    std::function<void(SelectionOutcome, ToolMode)> completion;
    std::vector<Display> displays;
    std::vector<View> views;
    std::optional<KeptSelection> kept;
    WindowPicker picker;
    std::string litDisplay;
    OverlayKeyboard keyboard;
    QTimer windowsTimer;
    QTimer rebuildTimer;
    QTimer buildTimer;
    /// Owns the connections to the screens.
    std::unique_ptr<QObject> screenObserver;
    Observation compositing;
    /// Outlives what was picked until it is told.
    QObject endings;
    TaskScope scope;
};

SelectionOverlayController::Private::Private(SelectionOverlayController &controller, Services ports)
    : owner(controller), services(ports), memory(ports.settings) {
    windowsTimer.setInterval(windowsInterval);
    QObject::connect(&windowsTimer, &QTimer::timeout, &windowsTimer, [this] { refreshWindows(); });
    rebuildTimer.setSingleShot(true);
    QObject::connect(&rebuildTimer, &QTimer::timeout, &rebuildTimer, [this] { rebuild(); });
    buildTimer.setSingleShot(true);
    QObject::connect(&buildTimer, &QTimer::timeout, &buildTimer, [this] { build(); });
}

SelectionOverlayController::Private::~Private() {
    keyboard.giveBack();
    dismissViews();
}

// The windows of the overlay

void SelectionOverlayController::Private::build() {
    auto found = services.capture.displays();
    if (!found || found->empty()) {
        qCCritical(logCapture, "overlay not shown: %s",
                   found ? "there is no display" : found.error().message.c_str());
        finish({});
        return;
    }
    displays = std::move(*found);
    isBlended = canBlend();
    if (PanelShell::instance().placesWindows())
        buildViews({}, {});
    else if (owner.onPictureWanted && owner.onPictureWanted())
        buildTimer.start(fadeTime);
    else
        scope.start(this, &Private::buildOnPicture);
}

Task<> SelectionOverlayController::Private::buildOnPicture(std::stop_token stop) {
    PixelRect all;
    for (const Display &display : displays)
        all = united(all, display.pixels);
    const double asked = hostNow();
    const auto picture = co_await services.stills.captureArea(all, stop);
    if (stop.stop_requested())
        co_return;
    // The desktop has asked its user whether it may, and that is what the picture shows.
    if (hostNow() - asked > dialogSeconds && !std::exchange(hasAsked, true)) {
        buildTimer.start(fadeTime);
        co_return;
    }
    if (!picture)
        qCInfo(logCapture, "overlay without a picture of the screen");
    if (owner.onPictureTaken)
        owner.onPictureTaken();
    buildViews(picture ? *picture : QImage(), {all.x, all.y});
}

void SelectionOverlayController::Private::buildViews(const QImage &picture, const QPoint &corner) {
    for (const Display &display : displays) {
        views.push_back(std::make_unique<SelectionView>(display, screenOf(display), isBlended));
        wire(*views.back());
        views.back()->setTool(tool);
        views.back()->setDesktopPicks(services.capture.hasOwnPicker());
        if (!picture.isNull())
            views.back()->setPicture(picture, corner - QPoint(display.pixels.x, display.pixels.y));
    }
    const PixelRect ownWindows = visibleOwnWindows(displays);
    if (!isBlended)
        for (const View &view : views)
            view->freezeScreen();
    show();
    // Those are in the picture too, where for now they lie over it.
    if (!isBlended && !ownWindows.isEmpty() && services.stills.canWatch())
        scope.start(this, &Private::retakePicture, ownWindows);
}

Task<> SelectionOverlayController::Private::retakePicture(PixelRect area, std::stop_token stop) {
    const auto picture = co_await services.stills.captureArea(area, stop);
    if (stop.stop_requested())
        co_return;
    if (!picture) {
        if (const auto *error = std::get_if<PlatformError>(&picture.error()))
            qCWarning(logCapture, "overlay's picture of the screen is old: %s", error->message.c_str());
        co_return;
    }
    // What lies beyond the displays' bounds was left out.
    PixelRect bounds;
    for (const Display &display : displays)
        bounds = united(bounds, display.pixels);
    const PixelRect taken = intersection(bounds, area);
    for (const View &view : views)
        view->setPicture(*picture, {taken.x - view->display().pixels.x, taken.y - view->display().pixels.y});
}

void SelectionOverlayController::Private::show() {
    seedAreaIfNeeded();
    for (const View &view : views) {
        view->present();
    }
    if (tool == ToolMode::window) {
        refreshWindows();
        showWindows();
    }
    followPointer();
    owner.takeKeyboard();
    watchScreens();
    if (owner.onShown && !views.empty())
        owner.onShown(*views.back());
    owner.followBar();
}

void SelectionOverlayController::Private::wire(SelectionView &view) {
    view.onOutcome = [this](SelectionOutcome outcome) { finish(std::move(outcome)); };
    view.onSelectionBegan = [this, &view] { beginSelection(view); };
    view.onMoveSelection = [this, &view](const Rect &rect) { moveSelection(view, rect); };
    view.onMoveEnded = [this, &view] { endMove(view); };
    view.onSelectionKept = [this, &view](const Rect &rect) { memory.save(rect, view.display().id); };
    view.onPointerMoved = [this] { followPointer(); };
    view.onPicked = [this](bool record) { pick(record); };
    view.onKey = [this, &view](QKeyEvent &event) { handleKey(view, event); };
    if (services.stills.canWatch())
        view.onPixelsWanted = [this, &view](const QRect &pixels) {
            if (!std::exchange(isFetchingPixels, true))
                scope.start(this, &Private::fetchLoupePixels, QPointer<SelectionView>(&view), pixels);
        };
    view.barFrame = [this, &view] {
        const QRect bar = owner.barFrame ? owner.barFrame() : QRect();
        return bar.isEmpty() ? Rect() : fromQt(QRectF(bar.translated(-view.geometry().topLeft())));
    };
}

void SelectionOverlayController::Private::dismissViews() {
    for (View &view : views) {
        view->dismiss();
        // It may be the one that is calling.
        view.release()->deleteLater();
    }
    views.clear();
    windowsTimer.stop();
}

void SelectionOverlayController::Private::watchScreens() {
    screenObserver = std::make_unique<QObject>();
    const auto later = [this] { rebuildTimer.start(rebuildDelay); };
    QObject::connect(qApp, &QGuiApplication::screenAdded, screenObserver.get(), later);
    QObject::connect(qApp, &QGuiApplication::screenRemoved, screenObserver.get(), later);
    for (const QScreen *screen : QGuiApplication::screens())
        QObject::connect(screen, &QScreen::geometryChanged, screenObserver.get(), later);
    // Without its compositor a window that counts on one is black.
    compositing = DesktopLink::instance().observeCompositing(later);
}

bool SelectionOverlayController::Private::isCurrent() const {
    const auto now = services.capture.displays();
    return now && *now == displays && isBlended == canBlend() &&
           std::ranges::all_of(views,
                               [](const View &view) { return view->screen() == screenOf(view->display()); });
}

void SelectionOverlayController::Private::rebuild() {
    if (!isUp || buildTimer.isActive() || isCurrent())
        return;
    if (const SelectionView *view = selectedView())
        kept = KeptSelection{view->display().id, *view->area().rect()};
    scope.cancel();
    isFetchingPixels = false;
    dismissViews();
    // What lies below must be on the screen again before a picture of it is taken.
    buildTimer.start(settleTime);
}

// The area

/// Where only the window below the pointer is told of it: Qt keeps another place of the pointer for each
/// display there, and gives out that of the primary one.
SelectionView *SelectionOverlayController::Private::viewWithPointer() const {
    if (PanelShell::instance().knowsPointer())
        return nullptr;
    const auto found =
        std::ranges::find_if(views, [](const View &view) { return view->pointer() && !view->isDragging(); });
    return found != views.end() ? found->get() : nullptr;
}

SelectionView *SelectionOverlayController::Private::viewAtPointer() const {
    if (SelectionView *view = viewWithPointer())
        return view;
    const QPoint pointer = QCursor::pos();
    const auto found =
        std::ranges::find_if(views, [&](const View &view) { return view->geometry().contains(pointer); });
    return found != views.end() ? found->get() : nullptr;
}

SelectionView *SelectionOverlayController::Private::selectedView() const {
    const auto found =
        std::ranges::find_if(views, [](const View &view) { return view->area().rect().has_value(); });
    return found != views.end() ? found->get() : nullptr;
}

SelectionView *SelectionOverlayController::Private::activeView() const {
    const auto dragging = std::ranges::find_if(views, [](const View &view) { return view->isDragging(); });
    if (dragging != views.end())
        return dragging->get();
    if (SelectionView *view = selectedView())
        return view;
    if (SelectionView *view = viewAtPointer())
        return view;
    return views.empty() ? nullptr : views.front().get();
}

void SelectionOverlayController::Private::seedAreaIfNeeded() {
    if (selectedView())
        return;
    if (const auto before = std::exchange(kept, std::nullopt)) {
        for (const View &view : views) {
            if (view->display().id == before->displayId && contains(view->area().bounds(), before->rect))
                view->setSelection(before->rect);
        }
        return;
    }
    SelectionView *view = viewAtPointer();
    if (!view && !views.empty())
        view = views.front().get();
    if (view)
        view->setSelection(memory.restore(view->display().id, view->area().bounds()));
}

void SelectionOverlayController::Private::beginSelection(SelectionView &view) {
    for (const View &other : views) {
        if (other.get() != &view && other->area().rect())
            other->setSelection(std::nullopt);
    }
}

void SelectionOverlayController::Private::moveSelection(SelectionView &from, const Rect &rect) {
    const SelectionView *target = viewAtPointer();
    const auto pointer = from.pointer();
    for (const View &view : views) {
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

void SelectionOverlayController::Private::endMove(SelectionView &from) {
    for (const View &view : views) {
        if (view.get() != &from && view->area().rect()) {
            // Its buttons come back with it.
            const Rect rect = *view->area().rect();
            view->setSelection(rect);
            memory.save(rect, view->display().id);
        }
    }
}

Task<> SelectionOverlayController::Private::fetchLoupePixels(QPointer<SelectionView> view, QRect pixels,
                                                             std::stop_token stop) {
    const PixelRect display = view->display().pixels;
    const PixelRect area{display.x + pixels.x(), display.y + pixels.y(), pixels.width(), pixels.height()};
    const auto picture = co_await services.stills.captureArea(area, stop);
    if (stop.stop_requested())
        co_return;
    isFetchingPixels = false;
    if (picture && view)
        view->setLoupePicture(*picture, pixels.topLeft());
}

// Windows and displays

void SelectionOverlayController::Private::setTool(ToolMode wanted) {
    tool = wanted;
    picker.clear();
    for (const View &view : views)
        view->setTool(wanted);
    windowsTimer.stop();
    if (wanted == ToolMode::window && !views.empty())
        refreshWindows();
    followPointer();
}

void SelectionOverlayController::Private::refreshWindows() {
    if (tool != ToolMode::window || services.capture.hasOwnPicker())
        return;
    auto windows = services.capture.windows();
    if (!windows) {
        qCCritical(logCapture, "windows not listed: %s", windows.error().message.c_str());
        windows = std::vector<WindowDescription>();
    }
    windowsTimer.start();
    if (*windows == picker.windows() && !windows->empty())
        return;
    const bool hadWindows = !picker.windows().empty();
    const PixelRect changed = changedPart(picker.windows(), *windows);
    picker.setWindows(std::move(*windows));
    if (!picker.lit())
        followPointer();
    showWindows();
    // A window that opened or moved is not in the picture that the overlay lies on.
    if (hadWindows && !isBlended && !changed.isEmpty())
        scope.start(this, &Private::retakePicture, changed);
}

void SelectionOverlayController::Private::showWindows() {
    const WindowDescription *lit = picker.lit();
    const WindowAppearance appearance = lit ? services.capture.appearance(lit->id) : WindowAppearance();
    QRegion visible = picker.visiblePart();
    if (appearance.visible)
        visible &= *appearance.visible;
    for (const View &view : views)
        view->setWindows(picker, appearance.icon, visible);
}

void SelectionOverlayController::Private::lightDisplay(const SelectionView *view) {
    litDisplay = view ? view->display().id : std::string();
    for (const View &each : views)
        each->setLit(tool == ToolMode::screen && each.get() == view);
}

void SelectionOverlayController::Private::followPointer() {
    if (tool == ToolMode::area)
        return;
    const SelectionView *view = viewWithPointer();
    if (!view && !(isCursorOverBar && isCursorOverBar()))
        view = viewAtPointer();
    if (tool == ToolMode::screen) {
        lightDisplay(view);
        return;
    }
    bool isOther = false;
    if (view) {
        const Point here =
            view->pointer().value_or(fromQt(QPointF(QCursor::pos() - view->geometry().topLeft())));
        isOther = picker.pointAt(inPixelsOf(view->display(), here));
    } else {
        isOther = picker.clear();
    }
    if (isOther)
        showWindows();
}

void SelectionOverlayController::Private::cycle(bool backward) {
    if (tool == ToolMode::window) {
        if (picker.cycle(backward))
            showWindows();
        return;
    }
    const auto now =
        std::ranges::find(views, litDisplay, [](const View &view) { return view->display().id; });
    const std::size_t count = views.size();
    std::size_t next = backward ? count - 1 : 0;
    if (now != views.end())
        next = (std::size_t(now - views.begin()) + (backward ? count - 1 : 1)) % count;
    lightDisplay(views[next].get());
}

void SelectionOverlayController::Private::pick(bool record) {
    if (tool == ToolMode::window)
        pickWindow(record);
    else if (tool == ToolMode::screen)
        pickDisplay(record);
}

void SelectionOverlayController::Private::pickWindow(bool record) {
    if (services.capture.hasOwnPicker()) {
        const SelectionView *view = activeView();
        finish({SelectionOutcome::DesktopPicker{{CaptureRequest::LetDesktopAsk::Kind::window, std::nullopt},
                                                view ? view->display() : displays.front(),
                                                record}});
        return;
    }
    const WindowDescription *lit = picker.lit();
    if (!lit)
        return;
    // As it is now: it may have moved or gone since it was lit.
    const std::uint32_t id = lit->id;
    auto windows = services.capture.windows();
    const auto found = windows ? std::ranges::find(*windows, id, &WindowDescription::id)
                               : std::vector<WindowDescription>::iterator();
    if (windows && found != windows->end()) {
        const WindowDescription window = *found;
        finish({SelectionOutcome::Window{window, displayHolding(displays, window.pixels), record}});
        return;
    }
    picker.setWindows(windows ? std::move(*windows) : std::vector<WindowDescription>());
    showWindows();
    for (const View &view : views)
        view->setNotice(windows ? overlayText("That window has been closed")
                                : QString::fromStdString(windows.error().message));
}

void SelectionOverlayController::Private::pickDisplay(bool record) {
    const auto found = std::ranges::find(displays, litDisplay, &Display::id);
    if (found == displays.end())
        return;
    const Display display = *found;
    finish({SelectionOutcome::WholeDisplay{display, record}});
}

// Keys

void SelectionOverlayController::Private::wantTool(ToolMode wanted) {
    if (wanted == tool)
        return;
    if (owner.onToolWanted)
        owner.onToolWanted(wanted);
    else
        setTool(wanted);
}

void SelectionOverlayController::Private::wantBar() {
    if (owner.onBarWanted)
        owner.onBarWanted();
}

void SelectionOverlayController::Private::confirm(SelectionView &view, bool record) {
    if (tool != ToolMode::area)
        pick(record);
    else if (view.area().rect())
        view.commitSelection(record);
    else
        view.selectMiddle();
}

void SelectionOverlayController::Private::handleKey(SelectionView &view, QKeyEvent &event) {
    const bool isPress = event.type() == QEvent::KeyPress;
    if (isPress && event.key() == Qt::Key_Escape) {
        finish({});
        return;
    }
    SelectionView *active = activeView();
    if (!active || active->handleKey(event) || !isPress)
        return;
    const bool isControlHeld = event.modifiers().testFlag(Qt::ControlModifier);
    switch (event.key()) {
    case Qt::Key_Return:
    case Qt::Key_Enter:
        // The key that opened the overlay may still be held down.
        if (!event.isAutoRepeat())
            confirm(*active, !isControlHeld);
        return;
    case Qt::Key_1:
        return wantTool(ToolMode::area);
    case Qt::Key_2:
        return wantTool(ToolMode::window);
    case Qt::Key_3:
        return wantTool(ToolMode::screen);
    case Qt::Key_Tab:
        return tool == ToolMode::area ? wantBar() : cycle(false);
    case Qt::Key_Backtab:
        return tool == ToolMode::area ? wantBar() : cycle(true);
    case Qt::Key_F6:
        return wantBar();
    case Qt::Key_F1:
    case Qt::Key_Question: {
        SelectionView *shown = viewAtPointer();
        (shown ? *shown : view).setHelpShown(!(shown ? *shown : view).isHelpShown());
        return;
    }
    default:
        return;
    }
}

// The end

void SelectionOverlayController::Private::finish(SelectionOutcome outcome) {
    if (!std::exchange(isUp, false))
        return;
    scope.cancel();
    isFetchingPixels = false;
    rebuildTimer.stop();
    buildTimer.stop();
    screenObserver.reset();
    compositing.reset();
    if (const auto *region = std::get_if<SelectionOutcome::Region>(&outcome.picked))
        memory.save(region->rect, region->display.id);
    // First the focus: left to itself the server would give it to anybody.
    keyboard.giveBack();
    dismissViews();
    PanelShell::instance().sync();
    kept.reset();
    picker = {};
    const bool isCancelled = outcome.isCancelled();
    auto ended = [done = std::exchange(completion, nullptr), outcome = std::move(outcome), used = tool] {
        if (done)
            done(outcome, used);
    };
    // A capture that began at once would show the windows below half repainted.
    if (isCancelled)
        ended();
    else
        QTimer::singleShot(settleTime, &endings, std::move(ended));
}

SelectionOverlayController::SelectionOverlayController(Services services)
    : m_private(std::make_unique<Private>(*this, services)) {}

SelectionOverlayController::~SelectionOverlayController() = default;

void SelectionOverlayController::begin(ToolMode tool, std::function<bool()> isCursorOverBar,
                                       std::function<void(SelectionOutcome, ToolMode)> completion) {
    finish({});
    m_private->isUp = true;
    m_private->tool = tool;
    m_private->isCursorOverBar = std::move(isCursorOverBar);
    m_private->completion = std::move(completion);
    m_private->build();
}

void SelectionOverlayController::setTool(ToolMode tool) {
    if (m_private->isUp)
        m_private->setTool(tool);
}

ToolMode SelectionOverlayController::tool() const {
    return m_private->tool;
}

bool SelectionOverlayController::isUp() const {
    return m_private->isUp;
}

void SelectionOverlayController::finish(SelectionOutcome outcome) {
    m_private->finish(std::move(outcome));
}

void SelectionOverlayController::followBar() {
    for (const auto &view : m_private->views)
        view->followBar();
}

void SelectionOverlayController::takeKeyboard() {
    SelectionView *view = m_private->viewAtPointer();
    if (!view)
        view = m_private->activeView();
    if (m_private->isUp && view && view->isVisible())
        m_private->keyboard.take(*view);
}

} // namespace vantrell
