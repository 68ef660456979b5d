// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "DiscardServer.h"

#include "LoopbackPort.h"

#include <algorithm>
#include <cctype>
#include <sstream>
#include <stdexcept>

#include <netinet/tcp.h>
#include <sys/socket.h>

namespace vantrell::bench {

std::int64_t DiscardServer::Head::number(const std::string &name) const {
    const auto found = fields.find(name);
    return found == fields.end() ? 0 : std::stoll(found->second);
}

DiscardServer::DiscardServer(const std::optional<std::filesystem::path> &certificate)
    : m_listener(makeTcpSocket()), m_port(bindToFreePort(m_listener.get())) {
    if (certificate) {
        m_context.reset(SSL_CTX_new(TLS_server_method()));
        if (SSL_CTX_use_certificate_chain_file(m_context.get(), (*certificate / "authority.pem").c_str()) !=
                1 ||
            SSL_CTX_use_PrivateKey_file(m_context.get(), (*certificate / "key.pem").c_str(),
                                        SSL_FILETYPE_PEM) != 1)
            throw std::runtime_error("no certificate");
        // Many records with one system call.
        SSL_CTX_set_read_ahead(m_context.get(), 1);
        SSL_CTX_set_default_read_buffer_len(m_context.get(), 256 << 10);
    }
    if (::listen(m_listener.get(), 64) != 0)
        throw std::runtime_error("the server cannot listen");
    m_acceptor = std::thread([this] { acceptAll(); });
}

DiscardServer::~DiscardServer() {
    ::shutdown(m_listener.get(), SHUT_RDWR);
    m_acceptor.join();
    for (std::thread &thread : m_threads)
        thread.join();
}

std::int64_t DiscardServer::newestOffset() {
    std::scoped_lock lock(m_mutex);
    return m_offsets.empty() ? 0 : m_offsets.back();
}

void DiscardServer::acceptAll() {
    for (;;) {
        UniqueFd socket(::accept4(m_listener.get(), nullptr, nullptr, SOCK_CLOEXEC));
        if (!socket)
            return;
        ++m_connections;
        const int now = 1;
        ::setsockopt(socket.get(), IPPROTO_TCP, TCP_NODELAY, &now, sizeof now);
        std::scoped_lock lock(m_mutex);
        m_threads.emplace_back([this, held = std::move(socket)]() mutable { serve(std::move(held)); });
    }
}

void DiscardServer::serve(UniqueFd socket) {
    ByteStream stream(std::move(socket), m_context.get());
    std::string pending;
    std::string buffer(512 << 10, '\0');
    while (stream.isOpen()) {
        const auto head = readHead(stream, pending);
        if (!head)
            return;
        if (head->fields.contains("expect"))
            stream.write("HTTP/1.1 100 Continue\r\n\r\n");
        stream.write(answer(*head, drop(stream, pending, head->number("content-length"), buffer)));
    }
}

std::optional<DiscardServer::Head> DiscardServer::readHead(ByteStream &stream, std::string &pending) {
    std::size_t end = 0;
    char piece[16384];
    while ((end = pending.find("\r\n\r\n")) == std::string::npos) {
        const std::size_t count = stream.read(piece, sizeof piece);
        if (count == 0)
            return std::nullopt;
        pending.append(piece, count);
    }
    std::istringstream lines(pending.substr(0, end));
    pending.erase(0, end + 4);
    Head head;
    std::string line;
    std::getline(lines, line);
    std::istringstream(line) >> head.method >> head.target;
    while (std::getline(lines, line)) {
        const auto colon = line.find(':');
        std::string name = line.substr(0, colon);
        std::ranges::transform(name, name.begin(), [](unsigned char c) { return char(std::tolower(c)); });
        head.fields[name] = colon == std::string::npos ? "" : line.substr(colon + 1);
    }
    return head;
}

std::int64_t DiscardServer::drop(ByteStream &stream, std::string &pending, std::int64_t bytes,
                                 std::string &buffer) {
    std::int64_t left = bytes - std::min(bytes, std::int64_t(pending.size()));
    pending.erase(0, std::size_t(bytes - left));
    while (left > 0) {
        const std::size_t count =
            stream.read(buffer.data(), std::size_t(std::min(left, std::int64_t(buffer.size()))));
        if (count == 0)
            break;
        left -= std::int64_t(count);
    }
    return bytes - left;
}

std::string DiscardServer::answer(const Head &head, std::int64_t received) {
    const std::string end = "Content-Length: 0\r\n\r\n";
    if (head.method == "PUT")
        return "HTTP/1.1 200 OK\r\n" + end;
    std::scoped_lock lock(m_mutex);
    const std::string tus = "Tus-Resumable: 1.0.0\r\n";
    if (head.method == "POST") {
        m_offsets.push_back(0);
        return "HTTP/1.1 201 Created\r\n" + tus + "Location: /tus/" + std::to_string(m_offsets.size() - 1) +
               "\r\n" + end;
    }
    const std::string prefix = "/tus/";
    const bool known = head.target.starts_with(prefix) && head.target.size() > prefix.size() &&
                       std::stoull(head.target.substr(prefix.size())) < m_offsets.size();
    if (head.method != "PATCH" || !known)
        return "HTTP/1.1 404 Not Found\r\n" + end;
    std::int64_t &offset = m_offsets[std::stoull(head.target.substr(prefix.size()))];
    if (head.number("upload-offset") != offset)
        return "HTTP/1.1 409 Conflict\r\n" + tus + end;
    offset += received;
    return "HTTP/1.1 204 No Content\r\n" + tus + "Upload-Offset: " + std::to_string(offset) + "\r\n\r\n";
}

} // namespace vantrell::bench
