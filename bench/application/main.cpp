// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

// What the application costs while nothing happens, and how soon it shows what it shows: from the process's
// start to its icon in the tray, from the stop of a recording to its card; memory, wake-ups and processor
// time while idle; and whether memory and descriptors stay as they are over many recordings.
//
//     bench_application [--rounds 10] [--idle 60] [--recordings 50]

#include "ProcessTree.h"
#include "Session/ApplicationBus.h"
#include "Support/HostTime.h"
#include "TestSupport/Account/SessionBus.h"
#include "TestSupport/Desktop/X11Session.h"
#include "TestSupport/Program/CaptureProgram.h"
#include "TestSupport/RunTask.h"
#include "TrayWatcher.h"

#include <QCoreApplication>
#include <QDBusMessage>
#include <QDBusReply>

#include <xcb/xcb.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
#include <string_view>
#include <thread>
#include <vector>

using namespace vantrell;
using namespace vantrell::bench;
using namespace vantrell::testing;

namespace {

void report(const char *what, std::vector<double> milliseconds) {
    std::ranges::sort(milliseconds);
    std::printf("%-28s median %6.1f   longest %6.1f ms   (%zu)\n", what,
                milliseconds[milliseconds.size() / 2], milliseconds.back(), milliseconds.size());
    std::fflush(stdout);
}

/// Sees windows come onto the screen.
class WindowWatch {
public:
    WindowWatch() : m_xcb(xcb_connect(nullptr, nullptr)) {
        const xcb_screen_t *screen = xcb_setup_roots_iterator(xcb_get_setup(m_xcb)).data;
        const std::uint32_t mask = XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY;
        xcb_change_window_attributes(m_xcb, screen->root, XCB_CW_EVENT_MASK, &mask);
        xcb_flush(m_xcb);
    }
    ~WindowWatch() { xcb_disconnect(m_xcb); }

    bool sawNewWindow() {
        bool isNew = false;
        while (xcb_generic_event_t *event = xcb_poll_for_event(m_xcb)) {
            isNew = isNew || (event->response_type & 0x7f) == XCB_MAP_NOTIFY;
            std::free(event);
        }
        return isNew;
    }

private:
    xcb_connection_t *m_xcb;
};

class Bench {
public:
    Bench() {
        m_app.set("DBUS_SESSION_BUS_ADDRESS", m_bus.address());
        m_app.set("DISPLAY", m_x11.display());
        m_app.set("QT_QPA_PLATFORM", "xcb");
        m_app.set("HOME", m_app.folder());
        m_app.set("VANTRELL_API_URL", "http://127.0.0.1:9");
    }

    void starts(int rounds) {
        std::vector<double> times;
        for (int round = 0; round < rounds + 1; ++round) {
            m_tray.forget();
            const double start = hostNow();
            m_app.start({});
            eventually([this] { return m_tray.iconAt().has_value(); });
            // The first one warms the caches.
            if (round > 0)
                times.push_back((*m_tray.iconAt() - start) * 1000);
            awaitState("idle");
            call("Quit");
            m_app.finish();
        }
        report("start to icon in the tray", times);
    }

    void idle(int seconds) {
        launchWithoutPanels();
        const std::map<std::string, ThreadUse> before = threads();
        std::this_thread::sleep_for(std::chrono::seconds(seconds));
        ThreadUse used;
        // A thread that has ended meanwhile has taken its counts along.
        for (const auto &[thread, now] : threads()) {
            const auto then = before.find(thread);
            used.switches += now.switches - (then == before.end() ? 0 : then->second.switches);
            used.cpuSeconds += now.cpuSeconds - (then == before.end() ? 0 : then->second.cpuSeconds);
        }
        std::printf("idle for %d s                pss %.1f MiB   %.2f wake-ups/s   cpu %.3f %%\n", seconds,
                    useOf(pid_t(m_app.processId())).pssMiB, used.switches / seconds,
                    used.cpuSeconds / seconds * 100);
        std::fflush(stdout);
    }

