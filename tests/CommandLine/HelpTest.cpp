// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "CommandLine/ManualPage.h"
#include "CommandLine/ShellCompletion.h"
#include "CommandLine/UsageText.h"

#include <QProcess>

#include <gmock/gmock.h>

using ::testing::HasSubstr;

namespace vantrell::testing {

namespace {

TEST(Help, tellsOfEveryCommandAndOptionInEveryForm) {
    for (const CommandGroup &group : commandGroups())
        for (const CommandDescription &command : group.commands) {
            const std::string name(command.name);
            EXPECT_THAT(usageText(), HasSubstr("\n  " + name + ' '));
            EXPECT_THAT(manualPage(), HasSubstr(".B " + name));
            EXPECT_THAT(fishCompletion(), HasSubstr(" -a " + name + ' '));
            for (const OptionDescription &option : command.options) {
                EXPECT_THAT(usageText(command), HasSubstr("\n  " + spelling(option)));
                EXPECT_THAT(zshCompletion(), HasSubstr(std::string(option.name) + '['));
            }
        }
}

/// What bash offers behind a line that has been typed so far, in a folder with one file.
std::string offered(const std::string &words, int current) {
    QProcess bash;
    const std::string script =
        "cd \"$(mktemp -d)\" && touch 'my movie.mov'; vantrell-capture() { [ \"$2\" = displays ] && "
        "echo 'DP-1  1920x1080 at 0,0'; [ \"$2\" = projects ] && echo '$(echo x) `y`  Films'; true; }; "
        "compopt() { :; }\n" +
        bashCompletion() + "COMP_WORDS=(" + words + "); COMP_CWORD=" + std::to_string(current) +
        "; _vantrell_capture; IFS=,; echo \"${COMPREPLY[*]}\"";
    bash.start(QStringLiteral("bash"), {QStringLiteral("-c"), QString::fromStdString(script)});
    EXPECT_TRUE(bash.waitForFinished());
    EXPECT_EQ(bash.readAllStandardError(), "");
    return bash.readAllStandardOutput().trimmed().toStdString();
}

TEST(Help, completesInBash) {
    EXPECT_EQ(offered("vantrell-capture rec", 1), "record,recover");
    EXPECT_EQ(offered("vantrell-capture record --s", 2), "--seconds,--system-audio");
    EXPECT_EQ(offered("vantrell-capture record --cursor ''", 3), "drawn,separate");
    EXPECT_EQ(offered("vantrell-capture record --display ''", 3), "DP-1");
    // What a server calls its projects is not carried out by the shell.
    EXPECT_EQ(offered("vantrell-capture upload --project ''", 3), "\\$\\(echo\\ x\\)\\ \\`y\\`");
    EXPECT_EQ(offered("vantrell-capture --json upload my", 3), "my movie.mov");
    EXPECT_EQ(offered("vantrell-capture list p", 2), "projects");
}

} // namespace
} // namespace vantrell::testing
