// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "CommandLine/Arguments.h"

#include "CommandLine/CommandTable.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <map>

namespace vantrell {

namespace {

using Refused = std::unexpected<UsageError>;

Refused usageError(std::string sentence) {
    return Refused(UsageError{.sentence = std::move(sentence)});
}

/// The words of one command, sorted into options and the rest.
struct Words {
    std::map<std::string, std::optional<std::string>> options;
    std::vector<std::string> operands;

    bool has(const std::string &option) const { return options.contains(option); }
    std::optional<std::string> value(const std::string &option) const {
        const auto found = options.find(option);
        return found == options.end() ? std::nullopt : found->second;
    }
};

std::expected<Words, UsageError> sortWords(const std::vector<std::string> &words, std::string_view command) {
    const CommandDescription &known = *findCommand(command);
    Words sorted;
    bool onlyOperands = false;
    for (size_t i = 0; i < words.size(); ++i) {
        const std::string &word = words[i];
        if (onlyOperands || !word.starts_with("-") || word == "-") {
            sorted.operands.push_back(word);
            continue;
        }
        if (word == "--") {
            onlyOperands = true;
            continue;
        }
        const size_t equals = word.find('=');
        const std::string name = word.substr(0, equals);
        const OptionDescription *const found = known.option(name);
        if (!found)
            return usageError("Unknown option " + name);
        if (sorted.has(name))
            return usageError(name + " is given twice");
        std::optional<std::string> value;
        if (equals != std::string::npos)
            value = word.substr(equals + 1);
        else if (found->takes != Takes::nothing && i + 1 < words.size() &&
                 // A value may begin with a minus only where one is required (an area left of the origin).
                 (found->takes == Takes::value ? !words[i + 1].starts_with("--")
                                               : !words[i + 1].starts_with("-")))
            value = words[++i];
        if (found->takes == Takes::nothing && value)
            return usageError(name + " takes no value");
        if (found->takes == Takes::value && (!value || value->empty()))
            return usageError(name + " needs a value");
        sorted.options[name] = value;
    }
    return sorted;
}

template <typename T>
std::optional<T> parseNumber(std::string_view text) {
    T number{};
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc() || end != text.data() + text.size())
        return std::nullopt;
    return number;
}

std::optional<std::uint32_t> parseWindowId(std::string_view text) {
    if (text.starts_with("0x") || text.starts_with("0X")) {
        std::uint32_t id = 0;
        const auto [end, error] = std::from_chars(text.data() + 2, text.data() + text.size(), id, 16);
        return error == std::errc() && end == text.data() + text.size() ? std::optional(id) : std::nullopt;
    }
    return parseNumber<std::uint32_t>(text);
}

std::optional<PixelRect> parseArea(std::string_view text) {
    int numbers[4];
    for (int i = 0; i < 4; ++i) {
        const size_t comma = i < 3 ? text.find(',') : text.size();
        if (comma == std::string_view::npos)
            return std::nullopt;
        const auto number = parseNumber<int>(text.substr(0, comma));
        if (!number)
            return std::nullopt;
        numbers[i] = *number;
        text.remove_prefix(i < 3 ? comma + 1 : comma);
    }
    return PixelRect{numbers[0], numbers[1], numbers[2], numbers[3]};
}

std::expected<CaptureRequest, UsageError> readTarget(const Words &words) {
    if (words.has("--display") + words.has("--window") + words.has("--area") > 1)
        return usageError("Give one of --display, --window and --area");
    if (words.has("--window") && !words.value("--window"))
        return CaptureRequest{CaptureRequest::LetDesktopAsk{CaptureRequest::LetDesktopAsk::Kind::window, {}}};
    if (const auto text = words.value("--window")) {
        const auto window = parseWindowId(*text);
        if (!window)
            return usageError("--window needs a window's number, not " + *text);
        return CaptureRequest{CaptureRequest::Window{*window}};
    }
    if (const auto text = words.value("--area")) {
        const auto area = parseArea(*text);
        if (!area)
            return usageError("--area needs four whole numbers X,Y,W,H");
        if (area->isEmpty())
            return usageError("The area is smaller than a pixel");
        return CaptureRequest{CaptureRequest::Area{*area}};
    }
    return CaptureRequest{CaptureRequest::WholeDisplay{words.value("--display")}};
}

/// Where a capture goes: the same for recordings and stills.
template <typename T>
std::expected<void, UsageError> readDelivery(const Words &words, T &arguments) {
    if (const auto folder = words.value("--output"))
        arguments.outputFolder = *folder;
    arguments.upload = words.has("--upload");
    arguments.projectId = words.value("--project");
    if (arguments.projectId && !arguments.upload)
        return usageError("--project goes with --upload");
    return {};
}

using Parsed = std::expected<Arguments::Command, UsageError>;

Parsed parseRecord(const std::vector<std::string> &rest) {
    const auto words = sortWords(rest, "record");
    if (!words)
        return Refused(words.error());
    if (!words->operands.empty())
        return usageError("record takes no " + words->operands.front());
    RecordArguments arguments;
    const auto target = readTarget(*words);
    if (!target)
        return Refused(target.error());
    arguments.target = *target;
    if (const auto seconds = words->value("--seconds")) {
        arguments.seconds = parseNumber<double>(*seconds);
        if (!arguments.seconds || !std::isfinite(*arguments.seconds) || *arguments.seconds <= 0)
            return usageError("--seconds needs a number greater than 0");
    }
    arguments.microphone = words->has("--mic");
    arguments.microphoneId = words->value("--mic");
    arguments.systemAudio = words->has("--system-audio");
    arguments.camera = words->has("--camera");
    arguments.cameraId = words->value("--camera");
    if (const auto cursor = words->value("--cursor")) {
        if (*cursor != "drawn" && *cursor != "separate")
            return usageError("--cursor is drawn or separate");
        arguments.drawsCursor = *cursor == "drawn";
    }
    if (const auto delivery = readDelivery(*words, arguments); !delivery)
        return Refused(delivery.error());
    return arguments;
}

Parsed parseScreenshot(const std::vector<std::string> &rest) {
    const auto words = sortWords(rest, "screenshot");
    if (!words)
        return Refused(words.error());
    if (!words->operands.empty())
        return usageError("screenshot takes no " + words->operands.front());
    ScreenshotArguments arguments;
    const auto target = readTarget(*words);
    if (!target)
        return Refused(target.error());
    arguments.target = *target;
    if (const auto delivery = readDelivery(*words, arguments); !delivery)
        return Refused(delivery.error());
    return arguments;
}

Parsed parseUpload(const std::vector<std::string> &rest) {
    const auto words = sortWords(rest, "upload");
    if (!words)
        return Refused(words.error());
    if (words->operands.empty())
        return usageError("upload needs the files to upload");
    UploadArguments arguments;
    for (const std::string &file : words->operands)
        arguments.files.emplace_back(file);
    arguments.projectId = words->value("--project");
    return arguments;
}

Parsed parseList(const std::vector<std::string> &rest) {
    static const std::map<std::string, ListArguments::What> things{
        {"displays", ListArguments::What::displays},       {"windows", ListArguments::What::windows},
        {"microphones", ListArguments::What::microphones}, {"cameras", ListArguments::What::cameras},
        {"projects", ListArguments::What::projects},
    };
    const auto found = rest.size() == 1 ? things.find(rest.front()) : things.end();
    if (found == things.end())
        return usageError("list needs one of displays, windows, microphones, cameras and projects");
    return ListArguments{found->second};
}

template <typename Command>
Parsed parseBare(const std::vector<std::string> &rest) {
    if (!rest.empty())
        return usageError("This command takes no " + rest.front());
    return Command{};
}

template <ControlArguments::What what>
Parsed parseControl(const std::vector<std::string> &rest) {
    if (!rest.empty())
        return usageError("This command takes no " + rest.front());
    return ControlArguments{what, {}};
}

Parsed parseOpen(const std::vector<std::string> &rest) {
    const auto words = sortWords(rest, "open");
    if (!words)
        return Refused(words.error());
    // A desktop entry's line without a file: the application itself.
    if (words->operands.empty())
        return ApplicationArguments{};
    return ControlArguments{ControlArguments::What::open, words->operands};
}

std::expected<Arguments, UsageError> parseHelp(std::string_view form) {
    static const std::map<std::string_view, HelpArguments::Form> forms{
        {"man", HelpArguments::Form::manual},
        {"bash", HelpArguments::Form::bash},
        {"zsh", HelpArguments::Form::zsh},
        {"fish", HelpArguments::Form::fish},
    };
    const auto found = forms.find(form);
    if (found == forms.end())
        return usageError("--help is plain, or one of man, bash, zsh and fish");
    return Arguments{HelpArguments{found->second, {}}, false};
}

std::expected<Arguments, UsageError> parse(const std::vector<std::string> &words) {
    static const std::map<std::string, Parsed (*)(const std::vector<std::string> &)> commands{
        {"record", parseRecord},
        {"screenshot", parseScreenshot},
        {"upload", parseUpload},
        {"list", parseList},
        {"open", parseOpen},
        {"resume", parseBare<ResumeArguments>},
        {"recover", parseBare<RecoverArguments>},
        {"pair", parseBare<PairArguments>},
        {"unpair", parseBare<UnpairArguments>},
        {"status", parseBare<StatusArguments>},
        {"doctor", parseBare<DoctorArguments>},
        {"area", parseControl<ControlArguments::What::area>},
        {"window", parseControl<ControlArguments::What::window>},
        {"screen", parseControl<ControlArguments::What::screen>},
        {"toggle", parseControl<ControlArguments::What::toggle>},
        {"pause", parseControl<ControlArguments::What::pause>},
        {"stop", parseControl<ControlArguments::What::stop>},
        {"quit", parseControl<ControlArguments::What::quit>},
        {"help", parseBare<HelpArguments>},
    };
    Arguments arguments;
    std::vector<std::string> rest;
    std::optional<std::string> command;
    bool onlyOperands = false;
    bool isHelpAsked = false;
    bool isVersionAsked = false;
    for (const std::string &word : words) {
        onlyOperands = onlyOperands || word == "--";
        if (!onlyOperands && word == "--json")
            arguments.json = true;
        else if (!onlyOperands && (word == "--help" || word == "-h"))
            isHelpAsked = true;
        else if (!onlyOperands && word.starts_with("--help="))
            return parseHelp(word.substr(std::string_view("--help=").size()));
        else if (!onlyOperands && word == "--version")
            isVersionAsked = true;
        else if (!command && !word.starts_with("-"))
            command = word;
        else
            rest.push_back(word);
    }
    if (isHelpAsked)
        return Arguments{HelpArguments{HelpArguments::Form::text, command.value_or("")}, false};
    if (isVersionAsked)
        return Arguments{VersionArguments{}, arguments.json};
    if (!command) {
        if (!rest.empty())
            return usageError("Unknown option " + rest.front());
        return arguments;
    }
    const auto found = commands.find(*command);
    if (found == commands.end())
        return usageError("Unknown command " + *command);
    Parsed parsed = found->second(rest);
    if (!parsed)
        return Refused(parsed.error());
    arguments.command = std::move(*parsed);
    return arguments;
}

} // namespace

std::expected<Arguments, UsageError> parseArguments(const std::vector<std::string> &words) {
    auto parsed = parse(words);
    if (!parsed)
        parsed.error().json =
            std::ranges::count(words.begin(), std::ranges::find(words, "--"), std::string("--json")) > 0;
    return parsed;
}

} // namespace vantrell
