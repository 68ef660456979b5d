// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Support/OneShot.h"
#include "Support/Task.h"

#include <concepts>
#include <exception>
#include <memory>
#include <stop_token>
#include <utility>
#include <vector>

namespace vantrell {

/// Owns the coroutines that an object starts. Thread-bound: one thread creates it, starts tasks in it and
/// destroys it.
///
/// Destroying the scope (or `cancel`) requests stop; every cancellable wait then resumes with Cancelled
/// inside that call and its task ends, so nothing resumes later on a dead object. Declare the scope as the
/// owner's last member: the other members are then still alive while the tasks unwind. A task that calls out
/// to code which may destroy the owner must not touch the owner afterwards.
///
/// Failures are values. An exception that leaves a task is a fault of the program and ends it: kept in a
/// coroutine that nobody awaits, it would leave everybody waiting for what that task was to do.
class TaskScope {
public:
    TaskScope();
    ~TaskScope();
    TaskScope(const TaskScope &) = delete;
    TaskScope &operator=(const TaskScope &) = delete;

    /// Starts `operation(arguments..., stop_token)`, a captureless lambda or a function that returns
    /// Task<void>.
    template <typename Operation, typename... Arguments>
    void start(Operation operation, Arguments... arguments) {
        static_assert(std::is_empty_v<Operation> || std::is_pointer_v<Operation>,
                      "a coroutine lambda must not capture: pass parameters");
        run(m_state, std::move(operation), std::move(arguments)...);
    }

    /// Starts a member coroutine `Task<> Owner::operation(arguments..., stop_token)`.
    template <typename Owner, typename... Parameters, typename... Arguments>
    void start(Owner *owner, Task<> (Owner::*operation)(Parameters...), Arguments... arguments) {
        runMember(m_state, owner, operation, std::move(arguments)...);
    }

    /// Requests stop of everything started so far; the scope can be used again afterwards.
    void cancel();

    /// The token of what is started now.
    std::stop_token token() const { return m_state->stop.get_token(); }

    /// Tasks that have not ended.
    int active() const { return m_state->active; }

    /// Waits until no task is left.
    Task<> join(std::stop_token stop);

private:
    struct State {
        std::stop_source stop;
        int active = 0;
        std::vector<OneShot<bool>> joiners;

        void taskEnded();
    };

    struct Running {
        explicit Running(std::shared_ptr<State> s) : state(std::move(s)) { ++state->active; }
        ~Running() { state->taskEnded(); }
        Running(const Running &) = delete;
        Running &operator=(const Running &) = delete;
        std::shared_ptr<State> state;
    };

    [[noreturn]] static void endProgram(std::exception_ptr thrown);

    template <typename Operation, typename... Arguments>
    static Task<> run(std::shared_ptr<State> state, Operation operation, Arguments... arguments) {
        Running running(state);
        try {
            co_await operation(std::move(arguments)..., state->stop.get_token());
        } catch (...) {
            endProgram(std::current_exception());
        }
    }

    template <typename Owner, typename Operation, typename... Arguments>
    static Task<> runMember(std::shared_ptr<State> state, Owner *owner, Operation operation,
                            Arguments... arguments) {
        Running running(state);
        try {
            co_await (owner->*operation)(std::move(arguments)..., state->stop.get_token());
        } catch (...) {
            endProgram(std::current_exception());
        }
    }

    std::shared_ptr<State> m_state;
};

} // namespace vantrell
