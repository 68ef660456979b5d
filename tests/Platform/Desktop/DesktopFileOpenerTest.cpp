// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Platform/Desktop/DesktopFileOpener.h"

#include "TestSupport/Desktop/ServiceDouble.h"
#include "TestSupport/RunTask.h"
#include "TestSupport/ScopedEnvironment.h"
#include "TestSupport/TemporaryFolder.h"
#include "TestSupport/TestFile.h"

#include <fstream>

namespace vantrell::testing {

namespace {

namespace fs = std::filesystem;

class DesktopFileOpenerTest : public ::testing::Test {
protected:
    DesktopFileOpenerTest() {
        const fs::path opener = folder / "xdg-open";
        std::ofstream(opener) << "#!/bin/sh\nprintf %s \"$1\" >'" << (folder / "opened").string()
                              << ".new'\n/bin/mv '" << (folder / "opened").string() << ".new' '"
                              << (folder / "opened").string() << "'\n";
        fs::permissions(opener, fs::perms::owner_all);
        writeTestFile(file, 10);
    }

    bool eventuallyOpened(const std::string &what) {
        const bool came = eventually([&] { return fs::exists(folder / "opened"); });
        const bool same = came && fileContents(folder / "opened") == what;
        fs::remove(folder / "opened");
        return same;
    }

    TemporaryFolder folder;
    const fs::path file = folder / "Capture 1 & ü#%.mp4";
    SessionBus bus;
    ScopedEnvironment path{"PATH", folder.path().string()};
    ScopedEnvironment display{"DISPLAY", ":0"};
};

TEST_F(DesktopFileOpenerTest, opensPagesAndFilesAndShowsTheFolderWhereNobodyShowsItems) {
    DesktopFileOpener opener(bus.connection());
    EXPECT_TRUE(opener.openPage("https://example.org/a?b=c&d"));
    EXPECT_TRUE(eventuallyOpened("https://example.org/a?b=c&d"));
    EXPECT_TRUE(opener.openFile(file));
    EXPECT_TRUE(eventuallyOpened(file.string()));
    EXPECT_TRUE(opener.showInFileManager(file));
    EXPECT_TRUE(eventuallyOpened(folder.path().string()));
    EXPECT_FALSE(opener.openFile(folder / "gone.mp4"));
    EXPECT_FALSE(opener.showInFileManager(folder / "gone.mp4"));

    ServiceDouble manager(bus, "org.freedesktop.FileManager1", "/org/freedesktop/FileManager1",
                          "org.freedesktop.FileManager1");
    manager.addMethod("ShowItems", "ass", "");
    EXPECT_TRUE(opener.showInFileManager(file));
    ASSERT_TRUE(eventually([&] { return manager.calls("ShowItems").size() == 1; }));
    const QString shown = manager.calls("ShowItems")[0].value(0).toStringList().value(0);
    EXPECT_EQ(shown.toStdString(),
              "file://" + folder.path().string() + "/Capture%201%20%26%20%C3%BC%23%25.mp4");
}

TEST_F(DesktopFileOpenerTest, inASandboxAsksThePortalAndSaysWhenThereIsNoWay) {
    const ScopedEnvironment sandbox("SNAP", "/snap/x");
    ServiceDouble portal(bus, "org.freedesktop.portal.Desktop", "/org/freedesktop/portal/desktop",
                         "org.freedesktop.portal.OpenURI");
    for (const auto &[member, in] :
         {std::pair("OpenURI", "ssa{sv}"), {"OpenFile", "sha{sv}"}, {"OpenDirectory", "sha{sv}"}})
        portal.addMethod(member, in, "o", "ret = '/x'");
    DesktopFileOpener opener(bus.connection());
    EXPECT_TRUE(opener.openPage("https://example.org/"));
    EXPECT_TRUE(opener.openFile(file));
    EXPECT_TRUE(opener.showInFileManager(file));
    ASSERT_TRUE(eventually([&] { return portal.calls("OpenDirectory").size() == 1; }));
    EXPECT_EQ(portal.calls("OpenURI").at(0).value(1).toString(), "https://example.org/");
    EXPECT_EQ(portal.calls("OpenFile").size(), 1u);

    DesktopFileOpener alone{QDBusConnection("no such connection")};
    EXPECT_FALSE(alone.openPage("https://example.org/"));
    EXPECT_FALSE(alone.openFile(file));
}

} // namespace
} // namespace vantrell::testing
