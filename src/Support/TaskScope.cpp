// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Support/TaskScope.h"

#include <QtGlobal>

#include <typeinfo>

namespace vantrell {

TaskScope::TaskScope() : m_state(std::make_shared<State>()) {}

TaskScope::~TaskScope() {
    m_state->stop.request_stop();
}

void TaskScope::cancel() {
    const std::shared_ptr<State> old = std::exchange(m_state, std::make_shared<State>());
    old->stop.request_stop();
}

Task<> TaskScope::join(std::stop_token stop) {
    const std::shared_ptr<State> state = m_state;
    if (state->active == 0)
        co_return;
    const OneShot<bool> done;
    state->joiners.push_back(done);
    co_await done.wait(stop);
}

void TaskScope::endProgram(std::exception_ptr thrown) {
    // Only its type: the text may quote an answer or an address.
    const char *type = "unknown";
    try {
        std::rethrow_exception(std::move(thrown));
    } catch (const std::exception &exception) {
        type = typeid(exception).name();
    } catch (...) {
    }
    qFatal("a task threw an exception of type %s", type);
}

void TaskScope::State::taskEnded() {
    if (--active > 0)
        return;
    for (const OneShot<bool> &joiner : std::exchange(joiners, {}))
        joiner.resolve(true);
}

} // namespace vantrell
