// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "CameraReel.h"
#include "Support/UniqueFd.h"

#include <atomic>
#include <thread>

namespace vantrell::bench {

/// The reel for programs that know no PipeWire: its pictures go through a pipe, thirty a second. Stops with
/// the object.
class PipedCamera {
public:
    explicit PipedCamera(const CameraReel &reel);
    ~PipedCamera();
    PipedCamera(const PipedCamera &) = delete;
    PipedCamera &operator=(const PipedCamera &) = delete;

    /// The end to read from.
    int descriptor() const { return m_reader.get(); }
    /// Pictures that went into the pipe.
    int sent() const { return m_sent; }
    /// The child has it now.
    void closeReader() { m_reader.reset(); }

private:
    void run(const CameraReel &reel);

    UniqueFd m_reader;
    UniqueFd m_writer;
    std::atomic<bool> m_isStopping = false;
    std::atomic<int> m_sent = 0;
    std::thread m_thread;
};

} // namespace vantrell::bench
