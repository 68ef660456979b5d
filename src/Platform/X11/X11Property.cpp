// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Platform/X11/X11Property.h"

#include <QString>

#include <string_view>
#include <utility>

namespace vantrell {

namespace {

/// In units of four bytes: a title longer than this is cut off.
constexpr std::uint32_t mostUnits = 16 * 1024;

std::string validUtf8(std::string_view bytes, bool isLatin1) {
    const auto size = qsizetype(bytes.size());
    const QString text =
        isLatin1 ? QString::fromLatin1(bytes.data(), size) : QString::fromUtf8(bytes.data(), size);
    return text.toStdString();
}

std::string_view bytesOf(const xcb_get_property_reply_t *reply) {
    if (!reply || reply->format != 8)
        return {};
    return {static_cast<const char *>(xcb_get_property_value(reply)),
            std::size_t(xcb_get_property_value_length(reply))};
}

} // namespace

X11Property::X11Property(const X11Connection &connection, xcb_window_t window, xcb_atom_t name)
    : m_connection(&connection),
      m_cookie(xcb_get_property(connection.xcb(), 0, window, name, XCB_GET_PROPERTY_TYPE_ANY, 0, mostUnits)) {
}

X11Property::~X11Property() {
    if (m_connection)
        xcb_discard_reply(m_connection->xcb(), m_cookie.sequence);
}

X11Property::X11Property(X11Property &&other) noexcept
    : m_connection(std::exchange(other.m_connection, nullptr)), m_cookie(other.m_cookie) {}

XcbPointer<xcb_get_property_reply_t> X11Property::take() {
    const X11Connection *connection = std::exchange(m_connection, nullptr);
    if (!connection)
        return nullptr;
    return xcbReply(connection->xcb(), m_cookie, xcb_get_property_reply);
}

std::vector<std::uint32_t> X11Property::numbers() {
    const auto reply = take();
    if (!reply || reply->format != 32)
        return {};
    const auto *first = static_cast<const std::uint32_t *>(xcb_get_property_value(reply.get()));
    return {first, first + xcb_get_property_value_length(reply.get()) / 4};
}

std::optional<std::string> X11Property::text() {
    const auto reply = take();
    std::string_view bytes = bytesOf(reply.get());
    // Some programs count the terminating zero byte in.
    bytes = bytes.substr(0, bytes.find('\0'));
    if (bytes.empty())
        return std::nullopt;
    return validUtf8(bytes, reply->type == XCB_ATOM_STRING);
}

std::vector<std::string> X11Property::strings() {
    const auto reply = take();
    std::string_view rest = bytesOf(reply.get());
    std::vector<std::string> parts;
    while (!rest.empty()) {
        const std::string_view part = rest.substr(0, rest.find('\0'));
        parts.push_back(validUtf8(part, reply->type == XCB_ATOM_STRING));
        rest.remove_prefix(std::min(rest.size(), part.size() + 1));
    }
    return parts;
}

} // namespace vantrell
