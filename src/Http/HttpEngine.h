// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Http/SocketTable.h"
#include "Support/WorkerThread.h"

#include <curl/curl.h>

#include <filesystem>
#include <memory>
#include <mutex>
#include <optional>
#include <unordered_map>
#include <vector>

namespace vantrell {

class HttpTransfer;

/// The network thread: runs transfers over one pool of connections. The public members are thread-safe; the
/// rest lives on the thread.
class HttpEngine {
public:
    explicit HttpEngine(std::optional<std::filesystem::path> authorities);
    ~HttpEngine();
    HttpEngine(const HttpEngine &) = delete;
    HttpEngine &operator=(const HttpEngine &) = delete;

    /// Settles the transfer's `done` when it has ended.
    void start(std::shared_ptr<HttpTransfer> transfer);
    /// Closes the transfer's connection and forgets it, settled or not.
    void abandon(std::shared_ptr<HttpTransfer> transfer);
    /// Cancels everything and waits for the thread to end.
    void shutDown();

private:
    void run();
    bool takeOrders();
    void add(const std::shared_ptr<HttpTransfer> &transfer);
    void drop(const std::shared_ptr<HttpTransfer> &transfer);
    void collectFinished();
    void expireSilent();
    int pollMilliseconds() const;

    const std::optional<std::filesystem::path> m_authorities;
    CURLM *const m_multi;
    SocketTable m_sockets;
    std::unordered_map<CURL *, std::shared_ptr<HttpTransfer>> m_running;

    std::mutex m_mutex;
    std::vector<std::shared_ptr<HttpTransfer>> m_toStart;
    std::vector<std::shared_ptr<HttpTransfer>> m_toAbandon;
    bool m_isStopping = false;
    WorkerThread m_thread;
};

} // namespace vantrell
