// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Platform/FrameSource.h"
#include "Platform/PipeWire/PipeWireConnection.h"
#include "Platform/PipeWire/PipeWireLoop.h"
#include "Platform/PipeWire/PipeWireVideoStream.h"
#include "Platform/Wayland/CastClock.h"
#include "Platform/Wayland/CastFormat.h"
#include "Platform/Wayland/CastLayout.h"
#include "Platform/Wayland/CastMapping.h"
#include "Platform/Wayland/CastPointer.h"
#include "Support/Cancelled.h"
#include "Support/OneShot.h"
#include "Support/PlatformError.h"
#include "Support/Task.h"
#include "Support/UniqueFd.h"

#include <QImage>

#include <condition_variable>
#include <cstdint>
#include <expected>
#include <memory>
#include <mutex>
#include <optional>
#include <stop_token>
#include <variant>
#include <vector>

namespace vantrell {

/// The pictures of one screen cast, from its beginning to its end: the stretches of a recording, one after
/// another, look at them.
///
/// The newest picture wins. It stays with us until a newer one comes, so that there is something to look at
/// while the screen is still; all others go back at once. Nothing is copied: who looks reads the compositor's
/// own buffer. Thread-safe, but only one thread looks at a time.
class CastFeed {
public:
    using Failure = std::variant<PlatformError, Cancelled>;

    /// `remote`: a connected PipeWire socket; absent: the desktop's own server. `wantsPointer`: the pointer
    /// is told apart from the pictures.
    static std::expected<std::shared_ptr<CastFeed>, PlatformError>
    open(std::optional<UniqueFd> remote, std::uint32_t node, bool wantsPointer);
    ~CastFeed();
    CastFeed(const CastFeed &) = delete;
    CastFeed &operator=(const CastFeed &) = delete;

    /// Waits for the first picture, and of those that may come with the first change only, as a window's, not
    /// longer than four seconds: its size. Main thread, once.
    Task<std::expected<PixelSize, Failure>> firstPicture(bool mayComeLater, std::stop_token stop);
    /// Has the sender stop and waits until it did, a second at most. Main thread, once.
    Task<> rest(std::stop_token stop);
    /// Waits until the sender is gone, 600 ms at most. Main thread, once.
    Task<> gone(std::stop_token stop);
    /// Of the newest picture; before the first what was agreed to, empty before that.
    PixelSize pictureSize() const;
    /// An inactive cast costs nobody anything; the last picture stays.
    void setActive(bool active);
    /// A copy of what somebody is looking at just now; null while nobody does. Worker thread.
    QImage pictureInUse();
    /// There will be no more pictures. The first reason counts.
    void end(PlatformError why);

    /// What there is to see now.
    struct Look {
        /// The picture's first pixel; null when there is no picture at the moment.
        const std::uint8_t *pixels = nullptr;
        /// Bytes to the pixel on the right and to the one below; a display that is turned has its own.
        std::ptrdiff_t step = 0;
        std::ptrdiff_t stride = 0;
        PixelSize size;
        PixelFormat format = PixelFormat::bgrx;
        /// Since the look before: parts of the picture, or all of it.
        std::vector<PixelRect> damage;
        bool isAllDamaged = false;
        bool isPointerChanged = false;
        CastPointer pointer;
        /// Host time of the newest of what is new.
        double hostTime = 0;
    };
    /// The pixels stay until `release` or `wait`. It uses up what is new.
    Look look();
    void release();
    /// As a FrameSource waits. A picture that is there when the cast has ended is still told of.
    std::expected<FrameWait, PlatformError> wait(double notBefore, std::optional<double> deadline);
    /// Waits until a picture came after the cast was made active, or, from `patience` seconds on, until there
    /// is one at all, for two seconds: it may come with the first change only.
    std::expected<void, PlatformError> waitForPicture(double patience);
    void interrupt();

private:
    CastFeed(std::uint32_t node, bool wantsPointer);

    std::expected<void, PlatformError> connect(std::optional<UniqueFd> remote);
    // The loop's thread.
    bool makeStream(bool dmaBuf);
    void watchNode();
    void watchSender();
    bool isSenderThere() const;
    void noteRest();
    void formatChanged(const spa_pod &pod);
    void arrived();
    void take(PipeWireBuffer buffer);
    void noteDamage(const PipeWireBuffer &buffer, const CastLayout &layout);
    void bufferGoes(const pw_buffer *buffer);
    void stateChanged(pw_stream_state state, const char *error);
    /// Has the compositor send a picture when none came.
    void askAgain();
    void expectPicture();

    /// A buffer with what was true when it came.
    struct Held {
        PipeWireBuffer buffer;
        CastFormat format;
        CastLayout layout;
    };
    /// Fills in the pixels, if they can be read. Under the mutex.
    void showCurrent(Look &look);
    bool waitUntil(std::unique_lock<std::mutex> &lock, std::optional<double> time, bool (CastFeed::*done)());
    bool isInterrupted() { return m_isInterrupted; }
    bool isWorthWaking() { return m_isInterrupted || m_hasNews || m_ended; }

    const std::uint32_t m_node;
    const bool m_wantsPointer;
    const OneShot<std::expected<PixelSize, PlatformError>> m_first;
    const OneShot<bool> m_rests;
    const OneShot<bool> m_gone;

    mutable std::mutex m_mutex;
    std::condition_variable m_changed;
    // Under the mutex.
    CastFormat m_format;
    std::optional<Held> m_newest;
    std::optional<Held> m_current;
    /// On its way back, which takes the loop's lock.
    std::optional<Held> m_retired;
    bool m_isBorrowed = false;
    bool m_isLookedAt = false;
    CastMapping m_mapping;
    CastClock m_clock;
    CastPointer m_pointer;
    bool m_isPointerChanged = false;
    std::vector<PixelRect> m_damage;
    bool m_isAllDamaged = true;
    /// Of the newest picture.
    CastLayout m_layout;
    double m_newsTime = 0;
    bool m_hasNews = false;
    bool m_isFresh = false;
    bool m_isInterrupted = false;
    std::optional<PlatformError> m_ended;

    // The loop's, in the order of their making.
    PipeWireLoop m_loop{"screen-cast"};
    std::unique_ptr<PipeWireConnection> m_connection;
    PipeWireProxyPtr<pw_registry> m_registry;
    PipeWireListener m_registryListener;
    PipeWireProxyPtr<pw_node> m_sender;
    PipeWireListener m_senderListener;
    std::unique_ptr<PipeWireVideoStream> m_stream;
    std::unique_ptr<PipeWireTimer> m_retry;
    std::unique_ptr<PipeWireTimer> m_patience;
    pw_node_state m_senderState = PW_NODE_STATE_CREATING;
    bool m_shallRest = false;
    int m_asked = 0;
    bool m_isActive = true;
    bool m_isDmaBufOffered = false;
    bool m_hasFormat = false;
};

} // namespace vantrell
