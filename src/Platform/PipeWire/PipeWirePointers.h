// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include <pipewire/pipewire.h>
#include <spa/utils/hook.h>

#include <memory>

namespace vantrell {

// Owners of libpipewire's objects. All but the loop are made, used and destroyed with the loop's lock held,
// or on its thread.

struct PipeWireThreadLoopDeleter {
    void operator()(pw_thread_loop *loop) const {
        pw_thread_loop_stop(loop);
        pw_thread_loop_destroy(loop);
    }
};
using PipeWireThreadLoopPtr = std::unique_ptr<pw_thread_loop, PipeWireThreadLoopDeleter>;

struct PipeWireContextDeleter {
    void operator()(pw_context *context) const { pw_context_destroy(context); }
};
using PipeWireContextPtr = std::unique_ptr<pw_context, PipeWireContextDeleter>;

struct PipeWireCoreDeleter {
    void operator()(pw_core *core) const { pw_core_disconnect(core); }
};
using PipeWireCorePtr = std::unique_ptr<pw_core, PipeWireCoreDeleter>;

struct PipeWireStreamDeleter {
    void operator()(pw_stream *stream) const { pw_stream_destroy(stream); }
};
using PipeWireStreamPtr = std::unique_ptr<pw_stream, PipeWireStreamDeleter>;

struct PipeWireProxyDeleter {
    void operator()(void *proxy) const { pw_proxy_destroy(static_cast<pw_proxy *>(proxy)); }
};
/// A server's object as we see it: pw_registry, pw_node, pw_device, pw_metadata, ... Destroy it before the
/// connection: that takes all its objects with it.
template <typename Interface>
using PipeWireProxyPtr = std::unique_ptr<Interface, PipeWireProxyDeleter>;

/// A place in an object's list of listeners, left when it is destroyed.
class PipeWireListener {
public:
    PipeWireListener() = default;
    ~PipeWireListener() { leave(); }
    PipeWireListener(const PipeWireListener &) = delete;
    PipeWireListener &operator=(const PipeWireListener &) = delete;

    spa_hook *hook() { return &m_hook; }
    void leave() {
        if (m_hook.link.next)
            spa_hook_remove(&m_hook);
        m_hook = {};
    }

private:
    spa_hook m_hook{};
};

} // namespace vantrell
