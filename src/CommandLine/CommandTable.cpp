// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "CommandLine/CommandTable.h"

#include <algorithm>
#include <array>

namespace vantrell {

namespace {

using Options = std::vector<OptionDescription>;

const Options targetOptions{
    {.name = "--display",
     .takes = Takes::optionalValue,
     .value = "ID",
     .summary = "a whole display; without an ID, and without any target, the primary one",
     .kind = WordKind::display,
     .isAlternative = true},
    {.name = "--window",
     .takes = Takes::optionalValue,
     .value = "ID",
     .summary = "one window, wherever it goes; without an ID the desktop asks which, where it can",
     .kind = WordKind::window,
     .isAlternative = true},
    {.name = "--area",
     .takes = Takes::value,
     .value = "X,Y,W,H",
     .summary = "a rectangle of the desktop, in pixels",
     .isAlternative = true},
};

const OptionDescription projectOption{.name = "--project",
                                      .takes = Takes::value,
                                      .value = "ID",
                                      .summary = "upload to this project instead of the chosen one",
                                      .kind = WordKind::project};

const Options deliveryOptions{
    {.name = "--output",
     .takes = Takes::value,
     .value = "DIR",
     .summary = "put the movie or picture, its sidecar and its thumbnail into this folder",
     .kind = WordKind::folder},
    {.name = "--upload", .summary = "send the capture to the library"},
    projectOption,
};

const Options recordOptions{
    {.name = "--seconds", .takes = Takes::value, .value = "S", .summary = "stop after so many seconds"},
    {.name = "--mic",
     .takes = Takes::optionalValue,
     .value = "ID",
     .summary = "record a microphone, the default one unless named",
     .kind = WordKind::microphone},
    {.name = "--system-audio", .summary = "record what the computer plays"},
    {.name = "--camera",
     .takes = Takes::optionalValue,
     .value = "ID",
     .summary = "record a camera as a movie of its own, the default one unless named",
     .kind = WordKind::camera},
    {.name = "--cursor",
     .takes = Takes::value,
     .value = "HOW",
     .summary = "draw the pointer into the movie, or keep it separate in the sidecar",
     .choices = {"drawn", "separate"}},
};

Options joined(std::initializer_list<Options> lists) {
    Options all;
    for (const Options &list : lists)
        all.insert(all.end(), list.begin(), list.end());
    return all;
}

} // namespace

const std::vector<CommandGroup> &commandGroups() {
    static const std::vector<CommandGroup> groups{
        {"The running application",
         {
             {.name = "area", .summary = "show the capture bar with the area tool"},
             {.name = "window", .summary = "show the capture bar with the window tool"},
             {.name = "screen", .summary = "show the capture bar with the screen tool"},
             {.name = "toggle", .summary = "stop the recording, or begin one"},
             {.name = "pause", .summary = "pause or resume the recording"},
             {.name = "stop", .summary = "stop the recording and save it"},
             {.name = "open",
              .summary = "show the capture bar, or upload recordings as cards of the application",
              .operands = "[FILE...]",
              .operandKind = WordKind::file,
              .details =
                  "What file managers do with a recording. Starts the application when it does not run."},
             {.name = "quit", .summary = "end the application; a recording is saved first"},
         }},
        {"Captures",
         {
             {.name = "record",
              .summary = "record the screen until Ctrl-C",
              .options = joined({targetOptions, recordOptions, deliveryOptions}),
              .details = "Ctrl-C (SIGINT) and SIGTERM stop and save; SIGUSR1 pauses and resumes."},
             {.name = "screenshot",
              .summary = "take a still picture",
              .options = joined({targetOptions, deliveryOptions})},
             {.name = "upload",
              .summary = "send files to the library",
              .options = {projectOption},
              .operands = "FILE...",
              .operandKind = WordKind::file,
              .details =
                  "What is cut off, by the network or by the end of the program, is finished by resume."},
             {.name = "resume", .summary = "finish the uploads that are pending, then exit"},
             {.name = "recover", .summary = "make movies of recordings that were cut off"},
         }},
        {"Account and computer",
         {
             {.name = "pair", .summary = "connect this computer to the account, with the browser"},
             {.name = "unpair", .summary = "disconnect this computer"},
             {.name = "status", .summary = "say what is connected, what runs and what waits"},
             {.name = "doctor",
              .summary = "look at all that recording needs, and say what to do about what is missing",
              .details = "Nothing secret is in the report: it can go into a bug report as it is."},
             {.name = "list",
              .summary = "list what there is to record, or the account's projects",
              .operands = "displays|windows|microphones|cameras|projects",
              .operandChoices = {"displays", "windows", "microphones", "cameras", "projects"}},
         }},
    };
    return groups;
}

const OptionDescription *CommandDescription::option(std::string_view option) const {
    const auto found = std::ranges::find(options, option, &OptionDescription::name);
    return found == options.end() ? nullptr : &*found;
}

const CommandDescription *findCommand(std::string_view name) {
    for (const CommandGroup &group : commandGroups()) {
        const auto found = std::ranges::find(group.commands, name, &CommandDescription::name);
        if (found != group.commands.end())
            return &*found;
    }
    return nullptr;
}

const std::vector<OptionDescription> &commonOptions() {
    static const Options options{
        {.name = "--json", .summary = "one JSON object per result on standard output"},
        {.name = "--help", .summary = "explain the command, or the program"},
        {.name = "--version", .summary = "say which build this is and what it uses"},
    };
    return options;
}

std::span<const Meaning> environmentMeanings() {
    static constexpr std::array meanings{
        Meaning{"VANTRELL_API_URL", "another service (https, or http on this machine)"},
        Meaning{"VANTRELL_API_KEY", "a key for use without a keyring"},
        Meaning{"VANTRELL_ENCODER",
                "who makes the video, \"software\" or \"hardware\"; by default the graphics card, where it "
                "works, for pictures larger than 1920x1200"},
        Meaning{"DO_NOT_TRACK", "when it is 1, no usage events are counted or sent"},
    };
    return meanings;
}

std::span<const Meaning> exitCodeMeanings() {
    static constexpr std::array meanings{
        Meaning{"0", "done"},          Meaning{"1", "failed"},           Meaning{"2", "wrong usage"},
        Meaning{"3", "not connected"}, Meaning{"4", "nothing recorded"},
    };
    return meanings;
}

} // namespace vantrell
