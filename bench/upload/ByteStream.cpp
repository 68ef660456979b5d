// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "ByteStream.h"

#include <sys/socket.h>

namespace vantrell::bench {

ByteStream::ByteStream(UniqueFd socket, SSL_CTX *context) : m_socket(std::move(socket)) {
    if (!context)
        return;
    m_ssl.reset(SSL_new(context));
    SSL_set_fd(m_ssl.get(), m_socket.get());
    m_isOpen = SSL_accept(m_ssl.get()) == 1;
}

std::size_t ByteStream::read(char *target, std::size_t room) {
    if (m_ssl) {
        const int count = SSL_read(m_ssl.get(), target, int(room));
        return count > 0 ? std::size_t(count) : 0;
    }
    const ssize_t count = ::recv(m_socket.get(), target, room, 0);
    return count > 0 ? std::size_t(count) : 0;
}

void ByteStream::write(std::string_view bytes) {
    // Answers are far smaller than any send buffer: one call takes them whole.
    if (m_ssl)
        SSL_write(m_ssl.get(), bytes.data(), int(bytes.size()));
    else
        ::send(m_socket.get(), bytes.data(), bytes.size(), MSG_NOSIGNAL);
}

} // namespace vantrell::bench
