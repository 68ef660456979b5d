// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Platform/Bus/PortalRequests.h"
#include "Support/Geometry.h"
#include "Support/PlatformError.h"
#include "Support/Task.h"
#include "Support/UniqueFd.h"

#include <QString>

#include <cstdint>
#include <expected>
#include <functional>
#include <memory>
#include <optional>
#include <stop_token>
#include <string>

namespace vantrell {

/// What the desktop shares after its user, or an earlier choice, has said what. Ends with the object. Main
/// thread.
class ScreenCastSession {
public:
    enum class Source { monitor = 1, window };
    enum class Pointer { hidden = 1, embedded, metadata };
    struct Wish {
        Source source = Source::monitor;
        /// The pointer shall come apart from the pictures, where the desktop can.
        bool separatesPointer = false;
        /// The pointer shall neither be in the pictures nor come with them.
        bool hidesPointer = false;
        /// Names an earlier choice, which is taken again without asking, if it still can be.
        std::optional<std::string> restoreToken;
    };
    using Failure = PortalRequests::Failure;
    struct Remote {
        UniqueFd socket;
    };
    struct Opened {
        std::unique_ptr<ScreenCastSession> session;
    };

    /// Asks; the dialog may stay for minutes. `portal` outlives the session. Errors: those of the portal,
    /// `noPicture` when the desktop answers with nothing to see.
    static Task<std::expected<Opened, Failure>> open(PortalRequests *portal, Wish wish, std::stop_token stop);
    ~ScreenCastSession();
    ScreenCastSession(const ScreenCastSession &) = delete;
    ScreenCastSession &operator=(const ScreenCastSession &) = delete;

    /// PipeWire's number of the stream.
    std::uint32_t node() const { return m_node; }
    /// Where the monitor lies among the others, in the compositor's own units, as far as it tells.
    std::optional<Point> position() const { return m_position; }
    std::optional<Size> logicalSize() const { return m_logicalSize; }
    /// What becomes of the pointer.
    Pointer pointer() const { return m_pointer; }
    /// The desktop could not have left the pointer out of the pictures better than it does.
    bool isPointerOutAsCanBe() const { return m_isPointerOutAsCanBe; }
    /// For a later wish; none where the desktop does not remember.
    std::optional<std::string> restoreToken() const { return m_restoreToken; }

    /// A connection to PipeWire that reaches the stream.
    Task<std::expected<Remote, Failure>> openRemote(std::stop_token stop);

    /// The desktop ended it.
    void onClosed(std::function<void()> closed);

private:
    ScreenCastSession(PortalRequests &portal, QString path) : m_portal(portal), m_path(std::move(path)) {}
    bool takeStreams(const QVariantMap &results);

    PortalRequests &m_portal;
    const QString m_path;
    std::uint32_t m_node = 0;
    std::optional<Point> m_position;
    std::optional<Size> m_logicalSize;
    Pointer m_pointer = Pointer::embedded;
    bool m_isPointerOutAsCanBe = false;
    std::optional<std::string> m_restoreToken;
};

} // namespace vantrell
