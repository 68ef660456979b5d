// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Platform/Wayland/CastFeed.h"

#include "Platform/ScreenError.h"
#include "Platform/Wayland/CastPixels.h"
#include "Platform/Wayland/ScreenNudge.h"
#include "Support/BlockingWork.h"
#include "Support/HostTime.h"
#include "Support/Log.h"

#include <QTimer>

#include <chrono>
#include <filesystem>
#include <string_view>
#include <utility>

namespace vantrell {

namespace {

constexpr int mostDamageRegions = 32;
/// More rectangles than this between two looks are everything.
constexpr std::size_t mostDamage = 256;
/// GNOME insists on room for 384 pixels across.
constexpr int largestCursor = 1024;
constexpr std::chrono::seconds firstPicturePatience(4);
/// For a display, which always has something to show: a desktop that has not sent it by then never will.
constexpr std::chrono::seconds displayPatience(8);
constexpr std::chrono::milliseconds restPatience(1000);
constexpr std::chrono::milliseconds gonePatience(600);
constexpr std::chrono::milliseconds nudgePatience(100);
constexpr double pictureLimit = 2;
/// How long a compositor may take for a picture before it is asked again, and how often it is.
constexpr std::chrono::milliseconds askInterval(300);
constexpr int mostAsking = 12;

PlatformError sharingEnded() {
    return screenError(ScreenErrorCode::sharingEnded, "The desktop ended the sharing of the screen");
}

PlatformError noPicture() {
    return screenError(ScreenErrorCode::noPicture, "The desktop sends no picture of what was chosen");
}

/// The compositor sends and PipeWire answers, but nobody has joined the two.
PlatformError notJoined() {
    return screenError(
        ScreenErrorCode::connectionLost,
        "PipeWire's session manager (wireplumber) does not answer: start it anew, or log in again");
}

/// A number that is free again is given to the next object: to another program, and to our own stream.
bool isSender(const char *type, const spa_dict *properties) {
    const char *kind = properties ? spa_dict_lookup(properties, PW_KEY_MEDIA_CLASS) : nullptr;
    return std::string_view(type) == PW_TYPE_INTERFACE_Node &&
           !(kind && std::string_view(kind).starts_with("Stream/Input"));
}

bool hasGraphicsCard() {
    std::error_code error;
    for (const auto &entry : std::filesystem::directory_iterator("/dev/dri", error))
        if (entry.path().filename().string().starts_with("renderD"))
            return true;
    return false;
}

/// Waits for an event, and for no longer than that. Main thread.
Task<> waitFor(OneShot<bool> event, std::chrono::milliseconds patience, std::stop_token stop) {
    QTimer timer;
    timer.setSingleShot(true);
    QObject::connect(&timer, &QTimer::timeout, &timer, [event] { event.resolve(false); });
    timer.start(patience);
    co_await event.wait(stop);
}

std::chrono::steady_clock::time_point timePoint(double hostTime) {
    return std::chrono::steady_clock::time_point(
        std::chrono::duration_cast<std::chrono::steady_clock::duration>(
            std::chrono::duration<double>(hostTime)));
}

} // namespace

CastFeed::CastFeed(std::uint32_t node, bool wantsPointer) : m_node(node), m_wantsPointer(wantsPointer) {}

std::expected<std::shared_ptr<CastFeed>, PlatformError>
CastFeed::open(std::optional<UniqueFd> remote, std::uint32_t node, bool wantsPointer) {
    const std::shared_ptr<CastFeed> feed(new CastFeed(node, wantsPointer));
    if (auto connected = feed->connect(std::move(remote)); !connected)
        return std::unexpected(connected.error());
    return feed;
}

CastFeed::~CastFeed() {
    const PipeWireLoop::Lock lock(m_loop);
    m_patience.reset();
    m_retry.reset();
    m_newest.reset();
    m_mapping.close();
    m_current.reset();
    m_retired.reset();
    m_stream.reset();
    m_senderListener.leave();
    m_sender.reset();
    m_registryListener.leave();
    m_registry.reset();
    m_connection.reset();
}

std::expected<void, PlatformError> CastFeed::connect(std::optional<UniqueFd> remote) {
    const PipeWireLoop::Lock lock(m_loop);
    auto connection = PipeWireConnection::open(m_loop, std::move(remote), [this] {
        end(screenError(ScreenErrorCode::connectionLost, "PipeWire, which carries the screen, went away"));
    });
    if (!connection) {
        qCInfo(logCapture, "pipewire: %s", connection.error().message.c_str());
        return std::unexpected(screenError(ScreenErrorCode::connectionLost,
                                           "PipeWire, which carries the screen, cannot be reached"));
    }
    m_connection = std::move(*connection);
    watchNode();
    m_retry = std::make_unique<PipeWireTimer>(m_loop, [this] {
        if (!makeStream(true))
            end(noPicture());
    });
    m_patience = std::make_unique<PipeWireTimer>(m_loop, [this] { askAgain(); });
    if (!makeStream(false))
        return std::unexpected(noPicture());
    return {};
}

void CastFeed::watchNode() {
    static const pw_registry_events events{
        .version = PW_VERSION_REGISTRY_EVENTS,
        .global =
            [](void *self, std::uint32_t id, std::uint32_t, const char *type, std::uint32_t,
               const spa_dict *properties) {
                auto *feed = static_cast<CastFeed *>(self);
                if (id == feed->m_node && isSender(type, properties))
                    feed->watchSender();
            },
        .global_remove =
            [](void *self, std::uint32_t id) {
                auto *feed = static_cast<CastFeed *>(self);
                // The stream itself would only pause.
                if (id == feed->m_node && feed->m_sender)
                    feed->end(sharingEnded());
            },
    };
    m_registry.reset(pw_core_get_registry(m_connection->core(), PW_VERSION_REGISTRY, 0));
    if (m_registry)
        pw_registry_add_listener(m_registry.get(), m_registryListener.hook(), &events, this);
}

void CastFeed::watchSender() {
    static const pw_node_events events{
        .version = PW_VERSION_NODE_EVENTS,
        .info =
            [](void *self, const pw_node_info *info) {
                auto *feed = static_cast<CastFeed *>(self);
                feed->m_senderState = info->state;
                feed->noteRest();
            },
        .param = nullptr,
    };
    m_senderListener.leave();
    m_sender.reset(static_cast<pw_node *>(
        pw_registry_bind(m_registry.get(), m_node, PW_TYPE_INTERFACE_Node, PW_VERSION_NODE, 0)));
    if (m_sender)
        pw_node_add_listener(m_sender.get(), m_senderListener.hook(), &events, this);
}

bool CastFeed::isSenderThere() const {
    const PipeWireLoop::Lock lock(m_loop);
    return m_sender != nullptr;
}

void CastFeed::noteRest() {
    if (m_shallRest && m_senderState != PW_NODE_STATE_RUNNING)
        m_rests.resolve(true);
}

bool CastFeed::makeStream(bool dmaBuf) {
    m_isDmaBufOffered = dmaBuf;
    m_stream = std::make_unique<PipeWireVideoStream>(
        *m_connection, PipeWireVideoStream::Target{{}, m_node, "Screen"},
        PipeWireVideoStream::Handlers{
            .formatChanged = [this](const spa_pod &pod) { formatChanged(pod); },
            .arrived = [this] { arrived(); },
            .bufferGoes = [this](const pw_buffer *buffer) { bufferGoes(buffer); },
            .stateChanged = [this](pw_stream_state state, const char *error) { stateChanged(state, error); },
        });
    return m_stream->connect(CastFormatOffer(dmaBuf).pods());
}

void CastFeed::stateChanged(pw_stream_state state, const char *error) {
    if (state == PW_STREAM_STATE_ERROR) {
        qCInfo(logCapture, "screen cast: %s", error ? error : "failed");
        // The processor reads shared memory faster: the card's memory is asked for where there is no other.
        if (!m_hasFormat && !m_isDmaBufOffered && hasGraphicsCard())
            m_retry->start();
        else
            end(m_hasFormat ? sharingEnded() : noPicture());
    } else if (state == PW_STREAM_STATE_UNCONNECTED && m_hasFormat) {
        end(sharingEnded());
    }
}

void CastFeed::formatChanged(const spa_pod &pod) {
    const auto format = CastFormat::parse(pod);
    if (!format) {
        end(screenError(ScreenErrorCode::unsupportedPixels,
                        "The display's pixel format is not supported (24 bit colour is)"));
        return;
    }
    m_hasFormat = true;
    {
        const std::scoped_lock lock(m_mutex);
        m_format = *format;
        m_isAllDamaged = true;
    }
    PipeWireBufferWishes wishes;
    if (format->hasModifier)
        wishes.memory |= 1u << SPA_DATA_DmaBuf;
    // One is filled, one waits, one is read and one is spare: the rest of a large screen's would be waste.
    wishes.count = 4;
    wishes.crop = true;
    wishes.transform = true;
    wishes.damageRegions = mostDamageRegions;
    wishes.cursorPixels = m_wantsPointer ? largestCursor : 0;
    m_stream->agree(wishes);
    expectPicture();
}

void CastFeed::expectPicture() {
    m_asked = 0;
    m_patience->cancel();
    m_patience->start(askInterval);
}

void CastFeed::askAgain() {
    bool hasPicture = false;
    {
        const std::scoped_lock lock(m_mutex);
        hasPicture = m_newest || m_current;
    }
    if (hasPicture || !m_isActive || ++m_asked > mostAsking)
        return;
    // It may have sent its only picture before we could take it, or wait for something to change.
    if (m_asked % 2 == 0) {
        m_stream->setActive(false);
        m_stream->setActive(true);
    }
    nudgeScreens();
    m_patience->start(askInterval);
}

void CastFeed::arrived() {
    while (auto buffer = m_stream->take())
        take(std::move(*buffer));
}

void CastFeed::take(PipeWireBuffer buffer) {
    const double now = hostNow();
    std::optional<PixelSize> first;
    {
        const std::scoped_lock lock(m_mutex);
        const double time = m_clock.hostTime(buffer.presentationTime(), now);
        const bool hasPicture = !buffer.isWithoutPicture();
        const bool isPointerChanged = m_wantsPointer && m_pointer.take(buffer);
        m_isPointerChanged |= isPointerChanged;
        if (hasPicture) {
            const CastLayout layout(buffer, m_format.size);
            noteDamage(buffer, layout);
            m_layout = layout;
            m_newest.emplace(Held{std::move(buffer), m_format, layout});
            m_isFresh = true;
            first = layout.size();
        }
        if (hasPicture || isPointerChanged) {
            m_newsTime = time;
            m_hasNews = true;
        }
    }
    m_changed.notify_all();
    if (first)
        m_first.resolve(*first);
}

void CastFeed::noteDamage(const PipeWireBuffer &buffer, const CastLayout &layout) {
    const spa_meta *meta = buffer.metas(SPA_META_VideoDamage);
    const std::size_t before = m_damage.size();
    if (meta && !m_isAllDamaged && layout == m_layout) {
        const auto *regions = static_cast<const spa_meta_region *>(meta->data);
        const std::size_t count = meta->size / sizeof *regions;
        for (std::size_t i = 0; i < count && spa_meta_region_is_valid(&regions[i]); ++i) {
            const spa_region &region = regions[i].region;
            m_damage.push_back(layout.seen(
                {region.position.x, region.position.y, int(region.size.width), int(region.size.height)}));
        }
    }
    // A picture that is said to have changed nowhere may have changed anywhere.
    if (m_damage.size() == before || m_damage.size() > mostDamage) {
        m_isAllDamaged = true;
        m_damage.clear();
    }
}

void CastFeed::bufferGoes(const pw_buffer *buffer) {
    std::unique_lock lock(m_mutex);
    if (m_current && m_current->buffer.is(buffer)) {
        // Somebody is reading it, for a few milliseconds.
        m_changed.wait(lock, [this] { return !m_isBorrowed; });
        m_mapping.close();
    }
    for (std::optional<Held> *held : {&m_newest, &m_current, &m_retired}) {
        if (*held && (*held)->buffer.is(buffer)) {
            (*held)->buffer.forget();
            held->reset();
        }
    }
}

Task<std::expected<PixelSize, CastFeed::Failure>> CastFeed::firstPicture(bool mayComeLater,
                                                                         std::stop_token stop) {
    QTimer timer;
    timer.setSingleShot(true);
    QObject::connect(&timer, &QTimer::timeout, &timer, [this, mayComeLater, first = m_first] {
        // Some send nothing before something moves: what they agreed to send is known all the same.
        const PixelSize agreed = pictureSize();
        if (agreed.isEmpty() || !mayComeLater)
            first.resolve(std::unexpected(agreed.isEmpty() && isSenderThere() ? notJoined() : noPicture()));
        else
            first.resolve(agreed);
    });
    timer.start(mayComeLater ? firstPicturePatience : displayPatience);
    const auto came = co_await m_first.wait(stop);
    if (!came)
        co_return std::unexpected(Failure(Cancelled{}));
    if (!*came)
        co_return std::unexpected(Failure(came->error()));
    co_return **came;
}

Task<> CastFeed::rest(std::stop_token stop) {
    setActive(false);
    {
        const PipeWireLoop::Lock lock(m_loop);
        m_shallRest = true;
        noteRest();
    }
    return waitFor(m_rests, restPatience, std::move(stop));
}

Task<> CastFeed::gone(std::stop_token stop) {
    // A picture that waits for the screen to change keeps a closed cast alive.
    QTimer nudge;
    nudge.setSingleShot(true);
    QObject::connect(&nudge, &QTimer::timeout, &nudge, [] { postToWorker(nudgeScreens); });
    nudge.start(nudgePatience);
    co_await waitFor(m_gone, gonePatience, std::move(stop));
}

PixelSize CastFeed::pictureSize() const {
    const std::scoped_lock lock(m_mutex);
    return m_layout.isEmpty() ? m_format.size : m_layout.size();
}

void CastFeed::setActive(bool active) {
    {
        const std::scoped_lock lock(m_mutex);
        m_isFresh = false;
        m_isLookedAt = false;
    }
    const PipeWireLoop::Lock lock(m_loop);
    m_isActive = active;
    m_stream->setActive(active);
    if (active)
        expectPicture();
}

void CastFeed::end(PlatformError why) {
    {
        const std::scoped_lock lock(m_mutex);
        if (!m_ended)
            m_ended = why;
    }
    m_changed.notify_all();
    m_first.resolve(std::unexpected(std::move(why)));
    m_rests.resolve(true);
    m_gone.resolve(true);
}

QImage CastFeed::pictureInUse() {
    const std::scoped_lock lock(m_mutex);
    Look look;
    // Of a cast that rests, the last picture may be old.
    if (m_isLookedAt && !m_ended)
        showCurrent(look);
    if (!look.pixels)
        return {};
    QImage picture(look.size.width, look.size.height, QImage::Format_RGB32);
    for (int y = 0; y < look.size.height; ++y)
        copyCastPixels(look.pixels + y * look.stride, look.step, look.format, picture.scanLine(y),
                       look.size.width);
    return picture;
}

void CastFeed::showCurrent(Look &look) {
    // The compositor may have taken it away meanwhile.
    if (m_current && (m_mapping.pixels() || m_mapping.open(m_current->buffer, m_current->format.size))) {
        look.size = m_current->layout.size();
        look.format = m_current->format.pixels;
        const CastLayout::Walk walk = m_current->layout.walk(m_mapping.stride());
        look.pixels = m_mapping.pixels() + walk.origin;
        look.step = walk.step;
        look.stride = walk.stride;
    }
}

CastFeed::Look CastFeed::look() {
    std::unique_lock lock(m_mutex);
    m_isBorrowed = false;
    Look look;
    look.hostTime = m_newsTime;
    look.isPointerChanged = std::exchange(m_isPointerChanged, false);
    look.pointer = m_pointer;
    m_hasNews = false;
    if (m_newest) {
        m_mapping.close();
        m_retired = std::exchange(m_current, std::exchange(m_newest, std::nullopt));
        look.damage = std::exchange(m_damage, {});
        look.isAllDamaged = std::exchange(m_isAllDamaged, false);
        m_isLookedAt = m_isFresh;
    }
    if (m_retired) {
        lock.unlock();
        const PipeWireLoop::Lock loopLock(m_loop);
        lock.lock();
        m_retired.reset();
    }
    showCurrent(look);
    m_isBorrowed = look.pixels != nullptr;
    return look;
}

void CastFeed::release() {
    {
        const std::scoped_lock lock(m_mutex);
        m_isBorrowed = false;
    }
    m_changed.notify_all();
}

bool CastFeed::waitUntil(std::unique_lock<std::mutex> &lock, std::optional<double> time,
                         bool (CastFeed::*done)()) {
    const auto isDone = [this, done] { return (this->*done)(); };
    if (time)
        return m_changed.wait_until(lock, timePoint(*time), isDone);
    m_changed.wait(lock, isDone);
    return true;
}

std::expected<FrameWait, PlatformError> CastFeed::wait(double notBefore, std::optional<double> deadline) {
    release();
    std::unique_lock lock(m_mutex);
    waitUntil(lock, notBefore, &CastFeed::isInterrupted);
    waitUntil(lock, deadline, &CastFeed::isWorthWaking);
    if (std::exchange(m_isInterrupted, false))
        return FrameWait::interrupted;
    if (m_hasNews)
        return FrameWait::changed;
    if (m_ended)
        return std::unexpected(*m_ended);
    return FrameWait::timedOut;
}

std::expected<void, PlatformError> CastFeed::waitForPicture(double patience) {
    std::unique_lock lock(m_mutex);
    const double start = hostNow();
    const auto isOver = [this] { return m_isInterrupted || m_isFresh || m_ended; };
    m_changed.wait_until(lock, timePoint(start + patience), isOver);
    m_changed.wait_until(lock, timePoint(start + pictureLimit),
                         [&] { return isOver() || m_newest || m_current; });
    if (m_ended)
        return std::unexpected(*m_ended);
    if (!m_newest && !m_current && m_format.size.isEmpty())
        return std::unexpected(noPicture());
    m_hasNews = true;
    return {};
}

void CastFeed::interrupt() {
    {
        const std::scoped_lock lock(m_mutex);
        m_isInterrupted = true;
    }
    m_changed.notify_all();
}

} // namespace vantrell
