// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "API/APIError.h"
#include "Auth/Keychain.h"
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
class KeyProvider;
struct PairingPollResponse;

/// Connects this device to the user's account and keeps the state of that connection. Main thread.
///
///   (start)             a key is stored                  -> paired
///   any                 begin() succeeds                 -> waitingForApproval
///   waitingForApproval  "approved" and the key stored    -> paired
///   waitingForApproval  "approved", keyring closed       -> paired, the key in memory
///   waitingForApproval  "approved", keyring refuses      -> unpaired
///   waitingForApproval  "denied", "expired", "claimed"   -> unpaired
///   waitingForApproval  the deadline passes              -> unpaired
///   any                 unpair()                         -> unpaired
///   unpaired            the keyring opens with a key     -> paired
///
/// The keyring is never waited for on the main thread: after construction the state is `unpaired` until the
/// keyring has answered, unless the key is at hand already. What it does not do at once - reading, storing,
/// removing - is tried again when it appears or opens, and every 30 s while it is there. The user is asked
/// for its password only at the start and upon a wish of his own.
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

    /// Called after every change of the state or the outcome. May destroy the client.
    std::function<void()> onChange;

    /// The user wishes something that needs the connection: waits until the keyring has answered or failed,
    /// at most as long as a keychain operation takes, and asks for the password again where that kept it
    /// closed.
    Task<> ready(std::stop_token stop);
    /// The keyring has answered or failed; before, nobody can say whether there is a connection.
    bool hasLooked() const { return m_looked; }
    /// Waits until it is certain whether there is a connection: for as long as the keyring stays closed or
    /// silent, unless the user connects or disconnects.
    Task<> certain(std::stop_token stop);

    /// Starts a pairing; the address of the approval page is for the user's browser. Replaces a pairing that
    /// is under way. After a failure the state is as it was.
    Task<std::expected<std::string, APIError>> begin(std::stop_token stop);

    /// The user disconnects: at once, also from a key of the environment, and the key is removed from the
    /// keyring. The result, which need not be waited for, is the keyring's.
    Task<std::expected<void, KeychainError>> unpair(std::stop_token stop = {});

    /// The service declared the key in use invalid. After a key from the environment the stored one, which
    /// was not tried, is looked up.
    void keyRejected();

private:
    using Asking = Keychain::Asking;
    using Begun = std::expected<std::string, APIError>;
    using Removed = std::expected<void, KeychainError>;
    /// What keeps the keyring from being used; nothing when it was.
    using Problem = std::optional<KeychainError::Kind>;
    enum class Turn { goOn = 1, over };

    Task<> request(OneShot<Begun> answered, std::stop_token stop);
    void startPolling(std::string deviceCode, std::int64_t intervalSeconds, double deadline);
    Task<> poll(std::string deviceCode, std::int64_t intervalSeconds, double deadline, std::stop_token stop);
    Turn act(const PairingPollResponse &response);
    OneShot<Removed> disconnect(Asking asking);
    Task<> removeKey(Asking asking, OneShot<Removed> done, std::stop_token stop);
    Task<> openKeyring(std::stop_token stop);
    void startLooking(Asking asking);
    void stopLooking();
    Task<> look(Asking asking, std::stop_token stop);
    Task<Problem> lookToRead(Asking asking, std::stop_token stop);
    Task<Problem> lookToStore(Asking asking, std::stop_token stop);
    Task<Problem> lookToRemove(Asking asking, std::stop_token stop);
    void noteLooked();
    void noteCertain();
    void end(PairingOutcome outcome);
    void change(PairingState state);
    Task<HttpResult> post(std::string path, std::string body, std::stop_token stop);

    const Services m_services;
    const ServiceURL m_service;
    PairingState m_state;
    std::optional<PairingOutcome> m_outcome;
    /// A key that was handed out, which the service does only once, and that the keyring does not have yet.
    std::optional<std::string> m_unstored;
    /// A removal that the keyring has not carried out yet.
    bool m_removalPending = false;
    bool m_looked = false;
    /// The look under way is one that the user may be asked for.
    bool m_isAsking = false;
    std::vector<OneShot<bool>> m_waitingForLook;
    bool m_isCertain = false;
    std::vector<OneShot<bool>> m_waitingForCertainty;
    TaskScope m_lookTask;
    TaskScope m_removeTask;
    TaskScope m_pollTask;
    TaskScope m_scope;
};

} // namespace vantrell
