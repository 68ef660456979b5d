// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "CommandLine/OpenSession.h"

#include <utility>

namespace vantrell {

void tellOfKeyringDialog(Keychain &keychain, const Reporter &reporter) {
    keychain.onDialog = [&reporter, isTold = false]() mutable {
        if (!std::exchange(isTold, true))
            reporter.note("The keyring is locked. Waiting for its password in the dialog on your desktop…");
    };
}

std::expected<std::unique_ptr<ServiceSession>, std::string> openSession(const CommandContext &context) {
    auto session = ServiceSession::create(context.environmentKey);
    if (session)
        tellOfKeyringDialog((*session)->keychain(), context.reporter);
    return session;
}

} // namespace vantrell
