// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "CommandLine/Run.h"

#include "CommandLine/ControlCommand.h"
#include "CommandLine/DoctorCommand.h"
#include "CommandLine/ListCommand.h"
#include "CommandLine/ManualPage.h"
#include "CommandLine/PairCommand.h"
#include "CommandLine/RecordCommand.h"
#include "CommandLine/RecoverCommand.h"
#include "CommandLine/ScreenshotCommand.h"
#include "CommandLine/ShellCompletion.h"
#include "CommandLine/StatusCommand.h"
#include "CommandLine/UnpairCommand.h"
#include "CommandLine/UploadCommand.h"
#include "CommandLine/UsageText.h"
#include "CommandLine/VersionText.h"

#include <nlohmann/json.hpp>

#include <cstdio>

namespace vantrell {

namespace {

std::string helpText(const HelpArguments &arguments) {
    switch (arguments.form) {
    case HelpArguments::Form::manual:
        return manualPage();
    case HelpArguments::Form::bash:
        return bashCompletion();
    case HelpArguments::Form::zsh:
        return zshCompletion();
    case HelpArguments::Form::fish:
        return fishCompletion();
    case HelpArguments::Form::text:
        break;
    }
    const CommandDescription *const command = findCommand(arguments.command);
    return command ? usageText(*command) : usageText();
}

/// Starts the coroutine that belongs to a command.
struct Start {
    const CommandContext &context;
    const std::stop_token &stop;

    Task<ExitCode> operator()(RecordArguments arguments) const { return runRecord(arguments, context, stop); }
    Task<ExitCode> operator()(ScreenshotArguments arguments) const {
        return runScreenshot(arguments, context, stop);
    }
    Task<ExitCode> operator()(RecoverArguments arguments) const {
        return runRecover(arguments, context, stop);
    }
    Task<ExitCode> operator()(ListArguments arguments) const { return runList(arguments, context, stop); }
    Task<ExitCode> operator()(UploadArguments arguments) const { return runUpload(arguments, context, stop); }
    Task<ExitCode> operator()(ResumeArguments) const { return runResume(context, stop); }
    Task<ExitCode> operator()(PairArguments arguments) const { return runPair(arguments, context, stop); }
    Task<ExitCode> operator()(UnpairArguments arguments) const { return runUnpair(arguments, context, stop); }
    Task<ExitCode> operator()(StatusArguments arguments) const { return runStatus(arguments, context, stop); }
    Task<ExitCode> operator()(DoctorArguments) const { return runDoctor(context, stop); }
    Task<ExitCode> operator()(HelpArguments arguments) const {
        std::fputs(helpText(arguments).c_str(), stdout);
        co_return ExitCode::success;
    }
    Task<ExitCode> operator()(VersionArguments) const {
        const std::vector<LibraryVersion> libraries = context.libraryVersions();
        context.reporter.result(versionJson(libraries), versionText(libraries));
        co_return ExitCode::success;
    }
    Task<ExitCode> operator()(ControlArguments arguments) const {
        return runControl(arguments, context, stop);
    }
    /// The program's own business, before commands are looked at.
    Task<ExitCode> operator()(ApplicationArguments) const { co_return ExitCode::wrongUsage; }
};

} // namespace

Task<ExitCode> runCommand(Arguments arguments, CommandContext context, std::stop_token stop) {
    co_return co_await std::visit(Start{context, stop}, std::move(arguments.command));
}

} // namespace vantrell
