// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Auth/Keychain.h"

#include "Auth/SecretStore.h"
#include "Support/Log.h"

#include <QTimer>

using namespace std::chrono_literals;

namespace vantrell {

namespace {

using Kind = KeychainError::Kind;

/// What is kept of an operation's time for the second attempt, after the keyring was unlocked.
constexpr auto retryReserve = 1s;

template <typename T>
Task<Keychain::Result<T>> onWorker(SerialWorker *worker, std::function<Keychain::Result<T>()> work,
                                   std::stop_token stop) {
    const OneShot<Keychain::Result<T>> done;
    worker->post([done, work = std::move(work)] { done.resolve(work()); });
    auto result = co_await done.wait(stop);
    if (!result)
        co_return std::unexpected(KeychainError{Kind::cancelled, {}});
    co_return std::move(*result);
}

} // namespace

Keychain::Keychain(Options options)
    : m_options(options), m_store(std::make_shared<SecretStore>()), m_watcher([this] { lookAgain(); }) {}

Keychain::~Keychain() {
    m_alive.reset();
    m_store->cancel();
    for (const OneShot<bool> &waiting : m_waitingForUnlock)
        waiting.resolve(false);
}

Task<Keychain::Result<std::optional<std::string>>> Keychain::read(std::string account, std::stop_token stop) {
    if (auto value = cached(account))
        co_return value;
    const Work<std::optional<std::string>> work = [account](SecretStore &store, Deadline deadline) {
        return store.read(account, deadline);
    };
    auto result = co_await attempt<std::optional<std::string>>(account, work, stop);
    if (result && *result)
        remember(account, **result);
    co_return result;
}

Task<Keychain::Result<void>> Keychain::write(std::string value, std::string account, std::stop_token stop) {
    forget(account);
    const Work<void> work = [account, value](SecretStore &store, Deadline deadline) {
        return store.write(account, value, deadline);
    };
    auto result = co_await attempt<void>(account, work, stop);
    if (result)
        remember(account, value);
    co_return result;
}

Task<Keychain::Result<void>> Keychain::remove(std::string account, std::stop_token stop) {
    forget(account);
    const std::weak_ptr<bool> alive = m_alive;
    const Work<void> work = [account](SecretStore &store, Deadline deadline) {
        return store.remove(account, deadline);
    };
    auto result = co_await attempt<void>(account, work, stop);
    // A read that was under way when this began has filled the cache again.
    if (!alive.expired())
        forget(account);
    co_return result;
}

Task<Keychain::Result<void>> Keychain::prepareToWrite(std::string account, std::stop_token stop) {
    const Work<void> work = [](SecretStore &store, Deadline deadline) {
        return store.expectWritable(deadline);
    };
    auto result = co_await attempt<void>(account, work, stop);
    co_return result;
}

template <typename T>
Task<Keychain::Result<T>> Keychain::attempt(std::string account, Work<T> work, std::stop_token stop) {
    const std::weak_ptr<bool> alive = m_alive;
    const Deadline deadline = std::chrono::steady_clock::now() + m_options.patience;
    const std::function<Result<T>()> once = [store = m_store, work, deadline] {
        return work(*store, deadline);
    };
    const std::unexpected<KeychainError> gone(KeychainError{Kind::cancelled, {}});

    auto first = co_await onWorker<T>(&m_worker, once, stop);
    if (alive.expired())
        co_return gone;
    if (first) {
        note(std::nullopt);
        co_return first;
    }
    note(first.error());
    const bool promptHelps = first.error().kind == Kind::locked || first.error().kind == Kind::noKeyring;
    if (!promptHelps)
        co_return first;
    const bool unlocked = co_await waitForUnlock(account, deadline - retryReserve, stop);
    if (alive.expired())
        co_return gone;
    if (!unlocked)
        co_return first;

    auto second = co_await onWorker<T>(&m_worker, once, stop);
    if (alive.expired())
        co_return gone;
    note(second ? std::nullopt : std::optional(second.error()));
    co_return second;
}

Task<bool> Keychain::waitForUnlock(std::string account, Deadline deadline, std::stop_token stop) {
    if (m_prompt == Prompt::answered || !m_options.mayAskToUnlock)
        co_return false;
    const OneShot<bool> answered;
    m_waitingForUnlock.push_back(answered);
    if (m_prompt == Prompt::notAsked)
        m_scope.start(this, &Keychain::askToUnlock, account);
    const auto left =
        std::chrono::ceil<std::chrono::milliseconds>(deadline - std::chrono::steady_clock::now());
    QTimer::singleShot(std::max(left, 0ms), [answered] { answered.resolve(false); });
    const auto result = co_await answered.wait(stop);
    co_return result.value_or(false);
}

Task<> Keychain::askToUnlock(std::string account, std::stop_token stop) {
    m_prompt = Prompt::open;
    qCInfo(logAuth, "keychain asks to be unlocked");
    const std::function<Result<void>()> ask = [store = m_store, account] { return store->unlock(account); };
    const auto result = co_await onWorker<void>(&m_promptWorker, ask, stop);
    if (stop.stop_requested())
        co_return;
    m_prompt = Prompt::answered;
    for (const OneShot<bool> &waiting : std::exchange(m_waitingForUnlock, {}))
        waiting.resolve(result.has_value());
    if (!result)
        qCInfo(logAuth, "keychain stays locked: %s", result.error().detail.c_str());
    else
        lookAgain();
}

void Keychain::note(const std::optional<KeychainError> &problem) {
    if (problem && problem->kind == Kind::cancelled)
        return;
    const bool changed = problem.has_value() != m_problem.has_value() ||
                         (problem && m_problem && problem->kind != m_problem->kind);
    m_problem = problem;
    if (!changed)
        return;
    if (m_problem)
        qCCritical(logAuth, "keychain %s: %s", m_problem->name().c_str(), m_problem->detail.c_str());
    else
        qCInfo(logAuth, "keychain available");
}

void Keychain::lookAgain() {
    if (m_problem && onReachable)
        onReachable();
}

std::optional<std::string> Keychain::cached(const std::string &account) const {
    std::scoped_lock lock(m_cacheMutex);
    const auto found = m_cache.find(account);
    return found == m_cache.end() ? std::nullopt : std::optional(found->second);
}

void Keychain::remember(const std::string &account, const std::string &value) {
    std::scoped_lock lock(m_cacheMutex);
    m_cache[account] = value;
}

void Keychain::forget(const std::string &account) {
    std::scoped_lock lock(m_cacheMutex);
    m_cache.erase(account);
}

} // namespace vantrell
