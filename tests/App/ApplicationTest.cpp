// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "ApplicationFixture.h"
#include "Support/DiskFile.h"
#include "TestSupport/ChildProcess.h"
#include "TestSupport/Desktop/ServiceDouble.h"
#include "TestSupport/TestFile.h"

#include <gmock/gmock.h>

#include <array>
#include <csignal>
#include <cstdlib>
#include <random>
#include <set>
#include <thread>

namespace vantrell::testing {

namespace {

using ::testing::AllOf;
using ::testing::HasSubstr;

int killsAskedFor() {
    const char *const asked = std::getenv("VANTRELL_KILLS");
    return asked ? std::atoi(asked) : 1;
}

TEST_F(ApplicationTest, isOneHoweverOftenItIsStarted) {
    std::vector<std::unique_ptr<CaptureProgram>> copies;
    for (int i = 0; i < 4; ++i)
        copies.push_back(std::make_unique<CaptureProgram>(app));
    for (const auto &copy : copies)
        copy->start({});
    const auto running = [&] {
        return std::ranges::count_if(copies, [](const auto &copy) {
            copy->poll(std::chrono::milliseconds(20));
            return copy->isRunning();
        });
    };
    EXPECT_TRUE(eventually([&] { return running() == 1; }));
    EXPECT_TRUE(reaches("idle"));
    // It has a word for whoever asks, and a command that asks something of nothing.
    CaptureProgram command(app);
    EXPECT_THAT(command.run({"status"}).output,
                AllOf(HasSubstr("The application runs: idle"), HasSubstr("No tray was found")));
    EXPECT_THAT(command.run({"stop"}).errors, HasSubstr("Nothing is being recorded"));
    EXPECT_EQ(command.run({"quit"}).exitCode, 0);
    EXPECT_TRUE(eventually([&] { return running() == 0; }));
    EXPECT_THAT(command.run({"pause"}).errors, HasSubstr("Vantrell Capture is not running"));
    // What needs it starts it, with the key of whoever asked.
    EXPECT_EQ(command.run({"area"}).exitCode, 0);
    const QDBusReply<QVariantMap> status = call("Status");
    EXPECT_TRUE(status.value().value(QStringLiteral("connected")).toBool());
    EXPECT_EQ(command.run({"quit"}).exitCode, 0);
}

TEST_F(ApplicationTest, recordsPausesAndUploads) {
    launch();
    // What is asked for again happens once, while it starts and when it has.
    call("Start", {QVariantMap()});
    record();
    EXPECT_NE(call("Start", {QVariantMap()}).type(), QDBusMessage::ErrorMessage);
    call("Pause");
    ASSERT_TRUE(reaches("paused"));
    call("Pause");
    ASSERT_TRUE(reaches("recording"));
    // Stopped while it is pausing.
    call("Pause");
    CaptureProgram command(app);
    EXPECT_EQ(command.run({"stop"}).exitCode, 0);
    expectArrived(1);
    EXPECT_TRUE(reaches("idle"));

    // Discarded: in the trash, and recorded anew without being asked for.
    record();
    call("Discard", {true});
    ASSERT_TRUE(reaches("recording"));
    call("Discard", {false});
    ASSERT_TRUE(reaches("idle"));
    int trashed = 0;
    for (const auto &entry : std::filesystem::recursive_directory_iterator(app.folder()))
        trashed += entry.path().parent_path().filename() == "files" && entry.path().extension() == ".mov";
    EXPECT_EQ(trashed, 2);
    expectArrived(1);
    quit();
}

TEST_F(ApplicationTest, isWorkedByAssistiveTechnologyAlone) {
    ChildProcess accessibility({"/usr/libexec/at-spi-bus-launcher", "--launch-immediately"},
                               {{"DBUS_SESSION_BUS_ADDRESS", bus.address()}, {"DISPLAY", x11.display()}});
    ASSERT_TRUE(eventually([&] { return bus.isOwned("org.a11y.Bus"); }));
    app.set("QT_LINUX_ACCESSIBILITY_ALWAYS_ON", "1");
    writeSettings("micEnabled=true");
    launch();
    const ChildProcess::Environment session{{"DBUS_SESSION_BUS_ADDRESS", bus.address()},
                                            {"DISPLAY", x11.display()}};
    const std::filesystem::path said = app.folder() / "life.log";
    ChildProcess user(
        {"/bin/sh", "-c",
         "exec /usr/bin/python3 -W ignore " VANTRELL_APP_TESTS "/life-by-actions.py 2>" + said.string()},
        session);
    EXPECT_EQ(user.waitForExit(), 0) << readFile(said).value_or("");
    expectArrived(1);
    quit();
}

TEST_F(ApplicationTest, keepsARecordingWhoseProjectIsDeletedMeanwhile) {
    writeSettings("selectedProjectId=" + project);
    launch();
    record();
    service.deleteProject(project);
    call("Stop");
    ASSERT_TRUE(reaches("idle"));
    const auto cardState = [&] {
        return cards().value(0).value(QStringLiteral("state")).toString().toStdString();
    };
    EXPECT_TRUE(eventually([&] { return cardState() == "needsProject" || cardState() == "failed"; }))
        << cardState();
    EXPECT_EQ(confirmed(), 0);
    // Another one is chosen, here in an editor.
    writeSettings("selectedProjectId=" + service.createProject("Other"));
    CaptureProgram command(app);
    const auto resumed = command.run({"resume", "--json"});
    EXPECT_EQ(resumed.exitCode, 0) << resumed.errors;
    expectArrived(1);
    quit();
}

/// VANTRELL_KILLS=20: each end so often, VANTRELL_KILLS_BY="quit SIGKILL": only these.
TEST_F(ApplicationTest, losesNothingHoweverItEnds) {
    const SessionBus system;
    const auto logind = ServiceDouble::logind(system);
    app.set("DBUS_SYSTEM_BUS_ADDRESS", system.address());
    const std::string manager = "/org/freedesktop/login1",
                      managerInterface = "org.freedesktop.login1.Manager";
    const auto isHeldBack = [&] {
        const QVariantList locks = logind->call(manager, managerInterface, "ListInhibitors");
        const auto list = locks.value(0).value<QDBusArgument>();
        list.beginArray();
        const bool isHeld = !list.atEnd();
        list.endArray();
        return isHeld;
    };
    // The computer sleeps or goes off as soon as nobody holds it back.
    const auto powerGoes = [&](const std::string &announcement) {
        logind->emitSignal(manager, managerInterface, announcement, "b", {true});
        EXPECT_TRUE(eventually([&] { return !isHeldBack(); }));
        app.signal(SIGKILL);
    };
    const std::vector<std::pair<std::string, std::function<void()>>> ends{
        {"quit", [&] { call("Quit"); }},
        {"SIGTERM", [&] { app.signal(SIGTERM); }},
        {"SIGHUP", [&] { app.signal(SIGHUP); }},
        {"sleep", [&] { powerGoes("PrepareForSleep"); }},
        {"shutdown", [&] { powerGoes("PrepareForShutdown"); }},
        {"SIGKILL", [&] { app.signal(SIGKILL); }},
    };
    // Uploads take their time.
    service.fault("", "/(sign|storage|confirm)", {{"answerDelayMs", 150}}, 0);

    std::mt19937 random(std::random_device{}());
    // A moment of the recording's life, whichever: nothing is waited for.
    const auto pass = [&random](int least, int most) {
        const int time = std::uniform_int_distribution(least, most)(random);
        std::this_thread::sleep_for(std::chrono::milliseconds(time));
        return time;
    };
    const char *const askedEnds = std::getenv("VANTRELL_KILLS_BY");
    std::set<std::string> known;
    launch();
    for (int round = 0; round < killsAskedFor(); ++round) {
        for (const auto &[name, end] : ends) {
            if (askedEnds && !std::string(askedEnds).contains(name))
                continue;
            const bool isKilled = name == "SIGKILL";
            record();
            ASSERT_TRUE(eventually(isHeldBack));
            // A killed process may take the last two seconds with it.
            int recorded = pass(300, 1500) + (isKilled ? pass(2000, 2000) : 0);
            const bool hasPause = random() % 2 == 0;
            if (hasPause) {
                call("Pause");
                ASSERT_TRUE(reaches("paused"));
                call("Pause");
                ASSERT_TRUE(reaches("recording"));
                recorded += pass(0, 500);
            }
            const int longest = std::array{-1, 60, 1200}[random() % 3];
            if (longest >= 0)
                call("Stop");
            const int after = longest >= 0 ? pass(0, longest) : -1;
            SCOPED_TRACE(name + " after " + std::to_string(recorded) + (hasPause ? " with a pause" : "") +
                         (longest >= 0 ? ", stopped for " + std::to_string(after) : ""));
            end();
            const auto ended = app.finish();
            if (name == "quit" || name.starts_with("SIG"))
                EXPECT_EQ(ended.exitCode, isKilled ? -1 : 0) << ended.errors;
            if (isKilled) {
                app.start({});
                pass(0, 600);
                app.signal(SIGKILL);
                app.finish();
            }
            launch();
            // Asked for while it is at it, and once more.
            call("Recover");
            call("Recover");
            expectArrived(int(known.size()) + 1);
            for (const nlohmann::json &capture : service.captures(key))
                if (known.insert(capture.at("id")).second)
                    EXPECT_GE(capture.at("durationMs").get<int>(), recorded - (isKilled ? 2500 : 0));
            ASSERT_FALSE(HasFailure());
        }
    }
    quit();
}

TEST_F(ApplicationTest, recoversOnAnotherTryWhatItCouldNotAtFirst) {
    launch();
    record();
    std::vector<DiskFile> held;
    const auto holdMovies = [&] {
        for (const std::string &name : app.captureFiles())
            if (!name.ends_with(".recording"))
                held.push_back(std::move(*DiskFile::openForWriting(app.captures() / name)));
        return std::ranges::all_of(held, [](const DiskFile &file) { return file.lock().has_value(); });
    };
    // A killed process may take the last two seconds with it.
    std::this_thread::sleep_for(std::chrono::milliseconds(2500));
    app.signal(SIGKILL);
    app.finish();
    // As another process does that is still writing them.
    ASSERT_TRUE(holdMovies());
    launch();
    const auto state = [&] { return cards().value(0).value(QStringLiteral("state")).toString(); };
    ASSERT_TRUE(eventually([&] { return state() == QStringLiteral("failed"); }));
    EXPECT_EQ(cards().first().value(QStringLiteral("title")).toString(), "Screen recording (recovered)");
    call("Recover");
    EXPECT_TRUE(eventually([&] { return state() == QStringLiteral("failed"); }));
    EXPECT_EQ(cards().size(), 1);
    held.clear();
    EXPECT_TRUE(eventually([&] {
        call("Recover");
        return confirmed() == 1;
    }));
    expectArrived(1);
    EXPECT_LE(cards().size(), 1);
    quit();
}

TEST_F(ApplicationTest, uploadsForTheCommandsThatRunBesideIt) {
    launch();
    CaptureProgram command(app);
    const auto file = app.folder() / "picture.png";
    writeTestFile(file, 300'000, 1);
    const auto uploaded = command.run({"upload", file, app.folder() / "missing.png", "--json"});
    EXPECT_EQ(uploaded.exitCode, 1);
    EXPECT_THAT(uploaded.output, AllOf(HasSubstr("assetId"), HasSubstr("missing.png")));
    const auto recorded = command.run({"record", "--seconds", "1", "--upload", "--json"});
    EXPECT_EQ(recorded.exitCode, 0) << recorded.errors;
    EXPECT_TRUE(recorded.json().contains("assetId")) << recorded.output;
    expectArrived(2);

    // Parked for want of an answer, tried again by the command.
    service.fault("POST", "/sign", {{"status", 403}, {"body", {{"error", "no"}}}});
    const auto second = app.folder() / "second.png";
    writeTestFile(second, 1000, 2);
    EXPECT_EQ(command.run({"upload", second}).exitCode, 1);
    const auto resumed = command.run({"resume", "--json"});
    EXPECT_EQ(resumed.exitCode, 0) << resumed.errors;
    EXPECT_THAT(resumed.output, HasSubstr("second.png"));
    expectArrived(3);
    quit();
}

TEST_F(ApplicationTest, takesOverWhatACommandUploads) {
    const auto file = app.folder() / "large.png";
    writeTestFile(file, 2'000'000, 3);
    service.fault("PUT", "/storage", {{"stallAfterBytes", 100'000}});
    CaptureProgram command(app);
    command.start({"upload", file, "--json"});
    ASSERT_TRUE(eventually([this] { return !service.requests("/storage").empty(); }));
    launch();
    const auto uploaded = command.finish();
    EXPECT_EQ(uploaded.exitCode, 0) << uploaded.errors;
    EXPECT_THAT(uploaded.output, HasSubstr("assetId"));
    expectArrived(1);
    quit();

    // It starts in the middle of a recording, too, and uploads that.
    command.start({"record", "--upload", "--json"});
    command.waitForLog("recording started");
    launch();
    command.signal(SIGINT);
    const auto recorded = command.finish();
    EXPECT_EQ(recorded.exitCode, 0) << recorded.errors;
    EXPECT_THAT(recorded.output, HasSubstr("assetId"));
    expectArrived(2);
    quit();
}

TEST_F(ApplicationTest, stopsBeforeThePlansLimitAndKeepsWhatARevokedKeyCannotSend) {
    // It is not known when the recording begins, and moves the cap when it is.
    service.configure({{"maxVideoDurationMs", 6000}});
    service.fault("GET", "/limits", {{"status", 503}}, 3);
    launch();
    record();
    EXPECT_TRUE(eventually([&] { return service.requests("/limits").back().status == 200; }));
    EXPECT_EQ(state(), "recording");
    // By itself.
    EXPECT_TRUE(reaches("idle"));
    expectArrived(1);
    EXPECT_LT(service.captures(key).at(0).at("durationMs").get<int>(), 6000);

    const std::string other = service.createKey();
    record();
    service.revokeKey(key);
    call("Stop");
    ASSERT_TRUE(reaches("idle"));
    EXPECT_TRUE(eventually([&] {
        const QDBusReply<QVariantMap> now = call("Status");
        return !now.value().value(QStringLiteral("connected")).toBool();
    }));
    quit();
    app.set("VANTRELL_API_KEY", other);
    launch();
    CaptureProgram command(app);
    EXPECT_EQ(command.run({"resume"}).exitCode, 0);
    EXPECT_EQ(service.captures(other).size(), 2u);
    quit();
}

TEST_F(ApplicationTest, keepsWhatIsRecordedWithoutAnAccount) {
    app.set("VANTRELL_API_KEY", "");
    launch();
    record();
    call("Stop");
    ASSERT_TRUE(reaches("idle"));
    const auto journal = [&] {
        return readFile(app.folder() / "data/VantrellCapture/upload-journal.json").value_or("none");
    };
    EXPECT_THAT(journal(),
                AllOf(HasSubstr("\"failed\""), HasSubstr("Connect to Vantrell in the menu bar first")));
    quit();
    // Connected: tried again, it arrives.
    app.set("VANTRELL_API_KEY", key);
    launch();
    CaptureProgram command(app);
    EXPECT_EQ(command.run({"resume"}).exitCode, 0);
    expectArrived(1);
    quit();
}

TEST_F(ApplicationCameraTest, recordsACameraBesideTheScreenAndLosesNeither) {
    launch();
    recordPictures(30);
    call("Pause");
    ASSERT_TRUE(reaches("paused"));
    call("Pause");
    ASSERT_TRUE(reaches("recording"));
    call("Stop");
    expectArrived(2);
    EXPECT_EQ(cardsNamed("Camera "), 1);
    EXPECT_TRUE(eventually([&] { return !camera.isWatched(); }));

    recordPictures(15);
    call("Discard", {false});
    ASSERT_TRUE(reaches("idle"));
    expectArrived(2);

    int arrived = 2;
    std::mt19937 random(std::random_device{}());
    for (int round = killsAskedFor(); round > 0 && !HasFailure(); --round) {
        recordPictures(int(60 + random() % 60));
        app.signal(SIGKILL);
        app.finish();
        launch();
        expectArrived(arrived += 2);
        EXPECT_EQ(cardsNamed("Camera "), 1);
    }
    camera.unplug();
    record();
    call("Stop");
    expectArrived(arrived + 1);
    quit();
}

} // namespace

} // namespace vantrell::testing
