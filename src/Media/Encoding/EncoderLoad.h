// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

namespace vantrell {

/// How busy an encoder is, and whether one thread is enough for it. While it is not, pictures are encoded in
/// slices on several threads. Times are host times. Not thread-safe.
class EncoderLoad {
public:
    /// `slices`: how many threads share a picture once one is not enough.
    explicit EncoderLoad(int slices) : m_slices(slices) {}

    void frameEncoded(double begin, double end);

    /// One thread does not keep up: it has hardly rested for a third of a second. A picture that takes long
    /// now and then is no reason.
    bool needsSlices() const { return m_busyShare > tooBusy; }

    /// One thread may soon not keep up: time to get the other encoder ready.
    bool mayNeedSlices() const { return m_busyShare > busy; }

    /// Encoding in slices, there is so little to do that one thread would have time to spare.
    bool canDoWithoutSlices() const { return m_busyShare * m_slices < calm; }

private:
    static constexpr double busy = 0.8;
    static constexpr double tooBusy = 0.9;
    static constexpr double calm = 0.65;

    int m_slices;
    double m_lastEnd = 0;
    double m_busyShare = 0;
};

} // namespace vantrell
