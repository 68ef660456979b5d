// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

namespace vantrell {

/// What an interrupted command says.
inline constexpr char uploadInterrupted[] = "Interrupted: \"vantrell-capture resume\" finishes the upload";
/// The same before there is anything to resume.
inline constexpr char uploadNotBegun[] =
    "Interrupted before the upload began: \"vantrell-capture upload\" sends the file";

} // namespace vantrell
