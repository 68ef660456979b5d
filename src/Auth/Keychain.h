// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Auth/KeychainError.h"
#include "Auth/SecretServiceWatcher.h"
#include "Support/OneShot.h"
#include "Support/SerialWorker.h"
#include "Support/Task.h"
#include "Support/TaskScope.h"

#include <chrono>
#include <expected>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <stop_token>
#include <string>
#include <vector>

namespace vantrell {

class SecretStore;

/// The desktop's keyring, with a cache in memory. One for the process.
///
/// Main thread, but for `cached`. The operations return at once and do their work on a thread of their own,
/// one after another. Each is over within `patience`, whatever the keyring does; one that may ask and finds
/// the keyring locked makes the desktop ask for the password, or joins the dialog that is open, and waits for
/// the user for at most `dialogPatience`. The dialog may stay open longer; `onReachable` tells when it was
/// answered.
///
/// A cached value stays usable when the keyring is locked, stopped or gone.
class Keychain {
public:
    /// The account of the API key.
    static constexpr char apiKeyAccount[] = "api-key";

    struct Options {
        std::chrono::milliseconds patience = std::chrono::seconds(5);
        std::chrono::milliseconds dialogPatience = std::chrono::minutes(2);
    };
    /// Whether the desktop may ask for the password, also when the user has dismissed such a dialog before.
    enum class Asking {
        /// Nobody is waiting: never shows a dialog, and waits for none.
        never = 1,
        /// The user wishes this now.
        allowed,
    };
    template <typename T>
    using Result = std::expected<T, KeychainError>;

    Keychain() : Keychain(Options{}) {}
    explicit Keychain(Options options);
    /// Ends what still runs with KeychainError::Kind::cancelled.
    ~Keychain();
    Keychain(const Keychain &) = delete;
    Keychain &operator=(const Keychain &) = delete;

    /// The stored text, or nothing when there is none. A miss is not cached.
    Task<Result<std::optional<std::string>>> read(std::string account, Asking asking, std::stop_token stop);
    /// Replaces what is stored; after a failure nothing is cached.
    Task<Result<void>> write(std::string value, std::string account, Asking asking, std::stop_token stop);
    /// Forgets the cached value at once. Success means that nothing is stored afterwards.
    Task<Result<void>> remove(std::string account, Asking asking, std::stop_token stop);

    /// Makes sure that a write would go well, asking the user as need be: called ahead of time.
    Task<Result<void>> prepareToWrite(std::string account, std::stop_token stop);

    /// What was read or written before, without asking the keyring. Thread-safe.
    std::optional<std::string> cached(const std::string &account) const;

    /// How the last contact with the keyring failed; nothing after a good one and before the first.
    const std::optional<KeychainError> &problem() const { return m_problem; }

    /// Called after a problem when asking again may go better. May destroy the keychain.
    std::function<void()> onReachable;

    /// Called when a dialog that asks for the password has stayed open for a moment.
    std::function<void()> onDialog;

private:
    using Deadline = std::chrono::steady_clock::time_point;
    template <typename T>
    using Work = std::function<Result<T>(SecretStore &, Deadline)>;

    template <typename T>
    Task<Result<T>> attempt(std::string account, Work<T> work, Asking asking, std::stop_token stop);
    template <typename T>
    Task<Result<T>> once(Work<T> work, std::stop_token stop);
    Task<> waitForDialog(Deadline until, std::stop_token stop);
    void openDialog(const std::string &account);
    Task<> askToUnlock(std::string account, std::stop_token stop);
    void lookAtDialog();
    void note(const std::optional<KeychainError> &problem);
    void lookAgain();
    void remember(const std::string &account, const std::string &value);
    void forget(const std::string &account);

    const Options m_options;
    const std::shared_ptr<SecretStore> m_store;
    mutable std::mutex m_cacheMutex;
    std::map<std::string, std::string> m_cache;
    std::optional<KeychainError> m_problem;
    bool m_isDialogOpen = false;
    std::vector<OneShot<bool>> m_waitingForDialog;
    /// A prompt may stay open while the operations go on.
    SerialWorker m_worker;
    SerialWorker m_promptWorker;
    SecretServiceWatcher m_watcher;
    /// Tells an operation that resumes whether the keychain is still there.
    std::shared_ptr<bool> m_alive = std::make_shared<bool>(true);
    TaskScope m_scope;
};

} // namespace vantrell
