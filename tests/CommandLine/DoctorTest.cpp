// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "TestSupport/Account/SecretServiceSession.h"
#include "TestSupport/Account/SessionBus.h"
#include "TestSupport/Desktop/ServiceDouble.h"
#include "TestSupport/Desktop/X11Session.h"
#include "TestSupport/Network/LocalService.h"
#include "TestSupport/Program/CaptureProgram.h"
#include "TestSupport/Sound/SoundSession.h"
#include "TestSupport/Wayland/SwaySession.h"

#include <QElapsedTimer>

#include <gmock/gmock.h>

#include <csignal>
#include <fstream>
#include <set>

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::Not;

namespace vantrell::testing {

namespace {

/// One run of the doctor on some desktop.
struct Report {
    explicit Report(CaptureProgram program, const std::vector<std::string> &wrapper = {}) {
        program.start({"doctor", "--json"}, wrapper);
        ended = program.finish();
        if (!ended.output.empty())
            json = ended.json();
    }
    /// "state: text" of the first finding about something; empty when there is none.
    std::string about(const std::string &topic) const {
        for (const auto &check : json["checks"])
            if (check["topic"] == topic)
                return check["state"].get<std::string>() + ": " + check["text"].get<std::string>();
        return {};
    }
    /// The topics of lines that are not ok, but for those that are `expected` not to be.
    std::set<std::string> unfit(const std::set<std::string> &expected = {}) const {
        std::set<std::string> topics;
        for (const auto &check : json["checks"])
            if (check["state"] != "ok" && !expected.contains(check["topic"]))
                topics.insert(check["topic"]);
        return topics;
    }
    CaptureProgram::Ended ended;
    nlohmann::json json;
};

TEST(Doctor, findsADesktopWithEverythingFit) {
    const X11Session session({.windowManager = true});
    const SoundSession sound;
    const LocalService service;
    CaptureProgram program;
    program.set("DBUS_SESSION_BUS_ADDRESS", SessionBus::ofThisProcess().address());
    program.set("DISPLAY", session.display());
    program.set("VANTRELL_API_URL", service.url());
    program.set("VANTRELL_API_KEY", "not-a-key-of-this-service");
    const Report report(program);
    EXPECT_THAT(report.about("Session"), HasSubstr("ok: X11"));
    EXPECT_EQ(report.about("X extensions"), "ok: all there");
    EXPECT_THAT(report.about("Windows"), HasSubstr("Openbox"));
    EXPECT_THAT(report.about("Screen"), HasSubstr("640x480"));
    EXPECT_EQ(report.about("Sound"), "ok: 1 microphone");
    EXPECT_EQ(report.about("Encoders"), "ok: x264 works");
    EXPECT_THAT(report.about("Service"), HasSubstr("ok: "));
    EXPECT_THAT(report.about("Tray"), HasSubstr("advice: none"));
    // The report is pasted into public places.
    EXPECT_THAT(report.ended.output, Not(HasSubstr("not-a-key")));
    EXPECT_THAT(report.ended.output, Not(HasSubstr(program.folder().string())));
}

TEST(Doctor, namesWhatIsMissing) {
    const X11Session session({.serverArguments = {"-extension", "DAMAGE"}});
    CaptureProgram program;
    program.set("DISPLAY", session.display());
    program.set("PULSE_SERVER", "unix:/nonexistent");
    program.set("VANTRELL_API_URL", "http://127.0.0.1:1");
    std::ofstream(program.folder() / "full") << "no folder";
    program.set("XDG_DATA_HOME", program.folder() / "full");
    const Report report(program);
    EXPECT_EQ(report.ended.exitCode, 1) << report.ended.errors;
    for (const auto &[topic, text] : {std::pair{"X extensions", "problem: missing: DAMAGE"},
                                      {"Session bus", "problem: "},
                                      {"Keyring", "problem: "},
                                      {"Sound", "problem: "},
                                      {"Disk", "problem: "},
                                      {"Service", "problem: "}})
        EXPECT_THAT(report.about(topic), HasSubstr(text)) << topic;
    for (const auto &check : report.json["checks"])
        EXPECT_EQ(check["state"] == "ok", !check.contains("advice")) << check;
}

TEST(Doctor, namesTheOneThingThatADesktopLacks) {
    const X11Session session({.windowManager = true});
    const SoundSession sound;
    const LocalService service;
    SessionBus bus;
    SecretServiceSession keyring(bus);
    keyring.startUnlocked();
    const std::string watcher = "org.kde.StatusNotifierWatcher";
    auto tray = std::make_unique<ServiceDouble>(bus, watcher, "/StatusNotifierWatcher", watcher);
    tray->call("/StatusNotifierWatcher", "org.freedesktop.DBus.Mock", "AddProperties",
               {QString::fromStdString(watcher), QVariantMap{{"IsStatusNotifierHostRegistered", true}}});
    CaptureProgram program;
    program.set("DBUS_SESSION_BUS_ADDRESS", bus.address());
    program.set("DISPLAY", session.display());
    program.set("VANTRELL_API_URL", service.url());
    const std::set<std::string> before = Report(program).unfit();

    CaptureProgram mute(program);
    mute.set("PULSE_SERVER", "unix:/nonexistent");
    EXPECT_THAT(Report(mute).unfit(before), ElementsAre("Sound"));
    tray.reset();
    EXPECT_THAT(Report(program).unfit(before), ElementsAre("Tray"));
    keyring.kill();
    EXPECT_THAT(Report(program).unfit(before), ElementsAre("Keyring", "Tray"));
    // A disk that is full, where a test may have one.
    const std::string disk = program.folder() / "data";
    const Report full(program,
                      {"unshare", "-rm", "sh", "-c",
                       "mkdir -p \"$0\" && mount -t tmpfs -o size=1m none \"$0\" && exec \"$@\"", disk});
    if (!full.json.empty())
        EXPECT_EQ(full.about("Disk"), "problem: 0 GB free");
}

TEST(Doctor, missesThePortalOfAWaylandDesktop) {
    SwaySession session;
    CaptureProgram program;
    for (const auto &[name, value] : session.environment())
        program.set(name, value);
    program.set("XDG_SESSION_TYPE", "wayland");
    program.set("VANTRELL_API_URL", "http://127.0.0.1:1");
    const Report fit(program);
    EXPECT_THAT(fit.about("Session"), HasSubstr("(sway)"));
    EXPECT_THAT(fit.about("Portals"), HasSubstr("ok: ScreenCast"));
    session.ground().killPortal();
    const Report broken(program);
    EXPECT_THAT(broken.unfit(fit.unfit()), ElementsAre("Portals"));
    EXPECT_EQ(broken.about("Portals"), "problem: none");
    session.killCompositor();
    EXPECT_THAT(Report(program).about("Session"), HasSubstr("problem: no compositor answers"));
}

TEST(Doctor, endsThoughNothingAnswers) {
    X11Session session;
    SoundSession sound;
    sound.suspendServer();
    CaptureProgram program;
    program.set("DISPLAY", session.display());
    session.suspend();
    QElapsedTimer timer;
    timer.start();
    const Report report(program);
    session.resume();
    // Nine seconds by design; a loaded machine starts programs slowly.
    EXPECT_LT(timer.elapsed(), 25000);
    EXPECT_EQ(report.about("Session"), "problem: the X server at DISPLAY does not answer");
}

} // namespace
} // namespace vantrell::testing
