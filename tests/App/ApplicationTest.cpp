// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "ApplicationFixture.h"
#include "Support/DiskFile.h"
#include "TestSupport/ChildProcess.h"
#include "TestSupport/TestFile.h"

#include <gmock/gmock.h>

#include <csignal>
#include <cstdlib>
#include <random>
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
    record();
    // What is asked for twice happens once.
    EXPECT_NE(call("Start", {QVariantMap()}).type(), QDBusMessage::ErrorMessage);
    call("Pause");
    ASSERT_TRUE(reaches("paused"));
    call("Pause");
    ASSERT_TRUE(reaches("recording"));
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

TEST_F(ApplicationTest, losesNothingHoweverItEnds) {
    std::mt19937 random(std::random_device{}());
    const int rounds = killsAskedFor();
    int recordings = 0;
    const auto startOver = [&] {
        launch();
        // Asked for while it is at it, and once more.
        call("Recover");
        call("Recover");
        expectArrived(recordings);
    };
    launch();
    for (int round = 0; round < rounds; ++round) {
        for (const int number : {SIGTERM, SIGKILL, SIGHUP}) {
            record();
            // A killed process may take the last two seconds with it, and so all of a shorter recording.
            const auto wait = std::chrono::milliseconds(std::uniform_int_distribution(300, 2500)(random) +
                                                        (number == SIGKILL ? 2000 : 0));
            // A moment of the recording's life, whichever: nothing is waited for.
            std::this_thread::sleep_for(wait);
            const bool isStopped = random() % 2 == 0;
            if (isStopped)
                call("Stop");
            app.signal(number);
            const auto ended = app.finish();
            if (number != SIGKILL)
                EXPECT_EQ(ended.exitCode, 0) << ended.errors;
            ++recordings;
            SCOPED_TRACE(std::to_string(number) + (isStopped ? " stopped" : " recording") + " after " +
                         std::to_string(wait.count()));
            startOver();
        }
    }
    record();
    call("Quit");
    EXPECT_EQ(app.finish().exitCode, 0);
    ++recordings;
    startOver();
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
    service.configure({{"maxVideoDurationMs", 3000}});
    launch();
    record();
    // By itself.
    EXPECT_TRUE(reaches("idle"));
    expectArrived(1);
    EXPECT_LT(service.captures(key).at(0).at("durationMs").get<int>(), 3000);

    const std::string other = service.createKey();
    service.revokeKey(key);
    record();
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
