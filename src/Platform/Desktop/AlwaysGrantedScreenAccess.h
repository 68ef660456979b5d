// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Platform/ScreenAccess.h"

#include <string>
#include <utility>

namespace vantrell {

/// A desktop on which every program of the session may record the screen.
class AlwaysGrantedScreenAccess final : public ScreenAccess {
public:
    explicit AlwaysGrantedScreenAccess(std::string systemName) : m_systemName(std::move(systemName)) {}

    bool isGranted() const override { return true; }
    void request() override {}
    void openSettings() override {}
    std::string systemName() const override { return m_systemName; }

private:
    std::string m_systemName;
};

} // namespace vantrell
