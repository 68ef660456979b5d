// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Media/Encoding/KeyFrameSchedule.h"

namespace vantrell {

namespace {

/// With as many bytes of changes behind it as this times its own size, a key frame adds little to the file.
constexpr double cheapShare = 20;
constexpr double shortest = 4;
constexpr double usual = 10;
/// Of what changed, as a multiple of a key frame's own bytes: a large screen on which somebody types has few.
constexpr double usualShare = 2;
constexpr double longest = 60;
/// A player decodes so many frames in about a second.
constexpr int manyFrames = 600;

} // namespace

bool KeyFrameSchedule::isDue(double now) const {
    if (!m_started)
        return true;
    const double age = now - m_keyTime;
    const double keyBytes = double(m_keyBytes);
    const double bytes = double(m_bytesSince);
    if (age >= longest)
        return true;
    if (age >= usual)
        return bytes >= usualShare * keyBytes || m_framesSince >= manyFrames;
    return age >= shortest && bytes >= cheapShare * keyBytes;
}

void KeyFrameSchedule::frameEncoded(double now, std::size_t bytes, bool isKeyFrame) {
    m_started = true;
    if (isKeyFrame) {
        m_keyTime = now;
        m_keyBytes = bytes;
        m_bytesSince = 0;
        m_framesSince = 0;
    } else {
        m_bytesSince += bytes;
        ++m_framesSince;
    }
}

} // namespace vantrell
