// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

// What the application costs while nothing happens, and how soon it shows what it shows: from the process's
// start to its icon in the tray, from the stop of a recording to its card; memory, wake-ups and processor
// time while idle; and whether memory and descriptors stay as they are over many recordings.
//
//     bench_application [--rounds 10] [--idle 60] [--recordings 50]
//     bench_application --day 500
//
// The second is a day of work in one process: so many recordings of a second are uploaded to a service, and
// the tray's host works the menu, which is made anew four times for each.

#include "Growth.h"
#include "ProcessTree.h"
#include "Session/ApplicationBus.h"
#include "Support/HostTime.h"
#include "TestSupport/Account/SessionBus.h"
#include "TestSupport/Desktop/X11Session.h"
#include "TestSupport/Network/LocalService.h"
#include "TestSupport/Program/CaptureProgram.h"
#include "TestSupport/RunTask.h"
#include "TrayMenu.h"
#include "TrayWatcher.h"

#include <QCoreApplication>
#include <QDBusArgument>
#include <QDBusMessage>
#include <QDBusReply>

#include <xcb/xcb.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
#include <stdexcept>
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

    void day(int recordings) {
        LocalService service;
        service.createProject("Day");
        m_app.set("VANTRELL_API_URL", service.url());
        m_app.set("VANTRELL_API_KEY", service.createKey());
        m_app.start({});
        awaitState("idle");
        eventually([this] { return m_tray.iconAt().has_value(); });
        std::puts("recordings   menus   pss MiB   own MiB   descriptors   threads");
        Growth memory, descriptors;
        const int step = std::max(1, recordings / 25);
        for (int done = 0;; ++done) {
            if (done % step == 0) {
                // Cards leave some seconds after their upload.
                eventually([this] { return cards() == 0; });
                const double pss = useOf(pid_t(m_app.processId())).pssMiB;
                const auto open = double(openDescriptors());
                const double own = anonymousMiB();
                memory.add(done, own * 1024);
                descriptors.add(done, open);
                std::printf("%10d %7d %9.1f %9.1f %13.0f %9zu\n", done, done * menusPerRecording, pss, own,
                            open, threads().size());
                std::fflush(stdout);
            }
            if (done == recordings)
                break;
            for (int i = 0; i < menusPerRecording; ++i)
                toggleInMenu();
            record();
            std::this_thread::sleep_for(std::chrono::seconds(1));
            call("Stop");
            awaitState("idle");
            eventually([this] { return status(QStringLiteral("uploading")).toInt() == 0; });
        }
        std::printf("each recording adds         %.2f KiB   %.4f descriptors\n", memory.perCount(),
                    descriptors.perCount());
        call("Quit");
        m_app.finish();
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
    /// Even: what the clicks change is as it was then.
    static constexpr int menusPerRecording = 4;

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
        return m_bus.call(message(method, arguments));
    }
    QVariant status(const QString &what) {
        const QDBusReply<QVariantMap> status = call("Status");
        return status.value().value(what);
    }
    std::ptrdiff_t cards() {
        return qdbus_cast<QList<QVariantMap>>(call("Items").arguments().value(0)).size();
    }
    void awaitState(const char *wanted) {
        eventually([&] { return status(QStringLiteral("state")).toString() == QLatin1String(wanted); });
    }
    /// As the tray's host does when somebody clicks in the menu, which is made anew then.
    void toggleInMenu() {
        TrayMenu menu(m_bus.connection(), m_tray.owner());
        const auto title = QStringLiteral("Record Microphone");
        const auto before = menu.find(title);
        menu.click(before.value());
        if (!eventually([&] { return menu.find(title).value().isChecked != before->isChecked; }))
            throw std::runtime_error("the menu is not made anew");
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
    /// What it shares with nobody, so that it does not depend on who else runs.
    double anonymousMiB() const {
        std::ifstream rollup("/proc/" + std::to_string(m_app.processId()) + "/smaps_rollup");
        double kibibytes = 0;
        for (std::string word; rollup >> word;)
            if (word == "Anonymous:")
                rollup >> kibibytes;
        return kibibytes / 1024;
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
    int day = 0;
    for (int i = 1; i + 1 < argc; i += 2) {
        const std::string_view option = argv[i];
        (option == "--rounds" ? rounds
         : option == "--idle" ? idle
         : option == "--day"  ? day
                              : recordings) = std::atoi(argv[i + 1]);
    }
    Bench bench;
    if (day > 0) {
        bench.day(day);
        return 0;
    }
    bench.starts(rounds);
    bench.idle(idle);
    bench.manyRecordings(recordings);
    bench.stops(std::min(rounds, 5));
}
