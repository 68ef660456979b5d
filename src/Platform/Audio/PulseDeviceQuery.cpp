// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Platform/Audio/PulseDeviceQuery.h"

#include <algorithm>
#include <utility>

namespace vantrell {

PulseDeviceQuery::PulseDeviceQuery(pa_context *context, const AudioSourceRequest &request, Answer answer)
    : m_context(context), m_request(request), m_answer(std::move(answer)) {
    if (m_request.deviceId) {
        askForSource(m_request.deviceId->c_str());
        return;
    }
    m_operation.reset(pa_context_get_server_info(
        m_context,
        [](pa_context *, const pa_server_info *info, void *self) {
            static_cast<PulseDeviceQuery *>(self)->takeServer(info);
        },
        this));
}

void PulseDeviceQuery::takeServer(const pa_server_info *info) {
    const bool isMicrophone = m_request.kind == AudioSourceRequest::Kind::microphone;
    const char *name = !info ? nullptr : isMicrophone ? info->default_source_name : info->default_sink_name;
    if (!name || !*name)
        return finish(std::nullopt);
    if (isMicrophone)
        return askForSource(name);
    m_operation.reset(pa_context_get_sink_info_by_name(
        m_context, name,
        [](pa_context *, const pa_sink_info *sink, int end, void *self) {
            static_cast<PulseDeviceQuery *>(self)->takeSink(sink, end);
        },
        this));
}

void PulseDeviceQuery::takeSink(const pa_sink_info *info, int end) {
    // The next question replaces this one: the end comes here only when no sink did.
    if (end == 0 && info->monitor_source_name)
        askForSource(info->monitor_source_name);
    else
        finish(std::nullopt);
}

void PulseDeviceQuery::askForSource(const char *name) {
    m_operation.reset(pa_context_get_source_info_by_name(
        m_context, name,
        [](pa_context *, const pa_source_info *source, int end, void *self) {
            static_cast<PulseDeviceQuery *>(self)->takeSource(source, end);
        },
        this));
}

void PulseDeviceQuery::takeSource(const pa_source_info *info, int end) {
    if (end != 0)
        return finish(std::move(m_device));
    // Without any microphone the default source is a monitor: that would record the system's audio as speech.
    const bool isMonitor = info->monitor_of_sink != PA_INVALID_INDEX;
    const bool isUnwanted =
        isMonitor && m_request.kind == AudioSourceRequest::Kind::microphone && !m_request.deviceId;
    if (!isUnwanted)
        m_device = Device{info->name, info->index, std::clamp<int>(info->sample_spec.channels, 1, 2)};
}

void PulseDeviceQuery::finish(std::optional<Device> device) {
    // The answer may destroy this object, and with it the function that is running.
    const Answer answer = m_answer;
    answer(std::move(device));
}

} // namespace vantrell
