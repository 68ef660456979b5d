// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Overlay/SelectionOverlayController.h"

#include "Overlay/OverlayDesktop.h"
#include "Overlay/OverlayKeyboard.h"
#include "Overlay/OverlayTargets.h"
#include "Overlay/OverlayText.h"
#include "Overlay/OverlayViews.h"
#include "Overlay/QtGeometry.h"
#include "Overlay/SelectionView.h"
#include "Panels/DesktopLink.h"
#include "Panels/PanelShell.h"
#include "Panels/Sentence.h"
#include "Support/HostTime.h"
#include "Support/Log.h"
#include "Support/TaskScope.h"

#include <QApplication>
#include <QGuiApplication>
#include <QKeyEvent>
#include <QPointer>
#include <QScreen>
#include <QTimer>

#include <algorithm>
#include <chrono>
#include <stop_token>
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
/// Portals forget to answer when their user takes more than 25 s to say whether pictures may be taken.
constexpr auto picturePatience = 28s;
/// Monitors change in several steps.
constexpr auto rebuildDelay = 100ms;

} // namespace

struct SelectionOverlayController::Private {
    Private(SelectionOverlayController &controller, Services ports);
    ~Private();

    void build();
    /// Where a window that covers the screen lets nothing through, it lies on a picture of it.
    Task<> buildOnPicture(std::stop_token stop);
    void buildViews(const QImage &picture, const QPoint &corner);
    /// Why the views are black.
    void showWhyBlack(const StillCapture::Error &error);
    /// Brings what has changed on a part of the desktop into the picture that the views lie on, without our
    /// own windows.
    Task<> retakePicture(PixelRect area, std::stop_token stop);
    void show();
    void wire(SelectionView &view);
    void dismissViews();
    void watchScreens();
    void rebuild();
    bool isCurrent() const;

    void pick(bool record);

    void handleKey(SelectionView &view, QKeyEvent &event);
    void confirm(SelectionView &view, bool record);
    void wantTool(ToolMode wanted);
    void wantBar();
    void finish(SelectionOutcome outcome);

    Task<> fetchLoupePixels(QPointer<SelectionView> view, QRect pixels, std::stop_token stop);

