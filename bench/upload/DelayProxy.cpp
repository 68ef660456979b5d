// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "DelayProxy.h"

#include "LoopbackPort.h"

#include <condition_variable>
#include <deque>
#include <stdexcept>
#include <string>

#include <netinet/tcp.h>
#include <sys/socket.h>

namespace vantrell::bench {

namespace {

using Instant = std::chrono::steady_clock::time_point;

/// Bytes on their way, each piece with the time at which it may arrive. Bounded, as a real line is.
class Line {
public:
    void push(Instant due, std::string bytes) {
        std::unique_lock lock(m_mutex);
        m_changed.wait(lock, [this] { return m_held < limit; });
        m_held += bytes.size();
        m_pieces.push_back({due, std::move(bytes)});
        m_changed.notify_all();
    }

    /// An empty piece is the end.
    std::string pop() {
        std::unique_lock lock(m_mutex);
        m_changed.wait(lock, [this] { return !m_pieces.empty(); });
        auto [due, bytes] = std::move(m_pieces.front());
        m_pieces.pop_front();
        lock.unlock();
        std::this_thread::sleep_until(due);
        lock.lock();
        m_held -= bytes.size();
        m_changed.notify_all();
        return bytes;
    }

private:
    static constexpr std::size_t limit = 256 << 20;
    struct Piece {
        Instant due;
        std::string bytes;
    };
    std::mutex m_mutex;
    std::condition_variable m_changed;
    std::deque<Piece> m_pieces;
    std::size_t m_held = 0;
};

bool sendAll(int socket, std::string_view bytes) {
    while (!bytes.empty()) {
        const ssize_t count = ::send(socket, bytes.data(), bytes.size(), MSG_NOSIGNAL);
        if (count <= 0)
            return false;
        bytes.remove_prefix(std::size_t(count));
    }
    return true;
}

void carry(int from, int to, std::chrono::milliseconds delay) {
    Line line;
    std::thread writer([&line, to] {
        for (std::string bytes = line.pop(); !bytes.empty(); bytes = line.pop())
            if (!sendAll(to, bytes))
                break;
        ::shutdown(to, SHUT_WR);
    });
    for (;;) {
        std::string buffer(256 << 10, '\0');
        const ssize_t count = ::recv(from, buffer.data(), buffer.size(), 0);
        buffer.resize(count > 0 ? std::size_t(count) : 0);
        const bool ended = buffer.empty();
        line.push(std::chrono::steady_clock::now() + delay, std::move(buffer));
        if (ended)
            break;
    }
    writer.join();
}

} // namespace

DelayProxy::DelayProxy(int targetPort, std::chrono::milliseconds oneWay)
    : m_targetPort(targetPort), m_oneWay(oneWay), m_listener(makeTcpSocket()),
      m_port(bindToFreePort(m_listener.get())) {
    if (::listen(m_listener.get(), 64) != 0)
        throw std::runtime_error("the proxy cannot listen");
    m_acceptor = std::thread([this] { acceptAll(); });
}

DelayProxy::~DelayProxy() {
    ::shutdown(m_listener.get(), SHUT_RDWR);
    m_acceptor.join();
    for (std::thread &thread : m_threads)
        thread.join();
}

void DelayProxy::acceptAll() {
    for (;;) {
        UniqueFd client(::accept4(m_listener.get(), nullptr, nullptr, SOCK_CLOEXEC));
        if (!client)
            return;
        std::scoped_lock lock(m_mutex);
        m_threads.emplace_back([this, socket = std::move(client)]() mutable { serve(std::move(socket)); });
    }
}

void DelayProxy::serve(UniqueFd client) {
    const UniqueFd server = makeTcpSocket();
    const sockaddr_in address = loopbackAddress(m_targetPort);
    if (::connect(server.get(), reinterpret_cast<const sockaddr *>(&address), sizeof address) != 0)
        return;
    const int now = 1;
    ::setsockopt(server.get(), IPPROTO_TCP, TCP_NODELAY, &now, sizeof now);
    ::setsockopt(client.get(), IPPROTO_TCP, TCP_NODELAY, &now, sizeof now);
    std::thread back([this, &client, &server] { carry(server.get(), client.get(), m_oneWay); });
    carry(client.get(), server.get(), m_oneWay);
    back.join();
}

} // namespace vantrell::bench
