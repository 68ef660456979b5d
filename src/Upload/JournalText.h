// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Upload/UploadJournalEntry.h"

#include <expected>
#include <string>
#include <string_view>
#include <vector>

namespace vantrell {

/// One line of JSON: the array of all entries, keys sorted.
std::string encodeJournal(const std::vector<UploadJournalEntry> &entries);

/// One wrong entry makes the whole text unreadable.
std::expected<std::vector<UploadJournalEntry>, JsonError> decodeJournal(std::string_view text);

} // namespace vantrell
