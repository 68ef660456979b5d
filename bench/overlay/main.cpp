// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

// How long it takes from the wish for the overlay until it is on the screen, and how long a step of a drag
// takes until the server has drawn it, in ms (median, 95th percentile, the longest). On a virtual display of
// its own.
//
//     bench_overlay [--rounds 10] [--displays 1|2] [--compositor]        3840x2160 a display

#include "Overlay/SelectionOverlayController.h"
#include "Overlay/SelectionView.h"
#include "Panels/DesktopLink.h"
#include "Platform/X11/X11CaptureBackend.h"
#include "Platform/X11/X11StillCapture.h"
#include "ScreenWatch.h"
#include "Support/HostTime.h"
#include "TestSupport/Desktop/X11Session.h"
#include "TestSupport/RunTask.h"
#include "TestSupport/TemporaryFolder.h"

#include <QApplication>
#include <QMouseEvent>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <future>
#include <string>
#include <string_view>
#include <vector>

using namespace vantrell;
using namespace vantrell::testing;

namespace {

constexpr int width = 3840, height = 2160;

void report(const char *what, std::vector<double> seconds) {
    std::ranges::sort(seconds);
    const auto at = [&](double part) {
        return seconds[std::min(seconds.size() - 1, std::size_t(part * double(seconds.size())))] * 1000;
    };
    std::printf("%-24s median %6.1f   95%% %6.1f   longest %6.1f ms   (%zu)\n", what, at(0.5), at(0.95),
                seconds.back() * 1000, seconds.size());
    std::fflush(stdout);
}

/// Pixels in the corners of each display, far from labels.
std::vector<Point> corners(int displays) {
    std::vector<Point> points;
    for (int display = 0; display < displays; ++display)
        for (const int x : {2, width - 3})
            for (const int y : {2, height - 3})
                points.push_back({double(display * width + x), double(y)});
    return points;
}

class DragBench {
public:
    explicit DragBench(SelectionView &view) : m_view(view) {}

    /// One drag over the screen in so many steps, of which the times are kept.
    void drag(const char *what, const QPointF &from, const QPointF &to, int steps = 200) {
        std::vector<double> times;
        send(QEvent::MouseButtonPress, from, Qt::LeftButton);
        for (int step = 1; step <= steps; ++step) {
            // Slow at its ends and quick between, with a little to the side, as hands are.
            const double part = 0.5 - 0.5 * std::cos(step * M_PI / steps);
            const QPointF at = from + (to - from) * part + QPointF(0, 12 * std::sin(step * 0.4));
            const double start = hostNow();
            send(QEvent::MouseMove, at, Qt::NoButton);
            DesktopLink::instance().sync();
            times.push_back(hostNow() - start);
            settle();
        }
        send(QEvent::MouseButtonRelease, to, Qt::LeftButton);
        settle();
        report(what, times);
    }

private:
    void send(QEvent::Type type, const QPointF &at, Qt::MouseButton button) {
        QMouseEvent event(type, at, m_view.mapToGlobal(at), button,
                          type == QEvent::MouseButtonRelease ? Qt::NoButton : Qt::LeftButton, Qt::NoModifier);
        QApplication::sendEvent(&m_view, &event);
    }

    SelectionView &m_view;
};

SelectionView &firstView() {
    for (QWidget *widget : QApplication::topLevelWidgets()) {
        auto *view = dynamic_cast<SelectionView *>(widget);
        if (view && view->isVisible() && view->geometry().topLeft() == QPoint(0, 0))
            return *view;
    }
    std::fputs("there is no overlay\n", stderr);
    std::exit(1);
}

} // namespace

int main(int argc, char **argv) {
    int rounds = 10, displays = 1;
    bool hasCompositor = false;
    for (int place = 1; place < argc; ++place) {
        const std::string_view argument = argv[place];
        if (argument == "--rounds" && place + 1 < argc)
            rounds = std::max(1, std::atoi(argv[++place]));
        else if (argument == "--displays" && place + 1 < argc)
            displays = std::clamp(std::atoi(argv[++place]), 1, 2);
        else if (argument == "--compositor")
            hasCompositor = true;
        else
            return std::fputs("bench_overlay [--rounds 10] [--displays 1|2] [--compositor]\n", stderr), 2;
    }
    X11Session session({.width = width * displays, .height = height, .windowManager = true});
    if (displays == 2) {
        session.run({"xrandr", "--setmonitor", "LEFT", "3840/600x2160/340+0+0", "screen"});
        session.run({"xrandr", "--setmonitor", "RIGHT", "3840/600x2160/340+3840+0", "none"});
    }
    qputenv("QT_QPA_PLATFORM", "xcb");
    QApplication application(argc, argv);
    application.setQuitOnLastWindowClosed(false);
    ScreenWatch watch;
    watch.paintDesktop(0x4080c0);
    std::unique_ptr<ChildProcess> compositor;
    if (hasCompositor) {
        compositor = std::make_unique<ChildProcess>(
            std::vector<std::string>{"picom", "--backend", "xrender", "--config", "/dev/null"});
        if (!eventually([] { return DesktopLink::instance().isComposited(); }))
            return std::fputs("picom did not start\n", stderr), 1;
        session.run({"hsetroot", "-solid", "#4080c0"});
    }
    const TemporaryFolder folder;
    Settings settings(folder / "settings.ini");
    auto capture = X11CaptureBackend::create();
    if (!capture)
        return std::fputs("no X server\n", stderr), 1;
    X11StillCapture stills;
    SelectionOverlayController overlay({**capture, stills, settings});

    std::vector<double> shown;
    for (int round = 0; round < rounds; ++round) {
        watch.waitUntil(corners(displays), false);
        const double start = hostNow();
        overlay.begin(ToolMode::area, nullptr, [](const SelectionOutcome &, ToolMode) {});
        auto onScreen =
            std::async(std::launch::async, [&] { return watch.waitUntil(corners(displays), true); });
        eventually([&] { return onScreen.wait_for(std::chrono::seconds(0)) == std::future_status::ready; });
        shown.push_back(onScreen.get() - start);
        if (round + 1 < rounds)
            overlay.finish({});
        settle();
    }
    report("to the screen", shown);

    DragBench bench(firstView());
    bench.drag("drawing", {100, 100}, {3700, 2000});
    bench.drag("resizing", {3700, 2000}, {600, 500});
    bench.drag("resizing one edge", {600, 300}, {3700, 300});
    bench.drag("resizing one edge back", {3700, 300}, {1500, 300});
    bench.drag("moving", {800, 300}, {2900, 1500});
    overlay.finish({});
    return 0;
}
