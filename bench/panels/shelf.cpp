// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

// What the shelf costs with twelve uploads, each of which tells of its progress ten times a second, and how
// soon a card is on the screen. On a virtual display of its own; with a compositor when `--compositor` is
// given.
//
//     bench_shelf [--seconds 15] [--compositor]

#include "OwnProcessorTime.h"

#include "Platform/NullCaptureBackend.h"
#include "Platform/X11/X11StillCapture.h"
#include "ShelfPanel/ShelfPanel.h"
#include "Support/SystemClock.h"
#include "TestSupport/Desktop/X11Session.h"

#include <QApplication>
#include <QEventLoop>
#include <QTimer>
#include <QWindow>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <optional>
#include <string_view>
#include <vector>

using namespace vantrell;
using namespace std::chrono_literals;

namespace {

using SteadyClock = std::chrono::steady_clock;

struct NoFiles final : FileOpener {
    bool openPage(const std::string &) override { return false; }
    bool openFile(const std::filesystem::path &) override { return false; }
    bool showInFileManager(const std::filesystem::path &) override { return false; }
};

void runFor(std::chrono::milliseconds time) {
    QEventLoop loop;
    QTimer::singleShot(time, Qt::PreciseTimer, &loop, &QEventLoop::quit);
    loop.exec();
}

bool isShelfOnScreen() {
    return std::ranges::any_of(QGuiApplication::topLevelWindows(), [](const QWindow *window) {
        return window->isVisible() && window->isExposed();
    });
}

QUuid addCard(ShelfStore &store) {
    CaptureResult made{.fileURL = "/tmp/movie.mov", .name = "Capture Nov 21 at 4.58.45 PM"};
    made.previewImage = QImage(1920, 1080, QImage::Format_RGB32);
    made.previewImage.fill(0x44617c);
    made.durationMs = 41000;
    return store.add(std::make_shared<const CaptureResult>(std::move(made)));
}

/// From the store's change to the window on the screen, in ms, sorted.
std::vector<double> appearances(ShelfStore &store) {
    std::vector<double> times;
    for (int round = 0; round < 20; ++round) {
        const auto start = SteadyClock::now();
        const QUuid id = addCard(store);
        while (!isShelfOnScreen())
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
        times.push_back(std::chrono::duration<double, std::milli>(SteadyClock::now() - start).count());
        runFor(200ms);
        store.remove(id);
        while (isShelfOnScreen())
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
        runFor(100ms);
    }
    std::ranges::sort(times);
    return times;
}

/// Seconds of processor time a minute, with what telling the store costs: all of it when no shelf observes
/// it.
double cpuOfUploads(ShelfStore &store, std::chrono::seconds length) {
    std::vector<QUuid> cards;
    for (int i = 0; i < 12; ++i)
        cards.push_back(addCard(store));
    runFor(1s);
    std::vector<std::unique_ptr<QTimer>> timers;
    for (std::size_t i = 0; i < cards.size(); ++i) {
        auto &timer = timers.emplace_back(std::make_unique<QTimer>());
        timer->setTimerType(Qt::PreciseTimer);
        QObject::connect(timer.get(), &QTimer::timeout, timer.get(),
                         [&store, id = cards[i], progress = 0.0]() mutable {
                             // A minute's upload: from nothing to the end.
                             progress = progress > 1 ? 0 : progress + 0.1 / 60;
                             store.update(id, ShelfItem::Uploading{progress});
                         });
        timer->start(100ms);
        runFor(8ms);
    }
    const double before = ownProcessorTime();
    runFor(length);
    return (ownProcessorTime() - before) * 60 / double(length.count());
}

} // namespace

int main(int argc, char **argv) {
    std::chrono::seconds length = 15s;
    bool hasCompositor = false;
    for (int i = 1; i < argc; ++i) {
        if (std::string_view(argv[i]) == "--compositor")
            hasCompositor = true;
        else if (std::string_view(argv[i]) == "--seconds" && i + 1 < argc)
            length = std::chrono::seconds(std::max(1, std::atoi(argv[++i])));
    }
    const testing::X11Session session{{.width = 1920, .height = 1200, .windowManager = true}};
    std::optional<testing::ChildProcess> compositor;
    if (hasCompositor) {
        session.run({"hsetroot", "-solid", "#306090"});
        compositor.emplace(
            std::vector<std::string>{"picom", "--backend", "xrender", "--config", "/dev/null"});
        session.run({"sleep", "1"});
    }
    ::setenv("QT_QPA_PLATFORM", "xcb", 1);
    QApplication application(argc, argv);
    SystemClock clock;
    ShelfStore unseen(clock);
    const double withoutShelf = cpuOfUploads(unseen, length);
    ShelfStore store(clock);
    NullCaptureBackend capture("none");
    NoFiles files;
    X11StillCapture stills;
    ShelfPanel shelf({store, capture, files, &stills, &clock});
    store.onVisibilityChange = [&shelf](bool visible) { shelf.setVisible(visible); };

    const std::vector<double> times = appearances(store);
    std::printf("card on the screen        %6.1f ms (median of %zu), %.1f ms (worst)\n",
                times[times.size() / 2], times.size(), times.back());
    const double withShelf = cpuOfUploads(store, length);
    std::printf("twelve uploads            %6.2f s CPU a minute, and %.2f s of the uploads' own news\n",
                withShelf - withoutShelf, withoutShelf);
    return 0;
}
