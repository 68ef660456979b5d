// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Capture/CaptureMetadata.h"
#include "Media/Movie/MovieReader.h"
#include "Support/AtomicFile.h"
#include "TestSupport/Desktop/X11Painter.h"
#include "TestSupport/Desktop/X11Session.h"
#include "TestSupport/Network/LocalService.h"
#include "TestSupport/Program/CaptureProgram.h"
#include "TestSupport/Sound/SoundSession.h"

#include <QCryptographicHash>

#include <gmock/gmock.h>

#include <csignal>
#include <cstdlib>
#include <fstream>

using ::testing::HasSubstr;

namespace vantrell::testing {

namespace {

std::string sha256(const std::filesystem::path &file) {
    const auto bytes = readFile(file);
    EXPECT_TRUE(bytes);
    return QCryptographicHash::hash(QByteArray::fromStdString(bytes.value_or("")), QCryptographicHash::Sha256)
        .toHex()
        .toStdString();
}

TEST(RecordCommand, recordsAScreenThatNeverChangesAndItArrivesAtTheService) {
    const X11Session session({.width = 321, .height = 241});
    LocalService service;
    const std::string key = service.createKey();
    CaptureProgram program;
    program.set("VANTRELL_API_URL", service.url());
    program.set("VANTRELL_API_KEY", key);
    const std::filesystem::path output = program.folder() / "out/deep";

    const auto ended = program.run({"record", "--seconds", "1.5", "--output", output, "--upload", "--json"});
    ASSERT_EQ(ended.exitCode, 0) << ended.errors;
    const nlohmann::json json = ended.json();
    const double lasted = json["durationMs"].get<double>();
    EXPECT_GE(lasted, 1500);
    EXPECT_LT(lasted, 3500);
    EXPECT_EQ(json["pixelSize"], (nlohmann::json{{"width", 322}, {"height", 242}}));
    EXPECT_EQ(json["partial"], false);
    EXPECT_THAT(json["name"].get<std::string>(), HasSubstr("Capture "));

    const std::filesystem::path file = json["file"].get<std::string>();
    EXPECT_EQ(file.parent_path(), output);
    const auto facts = readMovieFacts(file);
    ASSERT_TRUE(facts) << facts.error().message;
    EXPECT_NEAR(facts->durationMs, lasted, 1);
    // Pictures with shared colour samples have even sides: nothing is cut off, a row and a column are added.
    EXPECT_EQ(facts->tracks.at(0).size, (PixelSize{322, 242}));
    const auto sidecar = CaptureMetadata::fromJson(readFile(json["sidecar"].get<std::string>()).value_or(""));
    ASSERT_TRUE(sidecar) << sidecar.error().message;
    EXPECT_EQ(sidecar->source, CaptureKind::display);
    EXPECT_EQ(sidecar->recording->cursorInVideo, false);

    const auto captures = service.captures(key);
    ASSERT_EQ(captures.size(), 1u);
    EXPECT_EQ(captures[0]["id"], json["assetId"]);
    EXPECT_EQ(captures[0]["status"], "confirmed");
    EXPECT_EQ(captures[0]["sha256"], sha256(file));
    EXPECT_EQ(captures[0]["hasThumb"], true);
    EXPECT_EQ(captures[0]["hasMeta"], true);
    EXPECT_EQ(captures[0]["mime"], "video/quicktime");
}

/// VANTRELL_PAUSES sets how often; what leaks shows in the sanitizer's exit code.
TEST(RecordCommand, canBePausedAgainAndAgain) {
    const X11Session session({.width = 320, .height = 240});
    const SoundSession sound;
    CaptureProgram program;
    program.start({"record", "--mic", "--system-audio", "--json"});
    program.waitForLog("recording started");
    const char *pauses = std::getenv("VANTRELL_PAUSES");
    for (int left = pauses ? std::atoi(pauses) : 5; left > 0; --left) {
        program.signal(SIGUSR1);
        program.waitForLog("recording paused");
        program.signal(SIGUSR1);
        program.waitForLog("recording resumed");
    }
    program.signal(SIGINT);
    const auto ended = program.finish();
    ASSERT_EQ(ended.exitCode, 0) << ended.errors;
    const nlohmann::json json = ended.json();
    EXPECT_EQ(json["partial"], false);
    const auto facts = readMovieFacts(json["file"].get<std::string>());
    ASSERT_TRUE(facts) << facts.error().message;
    EXPECT_NEAR(facts->durationMs, json["durationMs"].get<double>(), 1);
    EXPECT_EQ(facts->tracks.size(), 3u);
    const auto sidecar = CaptureMetadata::fromJson(readFile(json["sidecar"].get<std::string>()).value_or(""));
    ASSERT_TRUE(sidecar);
    EXPECT_NEAR(sidecar->recording->durationMs, facts->durationMs, 1);
}

TEST(RecordCommand, countsItsSecondsFromTheFirstPicture) {
    const X11Session session({.width = 320, .height = 240});
    const SoundSession sound;
    CaptureProgram program;
    const auto ended = program.run({"record", "--mic", "--system-audio", "--seconds", "1", "--json"});
    ASSERT_EQ(ended.exitCode, 0) << ended.errors;
    const double lasted = ended.json()["durationMs"].get<double>();
    // Counted from the start it would be half of that. The stop may come late where others have the cores.
    EXPECT_GE(lasted, 1000);
    EXPECT_LT(lasted, 3000);
}

TEST(RecordCommand, refusesWhatCannotBeRecordedAndLeavesNothingBehind) {
    const X11Session session;
    struct Case {
        std::vector<std::string> arguments;
        std::string variable;
        std::string value;
        int exitCode;
        std::string sentence;
    };
    const Case cases[] = {
        {{"--display", "DP-9"}, "", "", 1, "There is no display DP-9"},
        {{}, "DISPLAY", ":4711", 1, "There is no display to record: no X server answers"},
        {{"--area", "9000,0,10,10"}, "", "", 1, "The area lies outside every display"},
        {{"--window", "77"}, "", "", 1, "There is no window 77"},
        {{"--output", "/proc/nothing"}, "", "", 1, "Cannot write to /proc/nothing"},
        {{"--upload"}, "VANTRELL_API_URL", "http://example.com", 1, "https"},
        {{"--upload"}, "VANTRELL_API_URL", "https://127.0.0.1:1", 3, "Not connected to Vantrell"},
        {{"--seconds", "-1"}, "", "", 2, "--seconds needs a number greater than 0"},
    };
    for (const Case &c : cases) {
        CaptureProgram program;
        if (!c.variable.empty())
            program.set(c.variable, c.value);
        std::vector<std::string> arguments{"record", "--seconds", "1"};
        if (c.exitCode == 2)
            arguments = {"record"};
        arguments.insert(arguments.end(), c.arguments.begin(), c.arguments.end());
        const auto ended = program.run(arguments);
        EXPECT_EQ(ended.exitCode, c.exitCode) << c.sentence << ended.errors;
        EXPECT_THAT(ended.errors, HasSubstr(c.sentence));
        EXPECT_EQ(ended.output, "");
        EXPECT_THAT(program.captureFiles(), ::testing::IsEmpty());
    }
}

TEST(RecordCommand, keepsTheRecordingWhenTheServiceIsDown) {
    const X11Session session;
    LocalService service;
    CaptureProgram program;
    program.set("VANTRELL_API_URL", service.url());
    program.set("VANTRELL_API_KEY", service.createKey());
    service.stop();
    const auto ended = program.run({"record", "--seconds", "0.3", "--upload", "--json"});
    EXPECT_EQ(ended.exitCode, 1);
    const nlohmann::json json = ended.json();
    EXPECT_EQ(json["error"], "Network error");
    EXPECT_TRUE(readMovieFacts(json["file"].get<std::string>()));
    service.restart();
    const auto resumed = program.run({"resume", "--json"});
    EXPECT_EQ(resumed.exitCode, 0) << resumed.errors;
    EXPECT_EQ(resumed.json()["file"], json["file"]);
}

/// A recorder that sees a disk of its own, which fills to the brim when the test says so.
class FullDisk {
public:
    /// `afterwards` is a shell command that runs when the recorder has ended and there is room again.
    explicit FullDisk(const std::string &afterwards) {
        const std::filesystem::path disk = program.folder() / "data";
        std::filesystem::create_directories(disk);
        std::filesystem::create_directories(rescued);
        // What was saved is copied out before the disk goes away with the namespace.
        const std::string script = "disk=$1 rescued=$2; shift 2\n"
                                   "mount -t tmpfs -o size=2200m none \"$disk\" || exit 90\n"
                                   "\"$@\" & recorder=$!\n"
                                   "echo $recorder\n"
                                   "until [ -e \"$rescued/fill\" ]; do\n"
                                   "  kill -0 $recorder || exit 91; sleep 0.05\n"
                                   "done\n"
                                   "fallocate -l 2100m \"$disk/filler\"\n"
                                   "dd if=/dev/zero of=\"$disk/rest\" bs=4096 2>/dev/null\n"
                                   "wait $recorder; code=$?\n"
                                   "rm \"$disk/filler\" \"$disk/rest\"\n" +
                                   afterwards +
                                   "\ncp \"$disk\"/VantrellCapture/Captures/* \"$rescued\" || exit 92\n"
                                   "exit $code\n";
        program.start({"record", "--seconds", "60", "--json"},
                      {"unshare", "-rm", "sh", "-c", script, "sh", disk, rescued});
        recorder = std::stoi(program.nextLine());
        program.waitForLog("recording started");
    }

