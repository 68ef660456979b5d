// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Recording/Failure.h"

namespace vantrell {

namespace {

struct Describe {
    std::string operator()(const PlatformError &error) const { return error.description(); }
    std::string operator()(CaptureError error) const { return description(error); }
    std::string operator()(RecordingError error) const { return description(error); }
    std::string operator()(Cancelled) const { return {}; }
};

} // namespace

std::string description(const Failure &failure) {
    return std::visit(Describe{}, failure);
}

} // namespace vantrell
