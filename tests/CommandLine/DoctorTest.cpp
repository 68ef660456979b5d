// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "TestSupport/Account/SessionBus.h"
#include "TestSupport/Desktop/X11Session.h"
#include "TestSupport/Network/LocalService.h"
#include "TestSupport/Program/CaptureProgram.h"
#include "TestSupport/Sound/SoundSession.h"

#include <QElapsedTimer>

#include <gmock/gmock.h>

#include <csignal>
#include <fstream>

using ::testing::HasSubstr;
using ::testing::Not;

namespace vantrell::testing {

namespace {

/// One run of the doctor on some desktop.
struct Report {
    explicit Report(CaptureProgram &program) : ended(program.run({"doctor", "--json"})) {
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
