// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Platform/PipeWire/PipeWireBuffers.h"
#include "Platform/PipeWire/PipeWireConnection.h"

#include <functional>
#include <optional>
#include <span>
#include <string>

namespace vantrell {

/// Pictures that come from a node of a PipeWire server. Loop's thread, or with its lock held; the connection
/// outlives it.
///
///   connect() -> formatChanged -> agree() -> arrived, arrived, ... -> formatChanged -> agree() -> ...
class PipeWireVideoStream {
public:
    struct Handlers {
        /// This format was agreed upon, at first and whenever the other side changes it; the answer is
        /// `agree`.
        std::function<void(const spa_pod &format)> formatChanged;
        /// There is at least one buffer to take.
        std::function<void()> arrived;
        /// A buffer that may still be held is about to go, with its memory: `forget` it. Unset: none is held
        /// beyond `arrived`.
        std::function<void(const pw_buffer *buffer)> bufferGoes;
        /// With PipeWire's own text when it is an error. A node that goes away may look like a pause.
        std::function<void(pw_stream_state state, const char *error)> stateChanged;
    };

    struct Target {
        /// The node: its `object.serial`, or its name, where one is known. Object ids are used again.
        std::string object;
        /// What a portal told instead.
        std::uint32_t nodeId = PW_ID_ANY;
        /// "Camera", "Screen".
        std::string role;
    };

    PipeWireVideoStream(const PipeWireConnection &connection, const Target &target, Handlers handlers);
    PipeWireVideoStream(const PipeWireVideoStream &) = delete;
    PipeWireVideoStream &operator=(const PipeWireVideoStream &) = delete;

    /// Offers formats, the liked ones first. False when the server refuses at once.
    bool connect(std::span<const spa_pod *const> formats);
    /// Offers others in the middle: the format is negotiated again.
    void offer(std::span<const spa_pod *const> formats);
    /// Takes the format, into such buffers.
    void agree(const PipeWireBufferWishes &wishes);

    /// The oldest buffer that waits; none when all were taken.
    std::optional<PipeWireBuffer> take();
    /// The newest one; those before it go back after `skipped` has seen them.
    std::optional<PipeWireBuffer> takeNewest(const std::function<void(const PipeWireBuffer &)> &skipped = {});

    /// Asks for pictures, or for none for now. Buffers and format stay.
    void setActive(bool active) { pw_stream_set_active(m_stream.get(), active); }

private:
    const std::uint32_t m_nodeId;
    const Handlers m_handlers;
    PipeWireStreamPtr m_stream;
    PipeWireListener m_listener;
};

} // namespace vantrell
