// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Platform/Desktop/AutostartLoginItem.h"

#include "TestSupport/ChildProcess.h"
#include "TestSupport/Desktop/ServiceDouble.h"
#include "TestSupport/RunTask.h"
#include "TestSupport/TemporaryFolder.h"

#include <fstream>

namespace vantrell::testing {

namespace {

namespace fs = std::filesystem;

int run(const std::vector<std::string> &command) {
    return ChildProcess(command).waitForExit().value_or(-1);
}

class AutostartLoginItemTest : public ::testing::Test {
protected:
    fs::path entryIn(const std::string &configuration) {
        return folder / configuration / "autostart" / "app.vantrell.Capture.desktop";
    }

    void write(const fs::path &file, const std::string &text) {
        fs::create_directories(file.parent_path());
        std::ofstream(file) << text;
    }

    TemporaryFolder folder;
    AutostartLoginItem::Options options{
        folder / "config", {folder / "system"}, folder / "program", std::nullopt};
};

TEST_F(AutostartLoginItemTest, writesAnEntryThatStartsTheProgramWhateverItsPath) {
    options.program = folder / "a \"b\" `c` $HOME \\d's" / "vantrell-capture";
    write(options.program, "#!/bin/sh\ntouch '" + (folder / "started").string() + "'\n");
    fs::permissions(options.program, fs::perms::owner_all);
    AutostartLoginItem item(options);
    EXPECT_FALSE(item.isEnabled());
    ASSERT_TRUE(item.setEnabled(true));
    EXPECT_TRUE(item.isEnabled());
    EXPECT_EQ(run({"desktop-file-validate", entryIn("config").string()}), 0);
    ASSERT_EQ(run({"gio", "launch", entryIn("config").string()}), 0);
    EXPECT_TRUE(eventually([&] { return fs::exists(folder / "started"); }));
    ASSERT_TRUE(item.setEnabled(false));
    EXPECT_FALSE(item.isEnabled());
    EXPECT_TRUE(item.setEnabled(false));
}

TEST_F(AutostartLoginItemTest, followsWhatTheDesktopsToolsAndTheSystemSay) {
    const AutostartLoginItem item(options);
    write(entryIn("config"), "[Desktop Entry]\nExec=x\nX-GNOME-Autostart-enabled = false\n");
    EXPECT_FALSE(item.isEnabled());
    write(entryIn("config"), "[Desktop Entry]\nExec=x\n[Other]\nHidden=true\n");
    EXPECT_TRUE(item.isEnabled());
    fs::remove(entryIn("config"));
    write(entryIn("system"), "[Desktop Entry]\nExec=x\n");
    EXPECT_TRUE(item.isEnabled());
    AutostartLoginItem changed(options);
    ASSERT_TRUE(changed.setEnabled(false));
    EXPECT_FALSE(changed.isEnabled());
    EXPECT_TRUE(fs::exists(entryIn("system")));

    // No folder can be made there.
    write(folder / "file", "");
    options.configuration = folder / "file";
    AutostartLoginItem nowhere(options);
    const auto refused = nowhere.setEnabled(true);
    ASSERT_FALSE(refused);
    EXPECT_EQ(refused.error().domain, "posix");
    EXPECT_FALSE(refused.error().message.empty());
}

TEST_F(AutostartLoginItemTest, inASandboxIsWhatThePortalGrants) {
    SessionBus bus;
    ServiceDouble portal(bus, "org.freedesktop.portal.Desktop", "/org/freedesktop/portal/desktop",
                         "org.freedesktop.portal.Background");
    const std::string sender = bus.connection().baseService().mid(1).replace('.', '_').toStdString();
    const std::string request = "/org/freedesktop/portal/desktop/request/" + sender + "/autostart";
    portal.addMethod("RequestBackground", "sa{sv}", "o",
                     "ret = '" + request +
                         "'\nself.AddObject(ret, 'org.freedesktop.portal.Request', {}, [])");
    options.portal = bus.connection();
    AutostartLoginItem item(options);
    ASSERT_TRUE(item.setEnabled(true));
    ASSERT_TRUE(eventually([&] { return portal.calls("RequestBackground").size() == 1; }));
    EXPECT_TRUE(item.isEnabled());
    portal.emitSignal(request, "org.freedesktop.portal.Request", "Response", "ua{sv}",
                      {uint(0), QVariantMap{{"background", true}, {"autostart", false}}});
    EXPECT_TRUE(eventually([&] { return !item.isEnabled(); }));
}

} // namespace
} // namespace vantrell::testing
