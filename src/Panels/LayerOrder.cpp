// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Panels/LayerOrder.h"

#include "Panels/LayerWindow.h"
#include "Support/UniqueFd.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdint>
#include <cstring>
#include <ranges>
#include <string>

#include <sys/socket.h>
#include <sys/time.h>
#include <sys/un.h>

namespace vantrell {

namespace {

constexpr std::array<char, 6> swayMagic{'i', '3', '-', 'i', 'p', 'c'};
constexpr std::uint32_t swayVersionQuestion = 7;
constexpr std::size_t swayHeaderBytes = swayMagic.size() + 2 * sizeof(std::uint32_t);
constexpr int swayWithUsualOrder = 10;

bool readAll(int socket, char *bytes, std::size_t count) {
    for (std::size_t at = 0; at < count;) {
        const ssize_t got = ::recv(socket, bytes + at, count - at, 0);
        if (got <= 0)
            return false;
        at += std::size_t(got);
    }
    return true;
}

/// The minor number of version 1; none where the compositor is another one.
std::optional<int> swayVersion() {
    const QByteArray path = qgetenv("SWAYSOCK");
    sockaddr_un address{};
    if (path.isEmpty() || std::size_t(path.size()) >= sizeof address.sun_path)
        return std::nullopt;
    address.sun_family = AF_UNIX;
    std::memcpy(address.sun_path, path.constData(), std::size_t(path.size()));
    const UniqueFd socket(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
    const timeval patience{.tv_sec = 0, .tv_usec = 500'000};
    std::array<char, swayHeaderBytes> header{};
    std::ranges::copy(swayMagic, header.begin());
    std::memcpy(header.data() + swayMagic.size() + sizeof(std::uint32_t), &swayVersionQuestion,
                sizeof swayVersionQuestion);
    if (!socket || ::setsockopt(socket.get(), SOL_SOCKET, SO_RCVTIMEO, &patience, sizeof patience) != 0 ||
        ::connect(socket.get(), reinterpret_cast<const sockaddr *>(&address), sizeof address) != 0 ||
        ::send(socket.get(), header.data(), header.size(), MSG_NOSIGNAL) != ssize_t(header.size()) ||
        !readAll(socket.get(), header.data(), header.size()))
        return std::nullopt;
    std::uint32_t length = 0;
    std::memcpy(&length, header.data() + swayMagic.size(), sizeof length);
    constexpr std::uint32_t longest = 64 * 1024;
    std::string answer(std::min(length, longest), '\0');
    if (!readAll(socket.get(), answer.data(), answer.size()))
        return std::nullopt;
    const auto version = nlohmann::json::parse(answer, nullptr, false);
    if (!version.is_object() || !version.contains("minor") || !version["minor"].is_number_integer() ||
        version.value("major", 0) != 1)
        return std::nullopt;
    return version["minor"].get<int>();
}

} // namespace

LayerOrder::LayerOrder() : m_isReversed(swayVersion().value_or(swayWithUsualOrder) < swayWithUsualOrder) {}

void LayerOrder::raise(LayerWindow &window) {
    const bool isHighest = !m_windows.empty() && m_windows.back() == &window;
    std::erase_if(m_windows, [&](const auto &known) { return !known || known == &window; });
    if (m_isReversed) {
        for (const auto &below : m_windows | std::views::reverse)
            below->reenterLayer();
    } else if (!window.takeFresh() && !isHighest) {
        window.remap();
    }
    m_windows.emplace_back(&window);
}

} // namespace vantrell