    void manyRecordings(int count) {
        for (int i = 0; i < 5; ++i)
            recordAndDiscard();
        const double memory = useOf(pid_t(m_app.processId())).pssMiB;
        const auto descriptors = openDescriptors();
        for (int i = 0; i < count; ++i)
            recordAndDiscard();
        std::printf("after %d recordings         pss %.1f MiB, was %.1f   descriptors %td, were %td\n", count,
                    useOf(pid_t(m_app.processId())).pssMiB, memory, openDescriptors(), descriptors);
        std::fflush(stdout);
    }

    void stops(int rounds) {
        WindowWatch windows;
        std::vector<double> times;
        for (int round = 0; round < rounds; ++round) {
            record();
            settle();
            windows.sawNewWindow();
            const double start = hostNow();
            m_bus.connection().send(message("Stop"));
            while (!windows.sawNewWindow() && hostNow() - start < 10)
                std::this_thread::sleep_for(std::chrono::milliseconds(1));
            times.push_back((hostNow() - start) * 1000);
            awaitState("idle");
            call("Quit");
            m_app.finish();
            launchWithoutPanels();
        }
        report("stop to card", times);
        call("Quit");
        m_app.finish();
    }

private:
    struct ThreadUse {
        double switches = 0;
        double cpuSeconds = 0;
    };
    std::map<std::string, ThreadUse> threads() const {
        std::map<std::string, ThreadUse> all;
        const std::string tasks = "/proc/" + std::to_string(m_app.processId()) + "/task";
        for (const auto &thread : std::filesystem::directory_iterator(tasks)) {
            ThreadUse &use = all[thread.path().filename().string()];
            std::ifstream(thread.path() / "schedstat") >> use.cpuSeconds;
            use.cpuSeconds /= 1e9;
            std::ifstream status(thread.path() / "status");
            for (std::string word; status >> word;)
                if (word == "voluntary_ctxt_switches:")
                    status >> use.switches;
        }
        return all;
    }
    static QDBusMessage message(const char *method, const QVariantList &arguments = {}) {
        QDBusMessage made = QDBusMessage::createMethodCall(applicationBus::name, applicationBus::path,
                                                           applicationBus::interface, method);
        made.setArguments(arguments);
        return made;
    }
    QDBusMessage call(const char *method, const QVariantList &arguments = {}) {
        return m_bus.connection().call(message(method, arguments), QDBus::BlockWithGui, 30'000);
    }
    void awaitState(const char *wanted) {
        eventually([&] {
            const QDBusReply<QVariantMap> status = call("Status");
            return status.value().value(QStringLiteral("state")).toString() == QLatin1String(wanted);
        });
    }
    void record() {
        call("Start", {QVariantMap()});
        awaitState("recording");
    }
    void recordAndDiscard() {
        record();
        call("Discard", {false});
        awaitState("idle");
    }
    /// A recording takes the capture bar away, and a discarded one leaves no card.
    void launchWithoutPanels() {
        if (!m_app.isRunning())
            m_app.start({});
        awaitState("idle");
        std::filesystem::remove(m_app.folder() / "data/VantrellCapture/upload-journal.json");
        recordAndDiscard();
    }
    std::ptrdiff_t openDescriptors() const {
        const std::filesystem::directory_iterator all("/proc/" + std::to_string(m_app.processId()) + "/fd");
        return std::distance(all, {});
    }

    X11Session m_x11{{.width = 1920, .height = 1080, .windowManager = true}};
    SessionBus m_bus;
    TrayWatcher m_tray{m_bus.connection()};
    CaptureProgram m_app;
};

} // namespace

int main(int argc, char **argv) {
    QCoreApplication application(argc, argv);
    int rounds = 10;
    int idle = 60;
    int recordings = 50;
    for (int i = 1; i + 1 < argc; i += 2) {
        const std::string_view option = argv[i];
        (option == "--rounds" ? rounds : option == "--idle" ? idle : recordings) = std::atoi(argv[i + 1]);
    }
    Bench bench;
    bench.starts(rounds);
    bench.idle(idle);
    bench.manyRecordings(recordings);
    bench.stops(std::min(rounds, 5));
}
