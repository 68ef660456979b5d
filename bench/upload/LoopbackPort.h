// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Support/UniqueFd.h"

#include <netinet/in.h>

namespace vantrell::bench {

UniqueFd makeTcpSocket();

sockaddr_in loopbackAddress(int port);

/// Binds the socket to a port that the kernel picks and returns it.
int bindToFreePort(int socket);

} // namespace vantrell::bench
