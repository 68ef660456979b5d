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

/// A dialog that nobody can be shown is over sooner than this.
constexpr auto untilDialogCounts = 500ms;

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
    : m_options(options), m_store(std::make_shared<SecretStore>()), m_watcher([this] {
          lookAtDialog();
          lookAgain();
      }) {}

Keychain::~Keychain() {
    m_alive.reset();
    m_store->cancel();
    lookAtDialog();
}

Task<Keychain::Result<std::optional<std::string>>> Keychain::read(std::string account, Asking asking,
                                                                  std::stop_token stop) {
    if (auto value = cached(account))
        co_return value;
    const Work<std::optional<std::string>> work = [account](SecretStore &store, Deadline deadline) {
        return store.read(account, deadline);
    };
    auto result = co_await attempt<std::optional<std::string>>(account, work, asking, stop);
    if (result && *result)
        remember(account, **result);
    co_return result;
}

Task<Keychain::Result<void>> Keychain::write(std::string value, std::string account, Asking asking,
                                             std::stop_token stop) {
    forget(account);
    const Work<void> work = [account, value](SecretStore &store, Deadline deadline) {
        return store.write(account, value, deadline);
    };
    auto result = co_await attempt<void>(account, work, asking, stop);
    if (result)
        remember(account, value);
    co_return result;
}

Task<Keychain::Result<void>> Keychain::remove(std::string account, Asking asking, std::stop_token stop) {
    forget(account);
    const std::weak_ptr<bool> alive = m_alive;
    const Work<void> work = [account](SecretStore &store, Deadline deadline) {
        return store.remove(account, deadline);
    };
    auto result = co_await attempt<void>(account, work, asking, stop);
    // A read that was under way when this began has filled the cache again.
    if (!alive.expired())
        forget(account);
    co_return result;
}

Task<Keychain::Result<void>> Keychain::prepareToWrite(std::string account, std::stop_token stop) {
    const Work<void> work = [](SecretStore &store, Deadline deadline) {
        return store.expectWritable(deadline);
    };
    auto result = co_await attempt<void>(account, work, Asking::allowed, stop);
    co_return result;
}

template <typename T>
Task<Keychain::Result<T>> Keychain::attempt(std::string account, Work<T> work, Asking asking,
                                            std::stop_token stop) {
    const std::weak_ptr<bool> alive = m_alive;
    auto result = co_await once<T>(work, stop);
    const auto dialogHelps = [&result] {
        return !result && (result.error().kind == Kind::locked || result.error().kind == Kind::noKeyring);
    };
    if (alive.expired() || asking == Asking::never || !dialogHelps())
        co_return result;
    openDialog(account);
    const Deadline until = std::chrono::steady_clock::now() + m_options.dialogPatience;
    // Also while the dialog is open: the keyring may have been unlocked elsewhere.
    for (bool isLast = false; !isLast && dialogHelps();) {
        co_await waitForDialog(until, stop);
        if (alive.expired() || stop.stop_requested())
            co_return std::unexpected(KeychainError{Kind::cancelled, {}});
        isLast = !m_isDialogOpen || std::chrono::steady_clock::now() >= until;
        result = co_await once<T>(work, stop);
    }
    co_return result;
}

template <typename T>
Task<Keychain::Result<T>> Keychain::once(Work<T> work, std::stop_token stop) {
    const std::weak_ptr<bool> alive = m_alive;
    const std::function<Result<T>()> bounded =
        [store = m_store, work, deadline = std::chrono::steady_clock::now() + m_options.patience] {
            return work(*store, deadline);
        };
    auto result = co_await onWorker<T>(&m_worker, bounded, stop);
    if (alive.expired())
        co_return std::unexpected(KeychainError{Kind::cancelled, {}});
    note(result ? std::nullopt : std::optional(result.error()));
    co_return result;
}

/// Until the dialog is over or the keyring has changed.
Task<> Keychain::waitForDialog(Deadline until, std::stop_token stop) {
    if (!m_isDialogOpen)
        co_return;
    const OneShot<bool> moved;
    m_waitingForDialog.push_back(moved);
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(until - std::chrono::steady_clock::now());
    QTimer::singleShot(std::max(left, 0ms), [moved] { moved.resolve(false); });
    co_await moved.wait(stop);
}

void Keychain::openDialog(const std::string &account) {
    if (m_isDialogOpen)
        return;
    m_isDialogOpen = true;
    qCInfo(logAuth, "keychain asks to be unlocked");
    m_scope.start(this, &Keychain::askToUnlock, account);
    QTimer::singleShot(untilDialogCounts, [this, alive = std::weak_ptr(m_alive)] {
        if (!alive.expired() && m_isDialogOpen && onDialog)
            onDialog();
    });
}

Task<> Keychain::askToUnlock(std::string account, std::stop_token stop) {
    const std::function<Result<void>()> ask = [store = m_store, account] { return store->unlock(account); };
    const auto result = co_await onWorker<void>(&m_promptWorker, ask, stop);
    if (stop.stop_requested())
        co_return;
    m_isDialogOpen = false;
    lookAtDialog();
    if (!result)
        qCInfo(logAuth, "keychain stays locked: %s", result.error().detail.c_str());
    else
        lookAgain();
}

void Keychain::lookAtDialog() {
    for (const OneShot<bool> &waiting : std::exchange(m_waitingForDialog, {}))
        waiting.resolve(true);
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
