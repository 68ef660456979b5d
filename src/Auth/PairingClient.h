// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "API/APIError.h"
#include "Auth/KeychainError.h"
#include "Auth/PairingOutcome.h"
#include "Auth/PairingState.h"
#include "Http/HttpClient.h"
#include "Http/ServiceURL.h"
#include "Support/OneShot.h"
#include "Support/Task.h"
#include "Support/TaskScope.h"

#include <cstdint>
#include <expected>
#include <functional>
#include <optional>
#include <stop_token>
#include <string>
#include <vector>

namespace vantrell {

class Analytics;
class Clock;
class Keychain;
class KeyProvider;
struct PairingPollResponse;

/// Connects this device to the user's account and keeps the state of that connection. Main thread.
///
///   (start)             a key is stored                  -> paired
///   any                 begin() succeeds                 -> waitingForApproval
///   waitingForApproval  "approved" and the key stored    -> paired
///   waitingForApproval  "approved", key not stored       -> unpaired
///   waitingForApproval  "denied", "expired", "claimed"   -> unpaired
///   waitingForApproval  the deadline passes              -> unpaired
///   any                 unpair()                         -> unpaired
///   unpaired            the keyring opens with a key     -> paired
///
/// The keyring is never waited for on the main thread: after construction the state is `unpaired` until the
/// keyring has answered, unless the key is at hand already. While the keyring cannot be read it is asked
/// again when it appears or opens, and every 30 s while it is there; the key in it is left alone.
class PairingClient {
public:
    /// All outlive the client.
    struct Services {
        HttpClient &http;
        Clock &clock;
        Keychain &keychain;
        KeyProvider &keys;
        Analytics &analytics;
    };

    PairingClient(Services services, ServiceURL service);
    /// Ends a pairing under way; nothing is called any more.
    ~PairingClient();
    PairingClient(const PairingClient &) = delete;
    PairingClient &operator=(const PairingClient &) = delete;

    const PairingState &state() const { return m_state; }
    /// How the last pairing ended; nothing before and while one is under way.
    std::optional<PairingOutcome> outcome() const { return m_outcome; }

    /// Called after every change of the state. May destroy the client.
    std::function<void()> onChange;

    /// Waits for the keyring's first answer, at most as long as a keychain operation takes.
    Task<> ready(std::stop_token stop);

    /// Starts a pairing; the address of the approval page is for the user's browser. Replaces a pairing that
    /// is under way. After a failure the state is as it was.
    Task<std::expected<std::string, APIError>> begin(std::stop_token stop);

    /// Disconnects at once and removes the key from the keyring. The result, which need not be waited for, is
    /// the keyring's: after a failure the removal is tried again like reading is.
    Task<std::expected<void, KeychainError>> unpair(std::stop_token stop = {});

    /// The service declared the key in use invalid. A key from the environment is dropped and the stored one,
    /// which was not tried, is left alone.
    void keyRejected();

private:
    using Begun = std::expected<std::string, APIError>;
    using Removed = std::expected<void, KeychainError>;
    /// What keeps the keyring from being used; nothing when it was.
    using Problem = std::optional<KeychainError::Kind>;
    enum class Turn { goOn = 1, over };

    Task<> request(OneShot<Begun> answered, std::stop_token stop);
    void startPolling(std::string deviceCode, std::int64_t intervalSeconds, double deadline);
    Task<> poll(std::string deviceCode, std::int64_t intervalSeconds, double deadline, std::stop_token stop);
    Task<Turn> act(PairingPollResponse response, std::stop_token stop);
    Task<> removeKey(OneShot<Removed> done, std::stop_token stop);
    Task<> openKeyring(std::stop_token stop);
    Task<> look(std::stop_token stop);
    Task<Problem> lookToRead(std::stop_token stop);
    Task<Problem> lookToRemove(std::stop_token stop);
    void lookAgain();
    void noteLooked();
    void end(PairingOutcome outcome);
    void change(PairingState state);
    Task<HttpResult> post(std::string path, std::string body, std::stop_token stop);

    const Services m_services;
    const ServiceURL m_service;
    PairingState m_state;
    std::optional<PairingOutcome> m_outcome;
    /// A removal that the keyring has not carried out yet.
    bool m_removalPending = false;
    bool m_looked = false;
    std::vector<OneShot<bool>> m_waitingForLook;
    TaskScope m_lookTask;
    TaskScope m_pollTask;
    TaskScope m_scope;
};

} // namespace vantrell
