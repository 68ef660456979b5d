// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Chart.h"

#include <cmath>
#include <cstdarg>
#include <cstdio>
#include <fstream>

namespace vantrell::bench {

namespace {

constexpr double chartWidth = 500;
constexpr double chartHeight = 460;
constexpr double left = 76;
constexpr double right = 40;
constexpr double top = 56;
constexpr double bottom = 64;

[[gnu::format(printf, 1, 2)]] std::string printed(const char *format, ...) {
    va_list arguments;
    va_start(arguments, format);
    char text[1024];
    std::vsnprintf(text, sizeof text, format, arguments);
    va_end(arguments);
    return text;
}

class Axis {
public:
    Axis(const std::vector<std::pair<double, std::string>> &ticks, double from, double to)
        : m_low(std::log(ticks.front().first)), m_high(std::log(ticks.back().first)), m_from(from), m_to(to) {
    }
    double at(double value) const {
        return m_from + (std::log(value) - m_low) / (m_high - m_low) * (m_to - m_from);
    }

private:
    double m_low;
    double m_high;
    double m_from;
    double m_to;
};

void drawChart(std::ostream &out, const Chart &chart, double offset) {
    const Axis x(chart.xTicks, offset + left, offset + chartWidth - right);
    const Axis y(chart.yTicks, chartHeight - bottom, top);
    const double x0 = x.at(chart.xTicks.front().first);
    const double x1 = x.at(chart.xTicks.back().first);
    const double y0 = y.at(chart.yTicks.front().first);
    const double y1 = y.at(chart.yTicks.back().first);
    out << printed("<text x='%.0f' y='28' class='title'>%s</text>\n", x0, chart.title.c_str());
    for (const auto &[value, text] : chart.yTicks)
        out << printed("<path d='M%.1f %.1fH%.1f' class='grid'/><text x='%.1f' y='%.1f' "
                       "class='tick' text-anchor='end'>%s</text>\n",
                       x0, y.at(value), x1, x0 - 8, y.at(value) + 4, text.c_str());
    for (const auto &[value, text] : chart.xTicks)
        out << printed("<path d='M%.1f %.1fV%.1f' class='grid'/><text x='%.1f' y='%.1f' "
                       "class='tick' text-anchor='middle'>%s</text>\n",
                       x.at(value), y0, y1, x.at(value), y0 + 20, text.c_str());
    out << printed("<text x='%.1f' y='%.1f' class='axis' text-anchor='middle'>%s</text>\n", (x0 + x1) / 2,
                   y0 + 46, chart.xTitle.c_str());
    out << printed("<text transform='translate(%.1f %.1f) rotate(-90)' class='axis' "
                   "text-anchor='middle'>%s</text>\n",
                   x0 - 54, (y0 + y1) / 2, chart.yTitle.c_str());
    double legend = y1 + 18;
    for (const Curve &curve : chart.curves) {
        std::string path;
        for (const CurvePoint &point : curve.points)
            path += printed("%s%.1f %.1f", path.empty() ? "M" : "L", x.at(point.x), y.at(point.y));
        out << printed("<path d='%s' class='curve' stroke='%s'%s/>\n", path.c_str(), curve.colour.c_str(),
                       curve.isDashed ? " stroke-dasharray='5 4'" : "");
        out << printed("<path d='M%.1f %.1fh26' class='curve' stroke='%s'%s/><text x='%.1f' y='%.1f' "
                       "class='label'>%s</text>\n",
                       x0 + 12, legend, curve.colour.c_str(), curve.isDashed ? " stroke-dasharray='5 4'" : "",
                       x0 + 46, legend + 4, curve.label.c_str());
        legend += 20;
    }
}

} // namespace

void drawCharts(const std::vector<Chart> &charts, const std::filesystem::path &file) {
    std::ofstream out(file);
    const double width = chartWidth * double(charts.size());
    out << printed("<svg xmlns='http://www.w3.org/2000/svg' viewBox='0 0 %.0f %.0f' width='%.0f' "
                   "height='%.0f' font-family='sans-serif'>\n",
                   width, chartHeight, width, chartHeight);
    out << "<style>.title{font-size:16px;font-weight:600;fill:#111827}.tick{font-size:11px;fill:#6b7280}"
           ".axis{font-size:12px;fill:#374151}.label{font-size:12px;fill:#374151}.grid{stroke:#e5e7eb;fill:"
           "none}"
           ".curve{fill:none;stroke-width:2.2;stroke-linejoin:round}</style>\n";
    out << "<rect width='100%' height='100%' fill='#ffffff'/>\n";
    for (std::size_t i = 0; i < charts.size(); ++i)
        drawChart(out, charts[i], chartWidth * double(i));
    out << "</svg>\n";
}

} // namespace vantrell::bench
