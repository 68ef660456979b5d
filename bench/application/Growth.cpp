// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Growth.h"

#include <span>

namespace vantrell::bench {

double Growth::perCount() const {
    const auto last = std::span(m_figures).subspan(m_figures.size() / 5);
    double counts = 0, figures = 0;
    for (const Figure &each : last) {
        counts += each.count / double(last.size());
        figures += each.figure / double(last.size());
    }
    double together = 0, squares = 0;
    for (const Figure &each : last) {
        together += (each.count - counts) * (each.figure - figures);
        squares += (each.count - counts) * (each.count - counts);
    }
    return squares > 0 ? together / squares : 0;
}

} // namespace vantrell::bench
