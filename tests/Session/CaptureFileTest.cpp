// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Session/CaptureFile.h"

#include "Support/AtomicFile.h"
#include "TestSupport/TemporaryFolder.h"
#include "TestSupport/TestFile.h"

#include <gtest/gtest.h>

#include <sys/stat.h>

namespace vantrell::testing {

namespace {

TEST(CaptureFile, leavesOutWhatBesideItIsNoSidecar) {
    const TemporaryFolder folder;
    const auto sidecar = folder / "shot.json";
    writeTestFile(folder / "shot.png", 100);
    const auto typeWith = [&](const std::string &json) {
        EXPECT_TRUE(writeFileAtomically(sidecar, json));
        const auto capture = readCaptureFile(folder / "shot.png");
        EXPECT_TRUE(capture);
        return capture ? capture->metadata.type : capture.error();
    };
    CaptureMetadata metadata;
    metadata.type = "screenshot";
    EXPECT_EQ(typeWith(metadata.jsonData()), "screenshot");
    EXPECT_EQ(typeWith(metadata.jsonData() + std::string(17 << 20, ' ')), "");
    EXPECT_EQ(typeWith(R"({"version":1e999})"), "");

    std::filesystem::remove(sidecar);
    ASSERT_EQ(::mkfifo(sidecar.c_str(), 0600), 0);
    EXPECT_EQ(readCaptureFile(folder / "shot.png")->metadata.type, "");
}

} // namespace
} // namespace vantrell::testing
