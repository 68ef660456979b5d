// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Support/UniqueFd.h"

#include <openssl/ssl.h>

#include <cstddef>
#include <memory>
#include <string_view>

namespace vantrell::bench {

/// The server's end of a connection, plain or through TLS. Blocks.
class ByteStream {
public:
    /// `context` null means plain.
    ByteStream(UniqueFd socket, SSL_CTX *context);

    /// False when the TLS handshake failed.
    bool isOpen() const { return m_isOpen; }
    /// Bytes read; 0 at the end or on a failure.
    std::size_t read(char *target, std::size_t room);
    void write(std::string_view bytes);

private:
    struct Cleanup {
        void operator()(SSL *ssl) const { SSL_free(ssl); }
    };
    UniqueFd m_socket;
    std::unique_ptr<SSL, Cleanup> m_ssl;
    bool m_isOpen = true;
};

} // namespace vantrell::bench
