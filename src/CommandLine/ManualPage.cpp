// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "CommandLine/ManualPage.h"

#include "CommandLine/UsageText.h"

namespace vantrell {

namespace {

/// A text as man shows it, with nothing in it taken for an order.
std::string plain(std::string_view text) {
    std::string out;
    for (const char c : text) {
        if (c == '\\')
            out += "\\e";
        else if (c == '-')
            out += "\\-";
        else if (c == '\n')
            out += ' ';
        else
            out += c;
    }
    return out.starts_with('.') || out.starts_with('\'') ? "\\&" + out : out;
}

std::string sentence(std::string_view text) {
    std::string whole(text);
    whole[0] = char(std::toupper(static_cast<unsigned char>(whole[0])));
    return plain(whole) + (whole.ends_with('.') ? "\n" : ".\n");
}

std::string term(const std::string &spelled, std::string_view meaning) {
    return ".TP\n.B " + plain(spelled) + '\n' + sentence(meaning);
}

/// A part of a page that no command needs: where things lie, and what to read on.
constexpr const char *closing = R"(.SH FILES
.TP
.I $XDG_DATA_HOME/VantrellCapture
Captures, the journal of uploads, and the files of a crash, in
.IR ~/.local/share
unless named otherwise.
.TP
.I $XDG_CONFIG_HOME/VantrellCapture
The settings, in
.IR ~/.config
unless named otherwise.
.SH EXAMPLES
.TP
.B vantrell\-capture record \-\-seconds 30 \-\-mic \-\-output \(ti/Videos
Half a minute of the screen with the microphone, into a folder.
.TP
.B vantrell\-capture record \-\-window 0x1e00003 \-\-upload
One window until Ctrl-C, then to the library.
.TP
.B vantrell\-capture doctor
What this desktop has for recording, and what to do about what it lacks.
)";

} // namespace

std::string manualPage() {
    std::string page = ".\\\" Made by vantrell-capture --help=man\n"
                       ".TH VANTRELL\\-CAPTURE 1 \"\" \"vantrell\\-capture " VANTRELL_VERSION "\"\n"
                       ".SH NAME\nvantrell\\-capture \\- record the screen and send it to a library\n"
                       ".SH SYNOPSIS\n.B vantrell\\-capture\n.RI [ COMMAND ]\n.RI [ OPTION ...]\n"
                       ".SH DESCRIPTION\n"
                       "Records a display, an area or one window, with microphone, system sound and camera.\n"
                       "Without a command it is the application, which lives in the tray; a second start "
                       "shows its capture bar.\n"
                       "The commands do the same from a terminal or a script, with or without it.\n";
    for (const CommandGroup &group : commandGroups()) {
        std::string title(group.title);
        for (char &c : title)
            c = char(std::toupper(static_cast<unsigned char>(c)));
        page += ".SH " + title + '\n';
        for (const CommandDescription &command : group.commands) {
            page += ".TP\n.B " + plain(command.name);
            for (const std::string &piece : synopsis(command))
                page += ' ' + plain(piece);
            page += '\n' + sentence(command.summary);
            if (!command.details.empty())
                page += sentence(command.details);
            if (command.options.empty())
                continue;
            page += ".RS\n";
            for (const OptionDescription &option : command.options)
                page += term(spelling(option), option.summary);
            page += ".RE\n";
        }
    }
    page += ".SH OPTIONS\n";
    for (const OptionDescription &option : commonOptions())
        page += term(spelling(option), option.summary);
    page += ".SH \"EXIT STATUS\"\n";
    for (const Meaning &code : exitCodeMeanings())
        page += term(std::string(code.name), code.text);
    page += ".SH ENVIRONMENT\n";
    for (const Meaning &variable : environmentMeanings())
        page += term(std::string(variable.name), variable.text);
    return page + closing;
}

} // namespace vantrell
