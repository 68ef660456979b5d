// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Support/UniqueFd.h"

#include <sys/socket.h>
#include <sys/un.h>

#include <string>

namespace vantrell::testing {

/// A connection to a socket in the file system; invalid when nobody listens there.
inline UniqueFd connectTo(const std::string &path) {
    UniqueFd socket(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
    sockaddr_un address{.sun_family = AF_UNIX, .sun_path = {}};
    path.copy(address.sun_path, sizeof address.sun_path - 1);
    if (::connect(socket.get(), reinterpret_cast<sockaddr *>(&address), sizeof address) != 0)
        socket.reset();
    return socket;
}

} // namespace vantrell::testing
