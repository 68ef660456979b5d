// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Support/AtomicFile.h"
#include "TestSupport/Desktop/X11Session.h"
#include "TestSupport/Program/CaptureProgram.h"

#include <gmock/gmock.h>

#include <csignal>

using ::testing::ContainsRegex;
using ::testing::HasSubstr;

namespace vantrell::testing {

namespace {

TEST(Crash, leavesItsStackAndTheLastLinesOfTheLog) {
    const X11Session session;
    CaptureProgram program;
    program.start({"record"});
    program.waitForLog("recording started");
    program.signal(SIGABRT);
    program.finish();
    std::vector<std::filesystem::path> reports;
    for (const auto &entry :
         std::filesystem::directory_iterator(program.folder() / "data/VantrellCapture/Crashes"))
        reports.push_back(entry.path());
    ASSERT_EQ(reports.size(), 1u);
    const std::string text = readFile(reports.front()).value_or("");
    EXPECT_THAT(text, HasSubstr("Signal 6"));
    EXPECT_THAT(text, ContainsRegex("capture: recording started"));
    EXPECT_THAT(text, ContainsRegex("\n  vantrell-capture.0x[0-9a-f]+\n"));
}

} // namespace
} // namespace vantrell::testing
