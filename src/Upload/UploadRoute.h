// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Upload/UploadFailure.h"
#include "Upload/UploadJournalEntry.h"

#include <string>
#include <variant>

namespace vantrell {

/// What to do after a failed attempt.
namespace route {
/// Try again after a while.
struct Retry {
    bool operator==(const Retry &) const = default;
};
/// The project was deleted: the user picks another.
struct ProjectGone {
    bool operator==(const ProjectGone &) const = default;
};
/// The service does not know the capture any more: register it anew, after a while.
struct Restart {
    bool operator==(const Restart &) const = default;
};
/// The service has it already: nothing is left to do.
struct AlreadyUploaded {
    std::string assetId;
    bool operator==(const AlreadyUploaded &) const = default;
};
/// Trying again would not help: tell the user.
struct Park {
    std::string message;
    bool operator==(const Park &) const = default;
};
} // namespace route

using UploadRoute =
    std::variant<route::Retry, route::ProjectGone, route::Restart, route::AlreadyUploaded, route::Park>;

UploadRoute routeFor(const UploadFailure &failure, UploadJournalEntry::Phase phase);

} // namespace vantrell
