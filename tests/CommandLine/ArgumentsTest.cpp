// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "CommandLine/Arguments.h"

#include <gtest/gtest.h>

#include <sstream>

namespace vantrell::testing {

namespace {

std::expected<Arguments, UsageError> parse(const std::string &line) {
    std::istringstream stream(line);
    std::vector<std::string> words;
    for (std::string word; stream >> word;)
        words.push_back(word);
    return parseArguments(words);
}

RecordArguments record(const std::string &options) {
    const auto parsed = parse("record " + options);
    EXPECT_TRUE(parsed) << options << ": " << parsed.error().sentence;
    return parsed ? std::get<RecordArguments>(parsed->command) : RecordArguments{};
}

TEST(Arguments, readsTheWholeRecordCommand) {
    const RecordArguments all =
        record("--area -20,0,641,480 --seconds 2.5 --mic usb --system-audio --camera cam "
               "--cursor drawn --output out --upload --project p1");
    EXPECT_EQ(std::get<CaptureRequest::Area>(all.target.what).pixels, (PixelRect{-20, 0, 641, 480}));
    EXPECT_EQ(all.seconds, 2.5);
    EXPECT_EQ(all.microphoneId, "usb");
    EXPECT_TRUE(all.systemAudio && all.drawsCursor && all.upload);
    EXPECT_TRUE(all.camera);
    EXPECT_EQ(all.cameraId, "cam");
    EXPECT_EQ(all.outputFolder, "out");
    EXPECT_EQ(all.projectId, "p1");

    EXPECT_EQ(std::get<CaptureRequest::Window>(record("--window 0x1e00003").target.what).id, 0x1e00003u);
    EXPECT_EQ(std::get<CaptureRequest::WholeDisplay>(record("--display=DP-1").target.what).id, "DP-1");
}

TEST(Arguments, letsOptionalValuesBeLeftOut) {
    const RecordArguments plain = record("--display --mic --seconds 1");
    EXPECT_EQ(std::get<CaptureRequest::WholeDisplay>(plain.target.what).id, std::nullopt);
    EXPECT_TRUE(plain.microphone);
    EXPECT_EQ(plain.microphoneId, std::nullopt);
    EXPECT_EQ(plain.seconds, 1);
    EXPECT_FALSE(plain.drawsCursor);
}

TEST(Arguments, takesJsonAnywhereAndFilesAfterADoubleDash) {
    const auto upload = parse("--json upload a.mov -- --json");
    ASSERT_TRUE(upload);
    EXPECT_TRUE(upload->json);
    EXPECT_EQ(std::get<UploadArguments>(upload->command).files,
              (std::vector<std::filesystem::path>{"a.mov", "--json"}));
    EXPECT_TRUE(std::holds_alternative<ApplicationArguments>(parse("")->command));
}

TEST(Arguments, saysWhatIsWrong) {
    const std::pair<const char *, const char *> cases[] = {
        {"recrod", "Unknown command recrod"},
        {"record --fps 60", "Unknown option --fps"},
        {"record --seconds", "--seconds needs a value"},
        {"record --seconds 0", "--seconds needs a number greater than 0"},
        {"record --seconds nan", "--seconds needs a number greater than 0"},
        {"record --seconds 5s", "--seconds needs a number greater than 0"},
        {"record --area 0,0,10", "--area needs four whole numbers X,Y,W,H"},
        {"record --area 0,0,10,10,10", "--area needs four whole numbers X,Y,W,H"},
        {"record --area 0,0,0,10", "The area is smaller than a pixel"},
        {"record --window editor", "--window needs a window's number, not editor"},
        {"record --window 1 --area 0,0,9,9", "Give one of --display, --window and --area"},
        {"record --cursor big", "--cursor is drawn or separate"},
        {"record --system-audio=yes", "--system-audio takes no value"},
        {"record --seconds 1 --seconds 2", "--seconds is given twice"},
        {"record --project p1", "--project goes with --upload"},
        {"record now", "record takes no now"},
        {"upload", "upload needs the files to upload"},
        {"list", "list needs one of displays, windows, microphones, cameras and projects"},
        {"status now", "This command takes no now"},
        {"--fast", "Unknown option --fast"},
    };
    for (const auto &[line, sentence] : cases) {
        const auto parsed = parse(line);
        ASSERT_FALSE(parsed) << line;
        EXPECT_EQ(parsed.error().sentence, sentence) << line;
    }
}

} // namespace
} // namespace vantrell::testing
