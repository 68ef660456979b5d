// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include <gio/gio.h>

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <stop_token>

namespace vantrell {

struct GObjectUnref {
    void operator()(gpointer object) const { g_object_unref(object); }
};
/// Owns one reference to a GObject.
template <typename T>
using GObjectPtr = std::unique_ptr<T, GObjectUnref>;

/// A stretch of GLib calls on the calling thread, with a main context of its own and one time limit over all
/// of them. GLib's own limits on D-Bus calls are 25 s and more, and a prompt has none.
///
/// One per operation, on a worker thread; objects made inside belong to its context and must not outlive it.
class BoundedGlibCalls {
public:
    using Deadline = std::chrono::steady_clock::time_point;
    /// Starts one asynchronous call: hands these three on to the library.
    using Start = std::function<void(GCancellable *, GAsyncReadyCallback, gpointer)>;

    /// Without a deadline the calls may take for ever; a stop request, from any thread, ends them.
    BoundedGlibCalls(std::stop_token stop, std::optional<Deadline> deadline);
    ~BoundedGlibCalls();
    BoundedGlibCalls(const BoundedGlibCalls &) = delete;
    BoundedGlibCalls &operator=(const BoundedGlibCalls &) = delete;

    /// Runs one call to its end. None when it was cancelled or out of time and did not even end upon that.
    GObjectPtr<GAsyncResult> run(const Start &start);
    /// The same for a call that shows a dialog: it is left alone when it is not waited for any more, and goes
    /// with the process. GNOME Keyring may crash when it is told to take its dialog back.
    GObjectPtr<GAsyncResult> runDialog(const Start &start);

    /// Stopped, or out of time.
    bool isCancelled() const { return g_cancellable_is_cancelled(m_cancellable.get()) != FALSE; }
    /// The deadline has passed; what ended as cancelled was out of time.
    bool isOutOfTime() const;

private:
    struct Slot;

    struct OnStop {
        BoundedGlibCalls *self;
        void operator()() const;
    };

    GObjectPtr<GAsyncResult> run(const Start &start, GCancellable *cancellable,
                                 std::chrono::milliseconds windUp);
    /// Runs the loop until something happens, at most until `wakeAt`.
    void iterate(std::optional<Deadline> wakeAt);

    std::optional<Deadline> m_deadline;
    GObjectPtr<GCancellable> m_cancellable;
    GMainContext *m_context;
    std::optional<std::stop_callback<OnStop>> m_onStop;
};

} // namespace vantrell
