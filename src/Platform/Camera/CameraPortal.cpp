// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Platform/Camera/CameraPortal.h"

#include "Platform/CameraError.h"
#include "Support/Log.h"

#include <QDBusMessage>
#include <QDBusUnixFileDescriptor>

#include <fcntl.h>

#include <optional>
#include <utility>

namespace vantrell {

namespace {

constexpr int remotePatienceMs = 3000;

std::expected<std::optional<UniqueFd>, PlatformError> openRemote(QDBusConnection bus) {
    QDBusMessage question =
        QDBusMessage::createMethodCall("org.freedesktop.portal.Desktop", "/org/freedesktop/portal/desktop",
                                       "org.freedesktop.portal.Camera", "OpenPipeWireRemote");
    question.setArguments({QVariantMap()});
    const QDBusMessage answer = bus.call(question, QDBus::Block, remotePatienceMs);
    if (answer.type() != QDBusMessage::ReplyMessage || answer.arguments().isEmpty()) {
        const QString name = answer.errorName();
        qCInfo(logCapture, "no way to the cameras: %s", qUtf8Printable(name));
        const bool isRefused = name.endsWith("NotAllowed") || name.endsWith("AccessDenied");
        return std::unexpected(
            cameraError(isRefused ? CameraErrorCode::accessRefused : CameraErrorCode::noCameraServer));
    }
    const auto socket = answer.arguments().constFirst().value<QDBusUnixFileDescriptor>();
    UniqueFd own(::fcntl(socket.fileDescriptor(), F_DUPFD_CLOEXEC, 0));
    if (!own)
        return std::unexpected(cameraError(CameraErrorCode::serverFailed));
    return std::optional(std::move(own));
}

} // namespace

Task<bool> CameraPortal::requestAccess(std::stop_token stop) {
    PortalRequests::Request request;
    request.interface = "Camera";
    request.member = "AccessCamera";
    request.patience = std::nullopt;
    auto asked = m_requests.ask(std::move(request), stop);
    const auto answer = co_await asked;
    co_return answer.has_value();
}

PipeWireRemote CameraPortal::remote() const {
    return [bus = m_requests.bus()] { return openRemote(bus); };
}

} // namespace vantrell
