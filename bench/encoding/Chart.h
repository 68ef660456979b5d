// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace vantrell::bench {

struct CurvePoint {
    double x = 0;
    double y = 0;
};

struct Curve {
    std::string label;
    /// "#2563eb"
    std::string colour;
    bool isDashed = false;
    std::vector<CurvePoint> points;
};

/// A chart with logarithmic axes.
struct Chart {
    std::string title;
    std::string xTitle;
    std::string yTitle;
    /// Where the axes have lines, and what is written there.
    std::vector<std::pair<double, std::string>> xTicks;
    std::vector<std::pair<double, std::string>> yTicks;
    std::vector<Curve> curves;
};

/// Draws charts beside each other as a picture (SVG).
void drawCharts(const std::vector<Chart> &charts, const std::filesystem::path &file);

} // namespace vantrell::bench
