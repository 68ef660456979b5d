// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Auth/BoundedGlibCalls.h"

#include <algorithm>
#include <cstdint>

namespace vantrell {

namespace {

/// How long a cancelled call may take to wind up before it is abandoned.
constexpr auto usualWindUp = std::chrono::milliseconds(200);

} // namespace

/// Where the callback leaves the result. Held by the waiting side and by the call, so that a call that ends
/// after it was abandoned finds valid memory.
struct BoundedGlibCalls::Slot {
    GObjectPtr<GAsyncResult> result;

    static void arrived(GObject *, GAsyncResult *result, gpointer data) {
        const std::unique_ptr<std::shared_ptr<Slot>> slot(static_cast<std::shared_ptr<Slot> *>(data));
        (*slot)->result.reset(G_ASYNC_RESULT(g_object_ref(result)));
    }
};

BoundedGlibCalls::BoundedGlibCalls(std::stop_token stop, std::optional<Deadline> deadline)
    : m_deadline(deadline), m_cancellable(g_cancellable_new()), m_context(g_main_context_new()) {
    g_main_context_push_thread_default(m_context);
    m_onStop.emplace(std::move(stop), OnStop{this});
}

BoundedGlibCalls::~BoundedGlibCalls() {
    m_onStop.reset();
    // Objects just released clean up in this context.
    while (g_main_context_iteration(m_context, FALSE)) {
    }
    g_main_context_pop_thread_default(m_context);
    g_main_context_unref(m_context);
}

void BoundedGlibCalls::OnStop::operator()() const {
    g_cancellable_cancel(self->m_cancellable.get());
    g_main_context_wakeup(self->m_context);
}

bool BoundedGlibCalls::isOutOfTime() const {
    return m_deadline && std::chrono::steady_clock::now() >= *m_deadline;
}

GObjectPtr<GAsyncResult> BoundedGlibCalls::run(const Start &start) {
    return run(start, m_cancellable.get(), usualWindUp);
}

GObjectPtr<GAsyncResult> BoundedGlibCalls::runDialog(const Start &start) {
    return run(start, nullptr, std::chrono::milliseconds(0));
}

GObjectPtr<GAsyncResult> BoundedGlibCalls::run(const Start &start, GCancellable *cancellable,
                                               std::chrono::milliseconds windUp) {
    const auto slot = std::make_shared<Slot>();
    start(cancellable, &Slot::arrived, new std::shared_ptr<Slot>(slot));

    std::optional<Deadline> abandonAt;
    while (!slot->result) {
        if (isOutOfTime())
            g_cancellable_cancel(m_cancellable.get());
        const bool ending = isCancelled();
        if (ending && !abandonAt)
            abandonAt = std::chrono::steady_clock::now() + windUp;
        if (abandonAt && std::chrono::steady_clock::now() >= *abandonAt)
            break;
        iterate(ending ? abandonAt : m_deadline);
    }
    return std::move(slot->result);
}

void BoundedGlibCalls::iterate(std::optional<Deadline> wakeAt) {
    GSource *timer = nullptr;
    if (wakeAt) {
        const auto wait =
            std::chrono::ceil<std::chrono::milliseconds>(*wakeAt - std::chrono::steady_clock::now());
        timer = g_timeout_source_new(guint(std::max<std::int64_t>(wait.count(), 0)));
        g_source_set_callback(timer, [](gpointer) -> gboolean { return G_SOURCE_REMOVE; }, nullptr, nullptr);
        g_source_attach(timer, m_context);
    }
    g_main_context_iteration(m_context, TRUE);
    if (timer) {
        g_source_destroy(timer);
        g_source_unref(timer);
    }
}

} // namespace vantrell
