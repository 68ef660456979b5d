// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "CommandLine/PairCommand.h"

#include "Analytics/Analytics.h"
#include "Auth/PairingClient.h"
#include "CommandLine/OpenSession.h"
#include "Platform/DesktopOpener.h"

#include <nlohmann/json.hpp>

using namespace std::chrono_literals;

namespace vantrell {

namespace {

ExitCode failPairing(const CommandContext &context, const std::string &sentence) {
    context.reporter.failure(sentence);
    return ExitCode::failed;
}

/// The keyring has this long to open once the device is approved.
constexpr auto keyringPatience = 2min;

Task<> giveUpLater(Clock *clock, OneShot<bool> ended, std::stop_token stop) {
    if (co_await clock->sleep(keyringPatience, stop))
        ended.resolve(false);
}

} // namespace

Task<ExitCode> runPair(PairArguments, CommandContext context, std::stop_token stop) {
    auto session = openSession(context);
    if (!session)
        co_return failPairing(context, session.error());
    Keychain &keychain = (*session)->keychain();
    // Better now than after the user has approved.
    const auto writable = co_await keychain.prepareToWrite(Keychain::apiKeyAccount, stop);
    if (!writable)
        co_return failPairing(context, writable.error().description());

    PairingClient client(
        {(*session)->http(), context.clock, keychain, (*session)->keys(), Analytics::shared()},
        (*session)->url());
    const OneShot<bool> ended;
    TaskScope timer;
    client.onChange = [&client, &context, &timer, ended] {
        if (client.outcome() == PairingOutcome::notStoredYet) {
            context.reporter.note(description(PairingOutcome::notStoredYet));
            timer.start(giveUpLater, &context.clock, ended);
        } else if (client.outcome()) {
            ended.resolve(true);
        }
    };
    const auto page = co_await client.begin(stop);
    if (!page)
        co_return failPairing(context, page.error().description());
    context.reporter.result({{"approvalUrl", *page}}, "Approve this device at " + *page);
    if (openWithDesktop(*page))
        context.reporter.note("The page is open in your browser. Waiting for the approval…");
    else
        context.reporter.note("Open the page in a browser. Waiting for the approval…");

    const auto waited = co_await ended.wait(stop);
    if (!waited)
        co_return ExitCode::failed;
    // What is in memory only ends with this process.
    const PairingOutcome outcome = client.outcome() == PairingOutcome::notStoredYet
                                       ? PairingOutcome::notStored
                                       : client.outcome().value_or(PairingOutcome::expired);
    if (outcome == PairingOutcome::notStored && keychain.problem())
        co_return failPairing(context, description(outcome) + ": " + keychain.problem()->description());
    if (outcome != PairingOutcome::approved)
        co_return failPairing(context, description(outcome));
    context.reporter.result({{"connected", true}}, description(outcome));
    co_return ExitCode::success;
}

} // namespace vantrell
