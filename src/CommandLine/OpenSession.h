// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "CommandLine/CommandContext.h"
#include "Session/ServiceSession.h"

#include <expected>
#include <memory>
#include <string>

namespace vantrell {

/// Says once that the command waits for the keyring's dialog. The reporter outlives the keychain.
void tellOfKeyringDialog(Keychain &keychain, const Reporter &reporter);

/// A session for one command, which tells of the keyring's dialog. Fails with a sentence.
std::expected<std::unique_ptr<ServiceSession>, std::string> openSession(const CommandContext &context);

} // namespace vantrell
