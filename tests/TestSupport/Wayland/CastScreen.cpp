// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "TestSupport/Wayland/CastScreen.h"

#include "Support/HostTime.h"
#include "TestSupport/FrameCode.h"
#include "TestSupport/RunTask.h"

#include <spa/param/buffers.h>
#include <spa/param/video/format-utils.h>
#include <spa/pod/builder.h>

#include <array>
#include <atomic>
#include <cmath>
#include <cstring>
#include <stdexcept>
#include <utility>

namespace vantrell::testing {

namespace {

constexpr int pointerSide = 16;
/// Room for as large a pointer as GNOME insists on.
constexpr std::size_t pointerRoomSide = 384;
constexpr std::size_t pointerBytes =
    sizeof(spa_meta_cursor) + sizeof(spa_meta_bitmap) + pointerRoomSide * pointerRoomSide * 4;
constexpr std::uint32_t outside = 0xff0000;

const spa_pod *castPod(void *built) {
    return static_cast<const spa_pod *>(built);
}

} // namespace

struct CastScreen::Implementation {
    PipeWireLoop loop{"cast-screen"};
    std::unique_ptr<PipeWireConnection> connection;
    PipeWireStreamPtr stream;
    PipeWireListener listener;
    Options options;
    std::atomic<bool> isStreaming = false;

    // With the loop's lock.
    std::uint32_t number = 0;
    bool isPictureDue = true;
    bool isPointerDue = false;
    /// Tries again, as a compositor does with its next frame.
    std::unique_ptr<PipeWireTimer> retry;
    bool isAllDue = true;
    std::optional<PixelRect> pointer;
    bool isPointerToldWhole = false;
    std::map<std::uint32_t, double> sent;

