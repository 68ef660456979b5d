// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "App/InstallLocation.h"

#include "App/Relaunch.h"
#include "AskedUser.h"
#include "TestSupport/LogCapture.h"
#include "TestSupport/RunTask.h"
#include "TestSupport/TemporaryFolder.h"
#include "TestSupport/TestFile.h"

#include <fstream>

namespace vantrell::testing {

namespace {

namespace fs = std::filesystem;

class InstallLocationTest : public ::testing::Test {
protected:
    /// A program that says that it was started, and from where.
    void writeProgram(const fs::path &file, const std::string &says) {
        fs::create_directories(file.parent_path());
        std::ofstream(file) << "#!/bin/sh\nprintf '%s %s' " << says << " \"$0\" >'"
                            << (folder / "new").string() << "'\nmv '" << (folder / "new").string() << "' '"
                            << (folder / "started").string() << "'\n";
        fs::permissions(file, fs::perms::owner_all);
    }

    InstallLocation location(const std::optional<PortableCopy> &copy) {
        return InstallLocation({.copy = copy,
                                .home = folder / "home",
                                .data = folder / "home/.local/share",
                                .passingFolders = {folder / "Downloads", folder / "not there"},
                                .systemName = "GNOME",
                                .relaunch = relaunch});
    }

    bool offer(const std::optional<PortableCopy> &copy) {
        InstallLocation place = location(copy);
        return runTask(place.offerMoveIfNeeded(user.ask(), {}));
    }

    bool eventuallyStarted(const std::string &says, const fs::path &program) {
        return eventually([&] { return fs::exists(folder / "started"); }) &&
               fileContents(folder / "started") == says + " " + program.string();
    }

    TemporaryFolder folder;
    AskedUser user;
    LogCapture log;
    const fs::path installed = folder / "home/.local/lib/vantrell-capture";
};

TEST_F(InstallLocationTest, asksJustWhereACopyWouldGoAway) {
    const fs::path image = folder / "Downloads/Vantrell.AppImage";
    writeProgram(image, "image");
    EXPECT_FALSE(location(std::nullopt).needsMove());
    EXPECT_TRUE(location(PortableCopy::find(image, "/usr/bin/vantrell-capture")).needsMove());
    EXPECT_FALSE(location(PortableCopy::find({}, image)).needsMove());
    // The folder around a program, by the marker at its top.
    writeProgram(folder / "Downloads/capture/bin/vantrell-capture", "folder");
    std::ofstream(folder / "Downloads/capture" / PortableCopy::marker).close();
    const auto inFolder = PortableCopy::find({}, folder / "Downloads/capture/bin/vantrell-capture");
    ASSERT_TRUE(inFolder);
    EXPECT_EQ(inFolder->root, folder / "Downloads/capture");
    EXPECT_EQ(inFolder->program, folder / "Downloads/capture/bin/vantrell-capture");
    writeProgram(folder / "Downloads/capture/vantrell-capture", "launcher");
    EXPECT_EQ(PortableCopy::find({}, inFolder->program)->program,
              folder / "Downloads/capture/vantrell-capture");
    EXPECT_TRUE(location(inFolder).needsMove());
    // A lasting place, and a name that only begins like a passing one.
    fs::rename(folder / "Downloads", folder / "Downloads kept");
    EXPECT_FALSE(location(PortableCopy::find(folder / "Downloads kept/Vantrell.AppImage", {})).needsMove());

    user.answers(1);
    fs::rename(folder / "Downloads kept", folder / "Downloads");
    EXPECT_FALSE(offer(PortableCopy::find(image, {})));
    ASSERT_EQ(user.questions.size(), 1u);
    EXPECT_EQ(user.questions[0].informative,
              "Vantrell Capture is running from the disk image. GNOME cannot remember the Screen Recording "
              "permission "
              "from there, so the app will move itself into Applications and reopen.");
    EXPECT_TRUE(log.contains("install: user declined move to Applications"));
    EXPECT_FALSE(fs::exists(folder / "home"));
}

TEST_F(InstallLocationTest, movesAnImageInPlaceOfAnOlderCopyAndStartsIt) {
    const fs::path image = folder / "Downloads/Vantrell 2.AppImage";
    writeProgram(image, "second");
    writeProgram(installed / "bin/old", "first");
    user.answers(0);
    EXPECT_TRUE(offer(PortableCopy::find(image, {})));
    EXPECT_TRUE(eventuallyStarted("second", installed / "Vantrell 2.AppImage"));
    EXPECT_FALSE(fs::exists(installed / "bin"));
    EXPECT_EQ(fs::canonical(folder / "home/.local/bin/vantrell-capture"), installed / "Vantrell 2.AppImage");
    EXPECT_TRUE(
        fs::exists(folder / "home/.local/share/icons/hicolor/scalable/apps/app.vantrell.Capture.svg"));
    const std::string entry =
        (folder / "home/.local/share/applications/app.vantrell.Capture.desktop").string();
    EXPECT_EQ(std::system(("desktop-file-validate '" + entry + "'").c_str()), 0);
    EXPECT_TRUE(log.contains("install: moved to " + (installed / "Vantrell 2.AppImage").string()));
    EXPECT_FALSE(location(PortableCopy::find(installed / "Vantrell 2.AppImage", {})).needsMove());
    EXPECT_TRUE(fs::exists(image));
}

TEST_F(InstallLocationTest, movesAFolderTwiceAndLeavesAllAsItWasWhenItCannot) {
    const fs::path program = folder / "Downloads/capture/bin/vantrell-capture";
    writeProgram(program, "folder");
    std::ofstream(folder / "Downloads/capture" / PortableCopy::marker).close();
    fs::create_symlink("bin/vantrell-capture", folder / "Downloads/capture/start");
    const auto copy = PortableCopy::find({}, program);
    for (int time = 0; time < 2; ++time) {
        user.answers(0);
        EXPECT_TRUE(offer(copy));
        EXPECT_TRUE(eventuallyStarted("folder", installed / "bin/vantrell-capture"));
        fs::remove(folder / "started");
    }
    EXPECT_TRUE(fs::is_symlink(installed / "start"));

    // Nothing can be written: the copy that is there stays, and nothing half made does.
    writeProgram(folder / "Downloads/capture/bin/more", "more");
    fs::permissions(folder / "Downloads/capture/bin/more", fs::perms::none);
    fs::create_directory(folder / "home/.local/lib/.vantrell-capture.new");
    fs::remove_all(folder / "home/.local/bin");
    std::ofstream(folder / "home/.local/bin") << "in the way";
    user.answers(0);
    user.answers(0);
    EXPECT_FALSE(offer(copy));
    EXPECT_EQ(user.questions.back().message, "Could not move Vantrell Capture");
    EXPECT_TRUE(user.questions.back().informative.ends_with(
        "\n\nDrag Vantrell Capture into your Applications folder and open it from there."));
    EXPECT_TRUE(log.contains("install: move failed: "));
    EXPECT_TRUE(fs::exists(installed / "bin/vantrell-capture"));
    EXPECT_FALSE(fs::exists(folder / "home/.local/lib/.vantrell-capture.new"));
}

} // namespace
} // namespace vantrell::testing
