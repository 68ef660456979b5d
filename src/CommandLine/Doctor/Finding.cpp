// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "CommandLine/Doctor/Finding.h"

namespace vantrell {

std::string_view spelling(Finding::State state) {
    switch (state) {
    case Finding::State::ok:
        return "ok";
    case Finding::State::advice:
        return "advice";
    case Finding::State::problem:
        break;
    }
    return "problem";
}

} // namespace vantrell
