// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include <vector>

namespace vantrell::bench {

/// Whether something grows: figures in the order of counts, such as memory after so many recordings.
class Growth {
public:
    void add(double count, double figure) { m_figures.push_back({count, figure}); }

    /// By least squares, how much one more costs; of the last four fifths, since caches fill at first.
    double perCount() const;

private:
    struct Figure {
        double count = 0;
        double figure = 0;
    };
    std::vector<Figure> m_figures;
};

} // namespace vantrell::bench