    SelectionOverlayController &owner;
    const Services services;
    bool isUp = false;
    bool isBlended = false;
    bool isFetchingPixels = false;
    /// The desktop's dialog was seen, by the time that it took.
    bool hasAsked = false;
    std::function<void(SelectionOutcome, ToolMode)> completion;
    std::vector<Display> displays;
    OverlayViews views;
    OverlayTargets targets;
    OverlayKeyboard keyboard;
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
    : owner(controller), services(ports), views(ports.settings), targets(ports.capture, views) {
    // A window that opened or moved is not in the picture that the overlay lies on.
    targets.onWindowsChanged = [this](const PixelRect &area) {
        if (!isBlended)
            scope.start(this, &Private::retakePicture, area);
    };
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
    isBlended = showsThroughOverlay();
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
    std::stop_source enough;
    // By a copy: this may end within the request, and take its own along.
    const auto giveUp = [&enough] { std::stop_source(enough).request_stop(); };
    QTimer patience;
    patience.setSingleShot(true);
    QObject::connect(&patience, &QTimer::timeout, &patience, giveUp);
    patience.start(picturePatience);
    const std::stop_callback end(stop, giveUp);
    const auto picture = co_await services.stills.captureArea(all, enough.get_token());
    if (stop.stop_requested())
        co_return;
    // The desktop has asked its user whether it may, and that is what the picture shows.
    if (!enough.stop_requested() && hostNow() - asked > dialogSeconds && !std::exchange(hasAsked, true)) {
        buildTimer.start(fadeTime);
        co_return;
    }
    if (owner.onPictureTaken)
        owner.onPictureTaken();
    buildViews(picture ? *picture : QImage(), {all.x, all.y});
    if (!picture)
        showWhyBlack(picture.error());
}

void SelectionOverlayController::Private::showWhyBlack(const StillCapture::Error &error) {
    const auto *reason = std::get_if<PlatformError>(&error);
    qCInfo(logCapture, "overlay without a picture of the screen: %s",
           reason ? reason->description().c_str() : "unanswered");
    // The others have their hints, and what they take is chosen in the desktop's dialog.
    if (targets.tool() != ToolMode::area)
        return;
    const QString notice = reason ? inUsersLanguage(QString::fromStdString(reason->message))
                                  : overlayText("The desktop gave no picture of its screen");
    for (const OverlayViews::View &view : views.all())
        view->setNotice(notice);
}

void SelectionOverlayController::Private::buildViews(const QImage &picture, const QPoint &corner) {
    for (const Display &display : displays) {
        SelectionView &view =
            views.add(std::make_unique<SelectionView>(display, screenOf(display), isBlended));
        wire(view);
        view.setTool(targets.tool());
        view.setDesktopPicks(services.capture.hasOwnPicker());
        if (!picture.isNull())
            view.setPicture(picture, corner - QPoint(display.pixels.x, display.pixels.y));
    }
    const PixelRect ownWindows = visibleOwnWindows(displays);
    if (!isBlended)
        for (const OverlayViews::View &view : views.all())
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
    for (const OverlayViews::View &view : views.all())
        view->setPicture(*picture, {taken.x - view->display().pixels.x, taken.y - view->display().pixels.y});
}

void SelectionOverlayController::Private::show() {
    views.seedArea();
    for (const OverlayViews::View &view : views.all()) {
        view->present();
    }
    targets.show();
    owner.takeKeyboard();
    watchScreens();
    if (owner.onShown && !views.isEmpty())
        owner.onShown(*views.all().back());
    owner.followBar();
}

void SelectionOverlayController::Private::wire(SelectionView &view) {
    view.onOutcome = [this](SelectionOutcome outcome) { finish(std::move(outcome)); };
    view.onPointerMoved = [this] { targets.followPointer(); };
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
    views.dismiss();
    targets.pause();
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
    return now && *now == displays && isBlended == showsThroughOverlay() &&
           std::ranges::all_of(views.all(), [](const OverlayViews::View &view) {
               return view->screen() == screenOf(view->display());
           });
}

void SelectionOverlayController::Private::rebuild() {
    if (!isUp || buildTimer.isActive() || isCurrent())
        return;
    views.keepSelection(true);
    scope.cancel();
    isFetchingPixels = false;
    dismissViews();
    // What lies below must be on the screen again before a picture of it is taken.
    buildTimer.start(settleTime);
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

void SelectionOverlayController::Private::pick(bool record) {
    if (auto picked = targets.pick(record))
        finish(std::move(*picked));
}

// Keys

void SelectionOverlayController::Private::wantTool(ToolMode wanted) {
    if (wanted == targets.tool())
        return;
    if (owner.onToolWanted)
        owner.onToolWanted(wanted);
    else
        targets.setTool(wanted);
}

void SelectionOverlayController::Private::wantBar() {
    if (owner.onBarWanted)
        owner.onBarWanted();
}

void SelectionOverlayController::Private::confirm(SelectionView &view, bool record) {
    if (targets.tool() != ToolMode::area)
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
    SelectionView *active = views.active();
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
        return targets.tool() == ToolMode::area ? wantBar() : targets.cycle(false);
    case Qt::Key_Backtab:
        return targets.tool() == ToolMode::area ? wantBar() : targets.cycle(true);
    case Qt::Key_F6:
        return wantBar();
    case Qt::Key_F1:
    case Qt::Key_Question: {
        SelectionView *shown = views.atPointer();
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
        views.remember(region->rect, region->display.id);
    // First the focus: left to itself the server would give it to anybody.
    keyboard.giveBack();
    dismissViews();
    PanelShell::instance().sync();
    views.keepSelection(false);
    const bool isCancelled = outcome.isCancelled();
    auto ended = [done = std::exchange(completion, nullptr), outcome = std::move(outcome),
                  used = targets.tool()] {
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
    m_private->targets.begin(tool);
    m_private->targets.isCursorOverBar = std::move(isCursorOverBar);
    m_private->completion = std::move(completion);
    m_private->build();
}

void SelectionOverlayController::setTool(ToolMode tool) {
    if (m_private->isUp)
        m_private->targets.setTool(tool);
}

ToolMode SelectionOverlayController::tool() const {
    return m_private->targets.tool();
}

bool SelectionOverlayController::isUp() const {
    return m_private->isUp;
}

void SelectionOverlayController::finish(SelectionOutcome outcome) {
    m_private->finish(std::move(outcome));
}

void SelectionOverlayController::followBar() {
    for (const OverlayViews::View &view : m_private->views.all())
        view->followBar();
}

void SelectionOverlayController::takeKeyboard() {
    SelectionView *view = m_private->views.atPointer();
    if (!view)
        view = m_private->views.active();
    if (m_private->isUp && view && view->isVisible())
        m_private->keyboard.take(*view);
}

} // namespace vantrell