    static bool isPossible() {
        return QProcess::execute("unshare", {"-rm", "mount", "-t", "tmpfs", "none", "/mnt"}) == 0;
    }

    /// Shows so many pictures of noise, which compresses badly.
    void show(int pictures) {
        for (; pictures > 0 && program.isRunning(); --pictures) {
            for (int tile = 0; tile < 400; ++tile) {
                m_noise = m_noise * 1664525 + 1013904223;
                m_painter.fill({int(m_noise >> 8) % 1280, int(m_noise >> 20) % 720, 40, 40},
                               m_noise & 0xffffff);
            }
            m_painter.sync();
            program.poll(std::chrono::milliseconds(20));
        }
    }
    void pauseAndResume() const {
        ::kill(recorder, SIGUSR1);
        program.waitForLog("recording paused");
        ::kill(recorder, SIGUSR1);
        program.waitForLog("recording resumed");
    }
    void fill() const { std::ofstream(rescued / "fill").put('x'); }
    /// The saved file of that name, as it was copied.
    MovieFacts facts(const std::string &file) const {
        const auto read = readMovieFacts(rescued / std::filesystem::path(file).filename());
        EXPECT_TRUE(read) << read.error().message;
        return read.value_or(MovieFacts());
    }

    mutable CaptureProgram program;
    std::filesystem::path rescued = program.folder() / "rescued";
    pid_t recorder = 0;

private:
    X11Painter m_painter;
    std::uint32_t m_noise = 1;
};

TEST(RecordCommand, keepsWhatWasRecordedWhenTheDiskIsFull) {
    if (!FullDisk::isPossible())
        GTEST_SKIP() << "no mount namespaces here";
    const X11Session session({.width = 1280, .height = 720});
    FullDisk disk(":");
    disk.show(40);
    disk.fill();
    disk.show(3000);
    const auto ended = disk.program.finish();
    EXPECT_EQ(ended.exitCode, 0) << ended.errors;
    const nlohmann::json json = ended.json();
    EXPECT_EQ(json["endedBecause"], "The disk is full");
    EXPECT_LT(json["durationMs"].get<double>(), 59000) << ended.errors;
    EXPECT_GT(disk.facts(json["file"]).durationMs, 500);
}

TEST(RecordCommand, saysHowToRecoverWhenThereIsNoRoomToJoinTheParts) {
    if (!FullDisk::isPossible())
        GTEST_SKIP() << "no mount namespaces here";
    const X11Session session({.width = 1280, .height = 720});
    FullDisk disk("\"$1\" recover --json");
    disk.show(40);
    disk.pauseAndResume();
    disk.show(40);
    disk.fill();
    disk.show(3000);
    const std::string said = disk.program.nextLine();
    const auto ended = disk.program.finish();
    EXPECT_EQ(ended.exitCode, 1) << ended.errors;
    EXPECT_THAT(said, HasSubstr("The disk is full. What was recorded is kept: vantrell-capture recover"));
    const nlohmann::json recovered = ended.json();
    EXPECT_EQ(recovered["recovered"], true) << ended.errors;
    EXPECT_GT(disk.facts(recovered["file"]).durationMs, 1000);
}

} // namespace
} // namespace vantrell::testing
