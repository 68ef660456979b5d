// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Platform/Audio/PulsePointers.h"
#include "Platform/AudioSource.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <string>

namespace vantrell {

/// Finds out which of the server's devices a request means at the moment. Lives on the loop's thread;
/// destroying it drops the question.
class PulseDeviceQuery {
public:
    struct Device {
        std::string name;
        /// Another one when the device was away in between.
        std::uint32_t index = 0;
        /// 1 or 2: as many as the device has, since servers do not agree on how two are made one.
        int channels = 2;
        bool isSameAs(const Device &other) const { return name == other.name && index == other.index; }
    };
    /// None: there is no such device.
    using Answer = std::function<void(std::optional<Device> device)>;

    /// Asks. `answer` comes once, and may destroy the query.
    PulseDeviceQuery(pa_context *context, const AudioSourceRequest &request, Answer answer);

private:
    void takeServer(const pa_server_info *info);
    void takeSink(const pa_sink_info *info, int end);
    void takeSource(const pa_source_info *info, int end);
    void askForSource(const char *name);
    void finish(std::optional<Device> device);

    pa_context *const m_context;
    const AudioSourceRequest m_request;
    const Answer m_answer;
    std::optional<Device> m_device;
    PulseOperationPtr m_operation;
};

} // namespace vantrell
