// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Http/HttpEngine.h"

#include "Http/HttpTransfer.h"

#include <pthread.h>
#include <signal.h>

#include <algorithm>
#include <utility>

namespace vantrell {

namespace {

CURLM *makeMulti() {
    [[maybe_unused]] static const CURLcode initialised = curl_global_init(CURL_GLOBAL_DEFAULT);
    return curl_multi_init();
}

} // namespace

HttpEngine::HttpEngine(std::optional<std::filesystem::path> authorities)
    : m_authorities(std::move(authorities)), m_multi(makeMulti()), m_thread("http", [this] { run(); }) {}

HttpEngine::~HttpEngine() {
    shutDown();
    curl_multi_cleanup(m_multi);
}

void HttpEngine::start(std::shared_ptr<HttpTransfer> transfer) {
    {
        std::scoped_lock lock(m_mutex);
        if (!m_isStopping)
            m_toStart.push_back(transfer);
        else
            transfer->done().resolve(std::unexpected(TransportError::cancelled()));
    }
    curl_multi_wakeup(m_multi);
}

void HttpEngine::abandon(std::shared_ptr<HttpTransfer> transfer) {
    {
        std::scoped_lock lock(m_mutex);
        m_toAbandon.push_back(std::move(transfer));
    }
    curl_multi_wakeup(m_multi);
}

void HttpEngine::shutDown() {
    {
        std::scoped_lock lock(m_mutex);
        m_isStopping = true;
    }
    curl_multi_wakeup(m_multi);
    m_thread.join();
}

void HttpEngine::run() {
    // TLS writes to a socket that the peer has closed; the signal would end the process.
    sigset_t pipe;
    sigemptyset(&pipe);
    sigaddset(&pipe, SIGPIPE);
    pthread_sigmask(SIG_BLOCK, &pipe, nullptr);

    while (takeOrders()) {
        int running = 0;
        curl_multi_perform(m_multi, &running);
        collectFinished();
        expireSilent();
        curl_multi_poll(m_multi, nullptr, 0, pollMilliseconds(), nullptr);
    }
    while (!m_running.empty())
        drop(m_running.begin()->second);
}

bool HttpEngine::takeOrders() {
    std::unique_lock lock(m_mutex);
    const auto toStart = std::exchange(m_toStart, {});
    const auto toAbandon = std::exchange(m_toAbandon, {});
    const bool isStopping = m_isStopping;
    lock.unlock();
    for (const auto &transfer : toStart)
        add(transfer);
    for (const auto &transfer : toAbandon)
        drop(transfer);
    return !isStopping;
}

void HttpEngine::add(const std::shared_ptr<HttpTransfer> &transfer) {
    if (const auto ready = transfer->prepare(m_sockets, m_authorities); !ready) {
        transfer->done().resolve(std::unexpected(ready.error()));
        return;
    }
    m_running.emplace(transfer->easy(), transfer);
    curl_multi_add_handle(m_multi, transfer->easy());
}

void HttpEngine::drop(const std::shared_ptr<HttpTransfer> &transfer) {
    const auto found = m_running.find(transfer->easy());
    if (!transfer->easy() || found == m_running.end())
        return;
    // Keeps the transfer alive when the map held the last reference.
    const std::shared_ptr<HttpTransfer> held = found->second;
    // Otherwise megabytes that the kernel has already taken would still go out after the request was given
    // up.
    m_sockets.resetOnClose(held->localPort());
    curl_multi_remove_handle(m_multi, held->easy());
    m_running.erase(found);
    held->done().resolve(std::unexpected(TransportError::cancelled()));
}

void HttpEngine::collectFinished() {
    int left = 0;
    while (const CURLMsg *message = curl_multi_info_read(m_multi, &left)) {
        if (message->msg != CURLMSG_DONE)
            continue;
        const CURLcode code = message->data.result;
        const auto found = m_running.find(message->easy_handle);
        const std::shared_ptr<HttpTransfer> transfer = found->second;
        HttpResult result = transfer->result(code);
        curl_multi_remove_handle(m_multi, transfer->easy());
        m_running.erase(found);
        transfer->done().resolve(std::move(result));
    }
}

void HttpEngine::expireSilent() {
    std::vector<std::shared_ptr<HttpTransfer>> expired;
    for (const auto &[easy, transfer] : m_running)
        if (transfer->isSilentTooLong(m_sockets))
            expired.push_back(transfer);
    for (const auto &transfer : expired) {
        HttpResult result = transfer->result(CURLE_OPERATION_TIMEDOUT);
        transfer->done().resolve(std::move(result));
        drop(transfer);
    }
}

int HttpEngine::pollMilliseconds() const {
    // With nothing to do only an order ends the wait.
    std::chrono::milliseconds wait = std::chrono::hours(1);
    for (const auto &[easy, transfer] : m_running)
        wait = std::min(wait, transfer->watchInterval());
    return int(wait.count());
}

} // namespace vantrell
