// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include <pulse/pulseaudio.h>

#include <memory>

namespace vantrell {

// Owners of libpulse's objects. All but the loop are made, used and destroyed with the loop's lock held.

struct PulseLoopDeleter {
    void operator()(pa_threaded_mainloop *loop) const {
        pa_threaded_mainloop_stop(loop);
        pa_threaded_mainloop_free(loop);
    }
};
using PulseLoopPtr = std::unique_ptr<pa_threaded_mainloop, PulseLoopDeleter>;

struct PulseContextDeleter {
    void operator()(pa_context *context) const {
        pa_context_set_state_callback(context, nullptr, nullptr);
        pa_context_set_subscribe_callback(context, nullptr, nullptr);
        pa_context_disconnect(context);
        pa_context_unref(context);
    }
};
using PulseContextPtr = std::unique_ptr<pa_context, PulseContextDeleter>;

struct PulseStreamDeleter {
    void operator()(pa_stream *stream) const {
        pa_stream_set_state_callback(stream, nullptr, nullptr);
        pa_stream_set_read_callback(stream, nullptr, nullptr);
        pa_stream_set_suspended_callback(stream, nullptr, nullptr);
        pa_stream_disconnect(stream);
        pa_stream_unref(stream);
    }
};
using PulseStreamPtr = std::unique_ptr<pa_stream, PulseStreamDeleter>;

/// An answer that is awaited; destroying it makes sure that its callback does not come any more.
struct PulseOperationDeleter {
    void operator()(pa_operation *operation) const {
        pa_operation_cancel(operation);
        pa_operation_unref(operation);
    }
};
using PulseOperationPtr = std::unique_ptr<pa_operation, PulseOperationDeleter>;

} // namespace vantrell
