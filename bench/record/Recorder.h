// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Support/Geometry.h"

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include <sys/types.h>

namespace vantrell::bench {

/// A screen recorder as a process of its own that records the whole of DISPLAY at 60 frames a second.
class Recorder {
public:
    /// "ours", "ffmpeg" or "ssr"; files go to `folder`.
    static std::unique_ptr<Recorder> start(const std::string &name, const std::filesystem::path &folder,
                                           PixelSize screen, bool showsCursor);
    ~Recorder();

    pid_t pid() const { return m_pid; }
    /// Asks for the end and waits; the seconds until the movie was whole.
    double stop();
    std::filesystem::path movie() const;

private:
    Recorder() = default;
    void launch(const std::vector<std::string> &command);

    std::string m_name;
    std::filesystem::path m_folder;
    pid_t m_pid = -1;
    int m_input = -1;
};

} // namespace vantrell::bench
