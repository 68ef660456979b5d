// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include <cstddef>

namespace vantrell {

/// Decides when the next frame shall be a key frame. Key frames let a player jump; on a screen where little
/// moves they are nearly the whole file. So the more there is to decode since the last one, the sooner comes
/// the next. Times are host times.
class KeyFrameSchedule {
public:
    bool isDue(double now) const;
    void frameEncoded(double now, std::size_t bytes, bool isKeyFrame);

private:
    bool m_started = false;
    double m_keyTime = 0;
    std::size_t m_keyBytes = 0;
    std::size_t m_bytesSince = 0;
    int m_framesSince = 0;
};

} // namespace vantrell
