// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Auth/PairingClient.h"

#include "Analytics/Analytics.h"
#include "Auth/KeyProvider.h"
#include "Auth/PairingMessages.h"
#include "Support/Clock.h"
#include "Support/Log.h"

#include <algorithm>

using namespace std::chrono_literals;

namespace vantrell {

namespace {

constexpr auto lookAgainAfter = 30s;
/// Keeps a wrong answer's interval from overflowing the clock.
constexpr std::int64_t longestIntervalSeconds = 24 * 60 * 60;

std::expected<PairingRequestResponse, APIError> acceptedRequest(const HttpResult &result) {
    if (!result)
        return std::unexpected(APIError::of(result.error()));
    if (result->status != 201)
        return std::unexpected(APIError::http(result->status));
    auto response = PairingRequestResponse::decode(result->body);
    if (!response)
        return std::unexpected(APIError(APIError::MalformedResponse{}));
    return std::move(*response);
}

/// The keyring waits for the user, or is busy: it may take the key later.
bool mayPass(KeychainError::Kind problem) {
    using enum KeychainError::Kind;
    return problem == locked || problem == noKeyring || problem == notAnswering;
}

} // namespace

PairingClient::PairingClient(Services services, ServiceURL service)
    : m_services(services), m_service(std::move(service)) {
    if (m_services.keys.key()) {
        m_state = PairingState::paired();
        m_looked = m_isCertain = true;
    } else {
        startLooking(Asking::allowed);
    }
    m_services.keychain.onReachable = [this] { startLooking(Asking::never); };
}

PairingClient::~PairingClient() {
    m_services.keychain.onReachable = nullptr;
}

Task<> PairingClient::ready(std::stop_token stop) {
    if (m_services.keychain.problem() && !m_isAsking)
        startLooking(Asking::allowed);
    if (m_looked)
        co_return;
    const OneShot<bool> looked;
    m_waitingForLook.push_back(looked);
    co_await looked.wait(stop);
}

Task<> PairingClient::certain(std::stop_token stop) {
    if (m_isCertain)
        co_return;
    const OneShot<bool> known;
    m_waitingForCertainty.push_back(known);
    co_await known.wait(stop);
}

Task<PairingClient::Begun> PairingClient::begin(std::stop_token stop) {
    const OneShot<Begun> answered;
    m_scope.start(this, &PairingClient::openKeyring);
    m_scope.start(this, &PairingClient::request, answered);
    const auto result = co_await answered.wait(stop);
    if (!result)
        co_return std::unexpected(APIError::of(TransportError::cancelled()));
    co_return *result;
}

/// The user is at the desk now: a password asked for here is not missing when the key arrives.
Task<> PairingClient::openKeyring(std::stop_token stop) {
    co_await m_services.keychain.prepareToWrite(Keychain::apiKeyAccount, stop);
}

Task<> PairingClient::request(OneShot<Begun> answered, std::stop_token stop) {
    const auto result = co_await post("v1/keys/request", nlohmann::json{{"name", deviceName()}}.dump(), stop);
    if (stop.stop_requested()) {
        answered.resolve(std::unexpected(APIError::of(TransportError::cancelled())));
        co_return;
    }
    const auto accepted = acceptedRequest(result);
    if (!accepted) {
        qCCritical(logAuth, "pairing request failed");
        answered.resolve(std::unexpected(accepted.error()));
        co_return;
    }
    answered.resolve(accepted->approvalUrl);
    m_outcome.reset();
    const PairingState waiting = PairingState::waitingForApproval(accepted->approvalUrl);
    change(waiting);
    // Whoever was told may have disconnected again, or be gone with this client.
    if (stop.stop_requested() || m_state != waiting)
        co_return;
    const double deadline = m_services.clock.hostNow() + double(accepted->expiresInSeconds);
    startPolling(accepted->deviceCode, accepted->pollIntervalSeconds, deadline);
}

void PairingClient::startPolling(std::string deviceCode, std::int64_t intervalSeconds, double deadline) {
    m_pollTask.cancel();
    m_pollTask.start(this, &PairingClient::poll, std::move(deviceCode), intervalSeconds, deadline);
}

Task<> PairingClient::poll(std::string deviceCode, std::int64_t intervalSeconds, double deadline,
                           std::stop_token stop) {
    const std::chrono::seconds interval(std::clamp<std::int64_t>(intervalSeconds, 1, longestIntervalSeconds));
    const std::string body = nlohmann::json{{"deviceCode", deviceCode}}.dump();
    while (m_services.clock.hostNow() < deadline) {
        if (!co_await m_services.clock.sleep(interval, stop))
            co_return;
        const auto result = co_await post("v1/keys/poll", body, stop);
        if (stop.stop_requested())
            co_return;
        if (!result)
            continue;
        const auto response = PairingPollResponse::decode(result->body);
        if (!response)
            continue;
        if (act(*response) == Turn::over)
            co_return;
    }
    if (m_state.kind != PairingState::Kind::paired)
        end(PairingOutcome::expired);
}

PairingClient::Turn PairingClient::act(const PairingPollResponse &response) {
    if (response.status == "approved" && response.apiKey) {
        m_unstored = response.apiKey;
        m_services.keys.hold(m_unstored);
        m_removeTask.cancel();
        startLooking(Asking::allowed);
        return Turn::over;
    }
    if (response.status == "denied" || response.status == "expired" || response.status == "claimed") {
        qCInfo(logAuth, "pairing ended: %s", response.status.c_str());
        end(response.status == "denied"    ? PairingOutcome::denied
            : response.status == "expired" ? PairingOutcome::expired
                                           : PairingOutcome::claimed);
        return Turn::over;
    }
    return Turn::goOn;
}

Task<PairingClient::Removed> PairingClient::unpair(std::stop_token stop) {
    const auto result = co_await disconnect(Asking::allowed).wait(stop);
    if (!result)
        co_return std::unexpected(KeychainError{KeychainError::Kind::cancelled, {}});
    co_return *result;
}

OneShot<PairingClient::Removed> PairingClient::disconnect(Asking asking) {
    m_pollTask.cancel();
    stopLooking();
    noteLooked();
    m_unstored.reset();
    m_services.keys.hold(std::nullopt);
    m_services.keys.dropOverriding();
    m_removalPending = true;
    const OneShot<Removed> done;
    m_removeTask.start(this, &PairingClient::removeKey, asking, done);
    change(PairingState::unpaired());
    return done;
}

Task<> PairingClient::removeKey(Asking asking, OneShot<Removed> done, std::stop_token stop) {
    const auto removed = co_await m_services.keychain.remove(Keychain::apiKeyAccount, asking, stop);
    done.resolve(removed);
    if (stop.stop_requested() || !m_removalPending)
        co_return;
    if (removed)
        m_removalPending = false;
    else
        startLooking(Asking::never);
}

void PairingClient::keyRejected() {
    if (!m_services.keys.isOverridden()) {
        disconnect(Asking::never);
        return;
    }
    qCCritical(logAuth, "key from the environment refused");
    m_services.keys.dropOverriding();
    m_pollTask.cancel();
    const std::stop_token gone = m_scope.token();
    change(PairingState::unpaired());
    if (!gone.stop_requested())
        startLooking(Asking::allowed);
}

void PairingClient::startLooking(Asking asking) {
    // One that waits for the user looks again by itself.
    if (asking == Asking::never && m_isAsking)
        return;
    if (m_state.kind == PairingState::Kind::paired && !m_unstored)
        return;
    stopLooking();
    m_looked = m_looked && asking == Asking::never;
    m_lookTask.start(this, &PairingClient::look, asking);
}

void PairingClient::stopLooking() {
    m_isAsking = false;
    m_lookTask.cancel();
}

Task<> PairingClient::look(Asking asking, std::stop_token stop) {
    m_isAsking = asking == Asking::allowed;
    for (;;) {
        const auto problem = m_unstored         ? co_await lookToStore(asking, stop)
                             : m_removalPending ? co_await lookToRemove(asking, stop)
                                                : co_await lookToRead(asking, stop);
        if (stop.stop_requested())
            co_return;
        m_isAsking = false;
        asking = Asking::never;
        // A service that is not there announces itself when it comes; the other problems end without a word.
        if (!problem || *problem == KeychainError::Kind::absent || *problem == KeychainError::Kind::cancelled)
            co_return;
        if (!co_await m_services.clock.sleep(lookAgainAfter, stop))
            co_return;
    }
}

Task<PairingClient::Problem> PairingClient::lookToStore(Asking asking, std::stop_token stop) {
    const auto stored =
        co_await m_services.keychain.write(*m_unstored, Keychain::apiKeyAccount, asking, stop);
    if (stop.stop_requested())
        co_return std::nullopt;
    noteLooked();
    // What a pairing that was begun meanwhile shows is left alone.
    const bool isNewest = m_pollTask.active() == 0;
    if (!stored && mayPass(stored.error().kind)) {
        if (isNewest && m_outcome != PairingOutcome::notStoredYet) {
            qCCritical(logAuth, "keychain write failed; key kept in memory");
            end(PairingOutcome::notStoredYet);
        }
        co_return stored.error().kind;
    }
    m_unstored.reset();
    m_services.keys.hold(std::nullopt);
    if (stored) {
        m_removalPending = false;
        m_services.analytics.track("cap.pairing_completed");
        qCInfo(logAuth, "pairing approved");
    } else {
        qCCritical(logAuth, "keychain write failed; pairing dropped");
    }
    if (isNewest)
        end(stored ? PairingOutcome::approved : PairingOutcome::notStored);
    co_return stored ? Problem() : stored.error().kind;
}

Task<PairingClient::Problem> PairingClient::lookToRemove(Asking asking, std::stop_token stop) {
    const auto removed = co_await m_services.keychain.remove(Keychain::apiKeyAccount, asking, stop);
    if (stop.stop_requested())
        co_return std::nullopt;
    noteLooked();
    if (!removed)
        co_return removed.error().kind;
    m_removalPending = false;
    co_return std::nullopt;
}

Task<PairingClient::Problem> PairingClient::lookToRead(Asking asking, std::stop_token stop) {
    const auto stored = co_await m_services.keychain.read(Keychain::apiKeyAccount, asking, stop);
    if (stop.stop_requested())
        co_return std::nullopt;
    noteLooked();
    if (stored || !mayPass(stored.error().kind))
        noteCertain();
    if (!stored)
        co_return stored.error().kind;
    if (*stored && m_state.kind == PairingState::Kind::unpaired)
        change(PairingState::paired());
    co_return std::nullopt;
}

void PairingClient::noteLooked() {
    m_looked = true;
    for (const OneShot<bool> &waiting : std::exchange(m_waitingForLook, {}))
        waiting.resolve(true);
}

void PairingClient::noteCertain() {
    m_isCertain = true;
    for (const OneShot<bool> &waiting : std::exchange(m_waitingForCertainty, {}))
        waiting.resolve(true);
}

void PairingClient::end(PairingOutcome outcome) {
    m_outcome = outcome;
    const bool isPaired = outcome == PairingOutcome::approved || outcome == PairingOutcome::notStoredYet;
    change(isPaired ? PairingState::paired() : PairingState::unpaired());
}

void PairingClient::change(PairingState state) {
    m_state = std::move(state);
    if (m_state.kind != PairingState::Kind::waitingForApproval)
        noteCertain();
    if (onChange)
        onChange();
}

Task<HttpResult> PairingClient::post(std::string path, std::string body, std::stop_token stop) {
    HttpRequest request{.method = HttpMethod::post, .url = m_service.appending(path)};
    request.headers.add("Content-Type", "application/json");
    request.body = std::move(body);
    co_return co_await m_services.http.send(std::move(request), stop);
}

} // namespace vantrell
