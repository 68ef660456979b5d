// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "CommandLine/UnpairCommand.h"

#include "CommandLine/OpenSession.h"
#include "CommandLine/RunningApplication.h"

#include <nlohmann/json.hpp>

namespace vantrell {

Task<ExitCode> runUnpair(UnpairArguments, CommandContext context, std::stop_token stop) {
    if (RunningApplication::isThere())
        if (const auto told = co_await RunningApplication::call("Unpair", {}, stop); told) {
            context.reporter.result({{"connected", false}}, "Disconnected from Vantrell");
            co_return ExitCode::success;
        }
    // Without the service: its address may be unusable, and the key is to go all the same.
    Keychain keychain;
    tellOfKeyringDialog(keychain, context.reporter);
    const auto removed = co_await keychain.remove(Keychain::apiKeyAccount, Keychain::Asking::allowed, stop);
    if (!removed) {
        context.reporter.failure(removed.error().description());
        co_return ExitCode::failed;
    }
    context.reporter.result({{"connected", false}}, "Disconnected from Vantrell");
    if (context.environmentKey)
        context.reporter.note("VANTRELL_API_KEY still holds a key");
    co_return ExitCode::success;
}

} // namespace vantrell
