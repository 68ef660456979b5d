// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Platform/Audio/PulsePointers.h"
#include "Platform/Audio/StreamClock.h"
#include "Platform/AudioSource.h"

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace vantrell {

/// A recording stream from one device of the sound server. Lives on the loop's thread.
class PulseRecordStream {
public:
    struct Handlers {
        std::function<void(const AudioBlock &block)> block;
        /// The device gives sound.
        std::function<void()> started;
        /// The device went away or was refused; nothing more comes. The stream may be destroyed inside.
        std::function<void()> ended;
    };

    /// `channels`: 1 or 2.
    PulseRecordStream(pa_context *context, const std::string &source, int channels, Handlers handlers);

    /// False when the server's library refused it at once; no handler comes then.
    bool isOpen() const { return m_stream != nullptr; }

private:
    void stateChanged();
    void readAvailable();
    void requestTiming();
    void timingArrived();
    void deliverHeld();

    const int m_channels;
    const Handlers m_handlers;
    StreamClock m_clock;
    /// The server's number of the next frame to be read.
    std::int64_t m_position = 0;
    bool m_startsAnew = true;
    /// Read and not delivered: until the clock is set nobody knows when they sounded.
    std::vector<float> m_held;
    int m_reads = 0;
    // Last, the stream first of all: their callbacks use what is above.
    PulseStreamPtr m_stream;
    PulseOperationPtr m_timing;
};

} // namespace vantrell
