// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

/// The sentences that a card shows when its upload has ended without success.
namespace vantrell::uploadMessages {

inline constexpr char failed[] = "Upload failed";
inline constexpr char checkConnection[] = "Upload failed. Check your connection.";
inline constexpr char connectionExpired[] = "Connection to Vantrell expired. Reconnect from the menu bar.";
inline constexpr char overSizeLimit[] = "This recording is over your plan's size limit.";
inline constexpr char projectDeleted[] = "That project was deleted. Pick another, then retry.";
inline constexpr char fileCleanedUp[] = "The recording file was cleaned up and can't be re-uploaded";
inline constexpr char captureGone[] = "This capture's file is gone";

} // namespace vantrell::uploadMessages
