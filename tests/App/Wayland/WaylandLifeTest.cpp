// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Session/ApplicationBus.h"
#include "TestSupport/ChildProcess.h"
#include "TestSupport/Movie/DecodedMovie.h"
#include "TestSupport/Movie/MoviePictures.h"
#include "TestSupport/Program/CaptureProgram.h"
#include "TestSupport/RunTask.h"
#include "TestSupport/Wayland/FakeInput.h"
#include "TestSupport/Wayland/SwaySession.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusReply>
#include <QImage>

#include <gmock/gmock.h>

#include <csignal>
#include <set>

#include <linux/input-event-codes.h>

using namespace std::chrono_literals;

namespace vantrell::testing {

namespace {

/// The panels' colours, which nothing else on the screen has.
constexpr QRgb recordingRed = 0xffd63b41;
constexpr QRgb sceneGround = 0xff306090;
constexpr int belowNumbers = 80;

/// The application on a Wayland compositor, worked as its user does.
class WaylandLifeTest : public ::testing::Test {
protected:
    WaylandLifeTest() {
        for (const auto &[name, value] : session.environment())
            app.set(name, value);
        app.set("XDG_SESSION_TYPE", "wayland");
        app.set("QT_QPA_PLATFORM", "wayland");
        app.set("QT_LOGGING_RULES", "app.vantrell.*=true");
        app.set("VANTRELL_API_URL", "http://127.0.0.1:9");
        app.set("HOME", app.folder());
        app.set("XDG_DATA_HOME", app.folder() / "data");
        app.set("XDG_CONFIG_HOME", app.folder() / "config");
        session.showNumbers(10);
        app.start({});
        app.waitForLog("launched");
    }
    ~WaylandLifeTest() override {
        app.signal(SIGTERM);
        EXPECT_EQ(app.finish().exitCode, 0);
    }

    QVariantMap status() {
        const QDBusReply<QVariantMap> answer = session.bus().connection().call(QDBusMessage::createMethodCall(
            applicationBus::name, applicationBus::path, applicationBus::interface, "Status"));
        return answer.value();
    }
    bool reaches(const QString &wanted) {
        return eventually([&] { return status().value("state").toString() == wanted; });
    }
    bool recordsFor(double seconds) {
        return eventually([&] { return status().value("elapsedSeconds").toDouble() >= seconds; });
    }
    void choose(const std::string &tool) { EXPECT_EQ(CaptureProgram(app).run({tool}).exitCode, 0); }

    QImage screen() {
        const std::string file = (app.folder() / "screen.png").string();
        EXPECT_EQ(ChildProcess({"grim", file}, session.environment()).waitForExit(), 0);
        return QImage(QString::fromStdString(file)).convertToFormat(QImage::Format_RGB32);
    }
    /// What is of that colour on the screen.
    QRect find(QRgb colour) {
        const QImage picture = screen();
        QRect found;
        for (int y = 0; y < picture.height(); ++y)
            for (int x = 0; x < picture.width(); ++x)
                if (picture.pixel(x, y) == colour)
                    found |= QRect(x, y, 1, 1);
        return found;
    }
    /// What lies on the scene's ground, below its numbers.
    QRect findPanels() {
        const QImage picture = screen();
        QRect found;
        for (int y = belowNumbers; y < picture.height(); ++y)
            for (int x = 0; x < picture.width(); ++x)
                if (picture.pixel(x, y) != sceneGround)
                    found |= QRect(x, y, 1, 1);
        return found;
    }
    /// Waits until the overlay has come, and draws a selection: once, since from the corner of one that is
    /// there already it would be a resizing.
    bool drawArea(const QRect &area) {
        const QPoint aside(20, 600);
        const QRgb before = screen().pixel(aside);
        choose("area");
        const bool isUp = eventually([&] { return screen().pixel(aside) != before; });
        input.move(area.left(), area.top());
        input.press();
        input.move(area.center().x(), area.center().y());
        input.move(area.left() + area.width(), area.top() + area.height());
        input.release();
        return isUp && eventually([&] { return !find(recordingRed).isEmpty(); });
    }

