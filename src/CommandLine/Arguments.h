// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Platform/CaptureRequest.h"

#include <expected>
#include <filesystem>
#include <optional>
#include <string>
#include <variant>
#include <vector>

namespace vantrell {

struct RecordArguments {
    CaptureRequest target;
    std::optional<double> seconds;
    bool microphone = false;
    /// Absent: the default one.
    std::optional<std::string> microphoneId;
    bool systemAudio = false;
    bool camera = false;
    /// Absent: the default one.
    std::optional<std::string> cameraId;
    bool drawsCursor = false;
    std::optional<std::filesystem::path> outputFolder;
    bool upload = false;
    std::optional<std::string> projectId;
};

struct ScreenshotArguments {
    CaptureRequest target;
    std::optional<std::filesystem::path> outputFolder;
    bool upload = false;
    std::optional<std::string> projectId;
};

struct UploadArguments {
    std::vector<std::filesystem::path> files;
    std::optional<std::string> projectId;
};

struct ListArguments {
    enum class What { displays = 1, windows, microphones, cameras, projects };
    What what = What::displays;
};

/// What the running application is told to do.
struct ControlArguments {
    enum class What { area = 1, window, screen, toggle, pause, stop, quit, open };
    What what = What::area;
    /// What it opens: paths, or addresses that begin with "file://".
    std::vector<std::string> files;
};

struct ResumeArguments {};
struct RecoverArguments {};
struct PairArguments {};
struct UnpairArguments {};
struct StatusArguments {};
struct DoctorArguments {};
struct HelpArguments {
    /// Text for a person, or the source of the manual page or of a shell's completion.
    enum class Form { text = 1, manual, bash, zsh, fish };
    Form form = Form::text;
    /// The command that is asked about; empty: all.
    std::string command;
};
struct VersionArguments {};
/// No command: the application itself.
struct ApplicationArguments {};

/// A parsed command line.
struct Arguments {
    using Command =
        std::variant<ApplicationArguments, HelpArguments, VersionArguments, RecordArguments,
                     ScreenshotArguments, UploadArguments, ResumeArguments, RecoverArguments, PairArguments,
                     UnpairArguments, StatusArguments, DoctorArguments, ListArguments, ControlArguments>;
    Command command;
    /// JSON objects on standard output instead of text.
    bool json = false;
};

/// Wrong usage; the sentence says what is wrong.
struct UsageError {
    std::string sentence;
    /// Whoever reads it wants JSON.
    bool json = false;
};

/// Parses the words behind the program's name.
std::expected<Arguments, UsageError> parseArguments(const std::vector<std::string> &words);

} // namespace vantrell
