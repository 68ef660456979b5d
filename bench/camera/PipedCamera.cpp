// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "PipedCamera.h"

#include <chrono>
#include <csignal>
#include <stdexcept>

#include <fcntl.h>
#include <unistd.h>

namespace vantrell::bench {

PipedCamera::PipedCamera(const CameraReel &reel) {
    int ends[2];
    if (::pipe2(ends, O_CLOEXEC) != 0)
        throw std::runtime_error("no pipe");
    m_reader.reset(ends[0]);
    m_writer.reset(ends[1]);
    // Fewer changes of process.
    ::fcntl(ends[1], F_SETPIPE_SZ, 1 << 20);
    ::signal(SIGPIPE, SIG_IGN);
    m_thread = std::thread([this, &reel] { run(reel); });
}

PipedCamera::~PipedCamera() {
    m_isStopping = true;
    m_reader.reset();
    m_thread.join();
}

void PipedCamera::run(const CameraReel &reel) {
    using namespace std::chrono;
    auto due = steady_clock::now();
    for (std::uint32_t number = 0; !m_isStopping; ++number) {
        const auto picture = reel.at(number);
        for (std::size_t at = 0; at < picture.size();) {
            const ssize_t written = ::write(m_writer.get(), picture.data() + at, picture.size() - at);
            if (written <= 0)
                return m_writer.reset();
            at += std::size_t(written);
        }
        ++m_sent;
        due += duration_cast<steady_clock::duration>(duration<double>(1.0 / 30));
        std::this_thread::sleep_until(due);
    }
    m_writer.reset();
}

} // namespace vantrell::bench
