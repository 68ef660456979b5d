// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Overlay/MicrophoneListener.h"

namespace vantrell {

void MicrophoneListener::listenTo(const std::optional<std::string> &deviceId) {
    if (m_source && m_deviceId == deviceId)
        return;
    stop();
    m_deviceId = deviceId;
    m_link = std::make_shared<Link>(this);
    m_meter = std::make_unique<MicrophoneMeter>(m_clock, [this](double level) {
        if (onLevel)
            onLevel(level);
    });
    m_source = m_audio.makeSource({.kind = AudioSourceRequest::Kind::microphone, .deviceId = deviceId});
    const EventLoop loop = EventLoop::current();
    AudioSourceHandlers handlers;
    handlers.block = [meter = m_meter.get()](const AudioBlock &block) { meter->take(block.samples); };
    handlers.stateChanged = [loop, link = m_link](AudioSourceState state) {
        loop.post([link, state] {
            if (link->owner && link->owner->onState)
                link->owner->onState(state);
        });
    };
    m_source->start(std::move(handlers));
}

void MicrophoneListener::stop() {
    if (m_link)
        m_link->owner = nullptr;
    m_link.reset();
    m_source.reset();
    m_meter.reset();
}

} // namespace vantrell
