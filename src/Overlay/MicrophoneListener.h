// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Platform/AudioBackend.h"
#include "Recording/MicrophoneMeter.h"
#include "Support/Clock.h"
#include "Support/EventLoop.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace vantrell {

/// Listens to a microphone to show how loud it is and whether it is there. Records nothing. Main thread.
class MicrophoneListener {
public:
    /// Both outlive it.
    MicrophoneListener(AudioBackend &audio, Clock &clock) : m_audio(audio), m_clock(clock) {}
    ~MicrophoneListener() { stop(); }
    MicrophoneListener(const MicrophoneListener &) = delete;
    MicrophoneListener &operator=(const MicrophoneListener &) = delete;

    /// The one with the id, or the default one. Does nothing when it already listens to that.
    void listenTo(const std::optional<std::string> &deviceId);
    void stop();

    /// 0...1, at most ten times a second.
    std::function<void(double level)> onLevel;
    std::function<void(AudioSourceState state)> onState;

private:
    /// What the source's thread may reach of us, until we are gone.
    struct Link {
        MicrophoneListener *owner;
    };

    AudioBackend &m_audio;
    Clock &m_clock;
    std::optional<std::string> m_deviceId;
    std::shared_ptr<Link> m_link;
    std::unique_ptr<MicrophoneMeter> m_meter;
    /// Ends first: its thread feeds the meter.
    std::unique_ptr<AudioSource> m_source;
};

} // namespace vantrell