    SwaySession session;
    FakeInput input{{1280, 720}};
    CaptureProgram app;
};

TEST_F(WaylandLifeTest, recordsAnAreaBesideWhichItsPanelLies) {
    const QRect area(200, 120, 400, 300);
    ASSERT_TRUE(drawArea(area));
    input.key(KEY_ENTER);
    ASSERT_TRUE(reaches("recording"));

    QRect stop;
    ASSERT_TRUE(eventually([&] {
        stop = find(recordingRed);
        return !stop.isEmpty();
    }));
    EXPECT_FALSE(stop.intersects(area));
    ASSERT_TRUE(recordsFor(1));
    constexpr int toNextButton = 24;
    input.click(stop.right() + toNextButton, stop.center().y());
    ASSERT_TRUE(reaches("paused"));
    input.click(stop.right() + toNextButton, stop.center().y());
    ASSERT_TRUE(reaches("recording"));
    ASSERT_TRUE(recordsFor(2));
    input.click(stop.center().x(), stop.center().y());
    ASSERT_TRUE(reaches("idle"));

    const auto files = app.captureFiles();
    const auto movie =
        std::ranges::find_if(files, [](const std::string &name) { return name.ends_with(".mov"); });
    ASSERT_NE(movie, files.end());
    const DecodedMovie decoded = decodeMovie(app.captures() / *movie);
    EXPECT_EQ(decoded.error, "");
    ASSERT_FALSE(decoded.streams.empty());
    ASSERT_FALSE(decoded.streams[0].pictures.empty());
    EXPECT_EQ(decoded.streams[0].pictures[0].width, area.width());
    EXPECT_EQ(decoded.streams[0].pictures[0].height, area.height());
}

TEST_F(WaylandLifeTest, showsNoPanelOnAScreenThatIsRecorded) {
    QRect card;
    for (int recording = 0; recording < 2; ++recording) {
        choose("screen");
        ASSERT_TRUE(eventually([&] {
            input.key(KEY_ENTER);
            return status().value("state").toString() == "recording";
        }));
        ASSERT_TRUE(recordsFor(1));
        EXPECT_EQ(find(recordingRed), QRect());
        EXPECT_EQ(CaptureProgram(app).run({"stop"}).exitCode, 0);
        ASSERT_TRUE(reaches("idle"));
        ASSERT_TRUE(eventually([&] { return !(card = findPanels()).isEmpty(); }));
    }
    // The first recording's card was there when the second one began.
    std::set<std::string> movies;
    for (const std::string &name : app.captureFiles())
        if (name.ends_with(".mov"))
            movies.insert(name);
    ASSERT_EQ(movies.size(), 2u);
    std::vector<int> onCard;
    forEachPicture(app.captures() / *movies.rbegin(), [&](const MoviePicture &picture) {
        onCard.push_back(picture.at(card.center().x(), card.center().y()).y);
    });
    ASSERT_FALSE(onCard.empty());
    EXPECT_THAT(onCard, ::testing::Each(::testing::AllOf(::testing::Ge(90), ::testing::Le(96))));

    // Nor are the cards in a still of where they lie. The pointer ends below, where the buttons are.
    const QRect corner(840, 440, 420, 190);
    const auto isEmpty = [](const QImage &picture) {
        QImage ground = picture;
        ground.fill(sceneGround);
        return picture == ground;
    };
    ASSERT_TRUE(eventually([&] { return !isEmpty(screen().copy(corner)); }));
    ASSERT_TRUE(drawArea(corner));
    const QRect record = find(recordingRed);
    constexpr int toCapture = 40;
    input.click(record.left() - toCapture, record.center().y());
    QImage still;
    ASSERT_TRUE(eventually([&] {
        for (const std::string &name : app.captureFiles())
            if (name.ends_with(".png"))
                still.load(QString::fromStdString((app.captures() / name).string()));
        return !still.isNull();
    }));
    EXPECT_EQ(still.size(), corner.size());
    EXPECT_TRUE(isEmpty(still.convertToFormat(QImage::Format_RGB32)));
}

TEST_F(WaylandLifeTest, stopsAStartThatTheDesktopNeverAnswers) {
    CaptureProgram command(app);
    EXPECT_EQ(command.run({"record", "--seconds", "1"}).exitCode, 0);
    session.freezeBackend();
    // What was agreed to is waited for some seconds, but not by somebody who insists. Two signals that merge
    // into one would be no insisting.
    command.start({"record"});
    command.poll(1s);
    command.signal(SIGINT);
    command.signal(SIGTERM);
    command.poll(2s);
    EXPECT_FALSE(command.isRunning());
    command.finish();

    choose("screen");
    ASSERT_TRUE(eventually([&] {
        input.key(KEY_ENTER);
        return status().value("state").toString() == "starting";
    }));
    EXPECT_EQ(CaptureProgram(app).run({"stop"}).exitCode, 0);
    EXPECT_TRUE(reaches("idle"));
}

TEST_F(WaylandLifeTest, givesTheKeyboardFromTheOverlayToTheBarAndBack) {
    ASSERT_TRUE(drawArea({200, 120, 400, 300}));
    // To the bar, there to its window tool; back again, where Escape means the overlay.
    input.key(KEY_TAB);
    input.key(KEY_RIGHT);
    input.key(KEY_ESC);
    ASSERT_TRUE(eventually([&] {
        input.key(KEY_ESC);
        return find(recordingRed).isEmpty();
    }));
    EXPECT_EQ(status().value("state").toString(), "idle");
}

} // namespace
} // namespace vantrell::testing
