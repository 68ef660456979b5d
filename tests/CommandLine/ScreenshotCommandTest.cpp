// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Capture/CaptureMetadata.h"
#include "Support/AtomicFile.h"
#include "TestSupport/Desktop/X11Application.h"
#include "TestSupport/Desktop/X11Session.h"
#include "TestSupport/Program/CaptureProgram.h"

#include <QImage>

#include <gmock/gmock.h>

using ::testing::ElementsAre;
using ::testing::EndsWith;
using ::testing::IsEmpty;

namespace vantrell::testing {

namespace {

/// What a successful run has left behind.
struct Shot {
    nlohmann::json json;
    QImage picture;
    CaptureMetadata metadata;
};

Shot takeShot(CaptureProgram &program, std::vector<std::string> arguments) {
    arguments.insert(arguments.begin(), "screenshot");
    arguments.emplace_back("--json");
    const auto ended = program.run(arguments);
    EXPECT_EQ(ended.exitCode, 0) << ended.errors;
    const nlohmann::json json = ended.json();
    const std::string file = json["file"].get<std::string>();
    auto metadata = CaptureMetadata::fromJson(readFile(json["sidecar"].get<std::string>()).value_or(""));
    EXPECT_TRUE(metadata);
    EXPECT_TRUE(std::filesystem::exists(json["thumbnail"].get<std::string>()));
    return {json, QImage(QString::fromStdString(file)), metadata.value_or(CaptureMetadata())};
}

TEST(ScreenshotCommand, takesAWindowAnAreaAndADisplay) {
    const X11Session session({.windowManager = true});
    X11Application pad({.pixels = {50, 40, 201, 151}, .hasAlpha = true, .colour = 0x80800000});
    CaptureProgram program;

    const auto listed = program.run({"list", "windows", "--json"}).json();
    EXPECT_EQ(listed["id"], pad.window());
    EXPECT_EQ(listed["title"], "Pad");

    // A title may hold anything: one line, and nothing that a terminal obeys.
    pad.setText("_NET_WM_NAME", "UTF8_STRING", "a\nb\x1b[2Jc");
    EXPECT_THAT(program.run({"list", "windows"}).output, EndsWith("Pad  a b?[2Jc\n"));
    pad.setText("_NET_WM_NAME", "UTF8_STRING", "Pad");

    const Shot window = takeShot(
        program, {"--window", std::to_string(pad.window()), "--output", program.folder() / "out/deep"});
    EXPECT_EQ(window.picture.size(), QSize(201, 151));
    EXPECT_EQ(window.picture.pixelColor(200, 150), QColor(255, 0, 0, 128));
    EXPECT_EQ(window.json["name"], "Pad · Pad");
    EXPECT_EQ(window.json["pixelSize"], (nlohmann::json{{"width", 201}, {"height", 151}}));
    EXPECT_FALSE(window.json.contains("durationMs"));
    EXPECT_EQ(std::filesystem::path(window.json["file"].get<std::string>()).parent_path(),
              program.folder() / "out/deep");
    EXPECT_EQ(window.metadata.type, "screenshot");
    EXPECT_EQ(window.metadata.source, CaptureKind::window);
    EXPECT_EQ(window.metadata.window, (WindowInfo{"Pad", "Pad", "Pad", {50, 40, 201, 151}, true}));
    EXPECT_EQ(window.metadata.region, std::nullopt);
    EXPECT_THAT(program.captureFiles(), IsEmpty());

    const Shot area = takeShot(program, {"--area", "60,50,10,21"});
    EXPECT_EQ(area.picture.size(), QSize(10, 21));
    EXPECT_EQ(area.picture.pixelColor(0, 0), QColor(128, 0, 0));
    EXPECT_EQ(area.metadata.source, CaptureKind::area);
    EXPECT_EQ(area.metadata.region, (Rect{60, 50, 10, 21}));

    const Shot display = takeShot(program, {});
    EXPECT_EQ(display.picture.size(), QSize(640, 480));
    EXPECT_EQ(display.metadata.source, CaptureKind::display);
    EXPECT_EQ(display.metadata.window, std::nullopt);
    EXPECT_EQ(program.captureFiles().size(), 6u);
}

TEST(ScreenshotCommand, refusesWhatIsNotThereAndLeavesNothingBehind) {
    const X11Session session;
    CaptureProgram program;
    const auto error = [&program](std::vector<std::string> arguments) {
        arguments.insert(arguments.begin(), "screenshot");
        arguments.emplace_back("--json");
        const auto ended = program.run(arguments);
        EXPECT_EQ(ended.exitCode, 1);
        return ended.json()["error"].get<std::string>();
    };
    const auto misused = program.run({"photograph", "--json"});
    EXPECT_EQ(misused.exitCode, 2);
    EXPECT_EQ(misused.json()["error"], "Unknown command photograph");
    EXPECT_EQ(error({"--window", "99"}), "There is no window 99");
    EXPECT_EQ(error({"--area", "640,0,10,10"}), "The area lies outside every display");
    EXPECT_EQ(error({"--display", "HDMI-9"}), "There is no display HDMI-9");
    EXPECT_EQ(error({"--output", "/proc/nowhere"}).substr(0, 30), "Cannot write to /proc/nowhere:");
    EXPECT_THAT(program.captureFiles(), IsEmpty());
}

} // namespace
} // namespace vantrell::testing