    void connect();
    void offerFormat(bool again);
    void agree();
    void stateChanged(pw_stream_state state);
    void send();
    void paint(std::uint8_t *pixels) const;
    void tellPointer(spa_buffer &buffer);
    PixelRect picture() const {
        return options.crop.value_or(PixelRect{0, 0, options.buffer.width, options.buffer.height});
    }
    void trigger() {
        if (!isStreaming || !(isPictureDue || isPointerDue))
            return;
        send();
        retry->start(std::chrono::milliseconds(16));
    }
};

void CastScreen::Implementation::connect() {
    static const pw_stream_events events{
        .version = PW_VERSION_STREAM_EVENTS,
        .state_changed = [](void *self, pw_stream_state, pw_stream_state state,
                            const char *) { static_cast<Implementation *>(self)->stateChanged(state); },
        .param_changed =
            [](void *self, std::uint32_t id, const spa_pod *parameter) {
                if (id == SPA_PARAM_Format && parameter)
                    static_cast<Implementation *>(self)->agree();
            },
    };
    const PipeWireLoop::Lock lock(loop);
    auto opened = PipeWireConnection::open(loop, std::nullopt, [] {});
    if (!opened)
        throw std::runtime_error(opened.error().message);
    connection = std::move(*opened);
    retry = std::make_unique<PipeWireTimer>(loop, [this] { trigger(); });
    stream.reset(pw_stream_new(connection->core(), "cast-screen",
                               pw_properties_new(PW_KEY_MEDIA_CLASS, "Stream/Output/Video", PW_KEY_NODE_NAME,
                                                 "cast-screen", PW_KEY_MEDIA_ROLE, "Screen", nullptr)));
    pw_stream_add_listener(stream.get(), listener.hook(), &events, this);
    offerFormat(false);
}

void CastScreen::Implementation::offerFormat(bool again) {
    std::array<std::uint8_t, 1024> memory{};
    spa_pod_builder builder = SPA_POD_BUILDER_INIT(memory.data(), std::uint32_t(memory.size()));
    const spa_rectangle size{std::uint32_t(options.buffer.width), std::uint32_t(options.buffer.height)};
    const spa_fraction variable{0, 1};
    const spa_fraction fastest{60, 1};
    const spa_fraction slowest{1, 1};
    const spa_pod *format = castPod(spa_pod_builder_add_object(
        &builder, SPA_TYPE_OBJECT_Format, SPA_PARAM_EnumFormat, SPA_FORMAT_mediaType,
        SPA_POD_Id(SPA_MEDIA_TYPE_video), SPA_FORMAT_mediaSubtype, SPA_POD_Id(SPA_MEDIA_SUBTYPE_raw),
        SPA_FORMAT_VIDEO_format, SPA_POD_Id(options.format), SPA_FORMAT_VIDEO_size, SPA_POD_Rectangle(&size),
        SPA_FORMAT_VIDEO_framerate, SPA_POD_Fraction(&variable), SPA_FORMAT_VIDEO_maxFramerate,
        SPA_POD_CHOICE_RANGE_Fraction(&fastest, &slowest, &fastest)));
    if (again)
        pw_stream_update_params(stream.get(), &format, 1);
    else
        pw_stream_connect(stream.get(), PW_DIRECTION_OUTPUT, PW_ID_ANY,
                          pw_stream_flags(PW_STREAM_FLAG_DRIVER | PW_STREAM_FLAG_MAP_BUFFERS), &format, 1);
}

void CastScreen::Implementation::agree() {
    std::array<std::uint8_t, 1024> memory{};
    spa_pod_builder builder = SPA_POD_BUILDER_INIT(memory.data(), std::uint32_t(memory.size()));
    const int stride = options.buffer.width * 4;
    std::vector<const spa_pod *> parameters{castPod(spa_pod_builder_add_object(
        &builder, SPA_TYPE_OBJECT_ParamBuffers, SPA_PARAM_Buffers, SPA_PARAM_BUFFERS_buffers,
        SPA_POD_CHOICE_RANGE_Int(4, 2, 8), SPA_PARAM_BUFFERS_blocks, SPA_POD_Int(1), SPA_PARAM_BUFFERS_size,
        SPA_POD_Int(stride * options.buffer.height), SPA_PARAM_BUFFERS_stride, SPA_POD_Int(stride),
        SPA_PARAM_BUFFERS_dataType, SPA_POD_CHOICE_FLAGS_Int(1 << SPA_DATA_MemFd)))};
    const auto offer = [&](std::uint32_t type, std::size_t size) {
        parameters.push_back(castPod(spa_pod_builder_add_object(
            &builder, SPA_TYPE_OBJECT_ParamMeta, SPA_PARAM_Meta, SPA_PARAM_META_type, SPA_POD_Id(type),
            SPA_PARAM_META_size, SPA_POD_Int(int(size)))));
    };
    if (options.tellsTime)
        offer(SPA_META_Header, sizeof(spa_meta_header));
    if (options.crop)
        offer(SPA_META_VideoCrop, sizeof(spa_meta_region));
    if (options.tellsDamage)
        offer(SPA_META_VideoDamage, 4 * sizeof(spa_meta_region));
    offer(SPA_META_Cursor, pointerBytes);
    pw_stream_update_params(stream.get(), parameters.data(), std::uint32_t(parameters.size()));
}

void CastScreen::Implementation::stateChanged(pw_stream_state state) {
    isStreaming = state == PW_STREAM_STATE_STREAMING;
    isPictureDue = isAllDue = true;
    isPointerToldWhole = false;
    // With the next frame, as compositors do: who takes the pictures starts at the same moment.
    if (isStreaming)
        retry->start(std::chrono::milliseconds(16));
}

void CastScreen::Implementation::send() {
    pw_buffer *taken = pw_stream_dequeue_buffer(stream.get());
    if (!taken)
        return;
    isPointerDue = false;
    spa_buffer &buffer = *taken->buffer;
    spa_data &data = buffer.datas[0];
    const bool hasPicture = std::exchange(isPictureDue, false);
    const double now = hostNow();
    data.chunk->offset = 0;
    data.chunk->stride = options.buffer.width * 4;
    data.chunk->size = hasPicture ? std::uint32_t(data.chunk->stride * options.buffer.height) : 0;
    data.chunk->flags = hasPicture ? SPA_CHUNK_FLAG_NONE : SPA_CHUNK_FLAG_CORRUPTED;
    if (hasPicture) {
        paint(static_cast<std::uint8_t *>(data.data));
        sent.emplace(number, now);
    }
    const auto find = [&]<typename Meta>(std::uint32_t type, Meta *) {
        return static_cast<Meta *>(spa_buffer_find_meta_data(&buffer, type, sizeof(Meta)));
    };
    if (auto *header = find(SPA_META_Header, static_cast<spa_meta_header *>(nullptr)))
        *header = {.flags = 0, .offset = 0, .pts = std::llround(now * 1e9), .dts_offset = 0, .seq = number};
    const auto region = [](const PixelRect &rect) {
        return spa_region{{rect.x, rect.y}, {std::uint32_t(rect.width), std::uint32_t(rect.height)}};
    };
    if (auto *crop = find(SPA_META_VideoCrop, static_cast<spa_meta_region *>(nullptr)))
        crop->region = region(picture());
    if (auto *damage = find(SPA_META_VideoDamage, static_cast<spa_meta_region *>(nullptr))) {
        const PixelRect shown = picture();
        damage[0].region =
            std::exchange(isAllDue, false)
                ? region(shown)
                : region({shown.x + numberX, shown.y + numberY, framecode::width, framecode::height});
        damage[1].region = {};
    }
    tellPointer(buffer);
    pw_stream_queue_buffer(stream.get(), taken);
}

void CastScreen::Implementation::paint(std::uint8_t *pixels) const {
    const PixelRect shown = picture();
    const bool isSwapped = options.format == SPA_VIDEO_FORMAT_RGBx || options.format == SPA_VIDEO_FORMAT_RGBA;
    const auto coded = [&](std::uint32_t rgb) {
        return isSwapped ? (rgb & 0xff) << 16 | (rgb & 0xff00) | rgb >> 16 : rgb;
    };
    auto *row = reinterpret_cast<std::uint32_t *>(pixels);
    for (int y = 0; y < options.buffer.height; ++y, row += options.buffer.width) {
        const bool isRow = y >= shown.y && y < shown.bottom();
        std::fill_n(row, options.buffer.width, coded(outside));
        if (isRow)
            std::fill_n(row + shown.x, shown.width, coded(ground));
    }
    const std::ptrdiff_t stride = std::ptrdiff_t(options.buffer.width) * 4;
    framecode::draw(number, pixels + (shown.y + numberY) * stride + std::ptrdiff_t(shown.x + numberX) * 4,
                    stride);
}

void CastScreen::Implementation::tellPointer(spa_buffer &buffer) {
    const spa_meta *meta = spa_buffer_find_meta(&buffer, SPA_META_Cursor);
    if (!meta || meta->size < pointerBytes)
        return;
    auto *cursor = static_cast<spa_meta_cursor *>(meta->data);
    *cursor = {};
    if (!pointer)
        return;
    cursor->id = 1;
    cursor->position = {pointer->x, pointer->y};
    cursor->hotspot = {pointerSide / 2, pointerSide / 2};
    if (std::exchange(isPointerToldWhole, true))
        return;
    cursor->bitmap_offset = sizeof *cursor;
    auto *bitmap = reinterpret_cast<spa_meta_bitmap *>(cursor + 1);
    *bitmap = {.format = SPA_VIDEO_FORMAT_RGBA,
               .size = {pointerSide, pointerSide},
               .stride = pointerSide * 4,
               .offset = sizeof *bitmap};
    auto *shape = reinterpret_cast<std::uint32_t *>(bitmap + 1);
    std::fill_n(shape, pointerSide * pointerSide, 0xff000000u);
}

CastScreen::CastScreen(const Options &options) : m_implementation(std::make_unique<Implementation>()) {
    m_implementation->options = options;
    m_implementation->connect();
    if (!eventually([this] { return node() != SPA_ID_INVALID; }))
        throw std::runtime_error("PipeWire takes no stream");
}

CastScreen::~CastScreen() {
    close();
    const PipeWireLoop::Lock lock(m_implementation->loop);
    m_implementation->retry.reset();
    m_implementation->connection.reset();
}

std::uint32_t CastScreen::node() const {
    const PipeWireLoop::Lock lock(m_implementation->loop);
    return pw_stream_get_node_id(m_implementation->stream.get());
}

bool CastScreen::isWatched() const {
    return m_implementation->isStreaming;
}

void CastScreen::show(std::uint32_t number) {
    const PipeWireLoop::Lock lock(m_implementation->loop);
    m_implementation->number = number;
    m_implementation->isPictureDue = true;
    m_implementation->trigger();
}

void CastScreen::movePointer(int x, int y) {
    const PipeWireLoop::Lock lock(m_implementation->loop);
    m_implementation->pointer = PixelRect{x, y, pointerSide, pointerSide};
    m_implementation->isPointerDue = true;
    m_implementation->trigger();
}

void CastScreen::hidePointer() {
    const PipeWireLoop::Lock lock(m_implementation->loop);
    m_implementation->pointer.reset();
    m_implementation->isPointerDue = true;
    m_implementation->trigger();
}

void CastScreen::resize(const Options &options) {
    const PipeWireLoop::Lock lock(m_implementation->loop);
    m_implementation->options = options;
    m_implementation->isPictureDue = m_implementation->isAllDue = true;
    m_implementation->offerFormat(true);
}

void CastScreen::close() {
    const PipeWireLoop::Lock lock(m_implementation->loop);
    m_implementation->isStreaming = false;
    m_implementation->listener.leave();
    m_implementation->stream.reset();
}

double CastScreen::sentAt(std::uint32_t number) const {
    const PipeWireLoop::Lock lock(m_implementation->loop);
    const auto found = m_implementation->sent.find(number);
    return found == m_implementation->sent.end() ? 0 : found->second;
}

} // namespace vantrell::testing
