// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "TestSupport/Camera/VirtualCamera.h"

#include "Platform/PipeWire/PipeWireConnection.h"
#include "Support/HostTime.h"
#include "TestSupport/Camera/CameraPainter.h"
#include "TestSupport/RunTask.h"

#include <algorithm>
#include <cstring>
#include <map>
#include <optional>
#include <stdexcept>
#include <utility>

#include <spa/param/buffers.h>
#include <spa/param/param.h>
#include <spa/param/video/format-utils.h>
#include <spa/pod/builder.h>

namespace vantrell::testing {

namespace {

constexpr std::int64_t second = 1'000'000'000;

spa_video_format rawFormat(CameraFormat format) {
    switch (format) {
    case CameraFormat::nv12:
        return SPA_VIDEO_FORMAT_NV12;
    case CameraFormat::i420:
        return SPA_VIDEO_FORMAT_I420;
    default:
        return SPA_VIDEO_FORMAT_YUY2;
    }
}

const spa_pod *describe(spa_pod_builder &builder, const VirtualCamera::Mode &mode) {
    const bool isRaw = mode.format != CameraFormat::mjpeg && mode.format != CameraFormat::h264;
    const spa_rectangle size{std::uint32_t(mode.size.width), std::uint32_t(mode.size.height)};
    const spa_fraction rate{std::uint32_t(mode.framesPerSecond), 1};
    spa_pod_frame frame{};
    spa_pod_builder_push_object(&builder, &frame, SPA_TYPE_OBJECT_Format, SPA_PARAM_EnumFormat);
    spa_pod_builder_add(&builder, SPA_FORMAT_mediaType, SPA_POD_Id(SPA_MEDIA_TYPE_video), 0);
    spa_pod_builder_add(&builder, SPA_FORMAT_mediaSubtype,
                        SPA_POD_Id(isRaw                                ? SPA_MEDIA_SUBTYPE_raw
                                   : mode.format == CameraFormat::mjpeg ? SPA_MEDIA_SUBTYPE_mjpg
                                                                        : SPA_MEDIA_SUBTYPE_h264),
                        0);
    if (isRaw)
        spa_pod_builder_add(&builder, SPA_FORMAT_VIDEO_format, SPA_POD_Id(rawFormat(mode.format)), 0);
    spa_pod_builder_add(&builder, SPA_FORMAT_VIDEO_size, SPA_POD_Rectangle(&size), SPA_FORMAT_VIDEO_framerate,
                        SPA_POD_Fraction(&rate), 0);
    return static_cast<const spa_pod *>(spa_pod_builder_pop(&builder, &frame));
}

std::optional<VirtualCamera::Mode> parse(const spa_pod &format) {
    spa_video_info info{};
    if (spa_format_parse(&format, &info.media_type, &info.media_subtype) < 0)
        return std::nullopt;
    VirtualCamera::Mode mode;
    spa_rectangle size{};
    spa_fraction rate{};
    if (info.media_subtype == SPA_MEDIA_SUBTYPE_raw) {
        spa_format_video_raw_parse(&format, &info.info.raw);
        size = info.info.raw.size;
        rate = info.info.raw.framerate;
        mode.format = info.info.raw.format == SPA_VIDEO_FORMAT_NV12   ? CameraFormat::nv12
                      : info.info.raw.format == SPA_VIDEO_FORMAT_I420 ? CameraFormat::i420
                                                                      : CameraFormat::yuyv;
    } else if (info.media_subtype == SPA_MEDIA_SUBTYPE_mjpg) {
        spa_format_video_mjpg_parse(&format, &info.info.mjpg);
        size = info.info.mjpg.size;
        rate = info.info.mjpg.framerate;
        mode.format = CameraFormat::mjpeg;
    } else {
        spa_format_video_h264_parse(&format, &info.info.h264);
        size = info.info.h264.size;
        rate = info.info.h264.framerate;
        mode.format = CameraFormat::h264;
    }
    mode.size = {int(size.width), int(size.height)};
    mode.framesPerSecond = rate.denom ? int(rate.num / rate.denom) : 30;
    return mode;
}

} // namespace

struct VirtualCamera::Implementation {
    explicit Implementation(Options wanted) : options(std::move(wanted)), modes(options.modes) {}
    ~Implementation() { unplug(); }

    void plug();
    void unplug();
    void offer();
    void agree(const spa_pod &format);
    void streamStateChanged(pw_stream_state state);
    void send();
    void fill(spa_buffer &buffer);
    void setTimer();

    const Options options;
    PipeWireLoop loop{"virtual camera"};
    // From here on under the loop's lock.
    std::vector<Mode> modes;
    Mode mode;
    std::unique_ptr<PipeWireConnection> connection;
    PipeWireStreamPtr stream;
    PipeWireListener listener;
    spa_source *timer = nullptr;
    std::unique_ptr<CameraPainter> painter;
    std::vector<std::uint8_t> bytes;
    bool isStreaming = false;
    bool isHanging = false;
    int sent = 0;
    std::map<std::uint32_t, double> times;
};

void VirtualCamera::Implementation::plug() {
    const PipeWireLoop::Lock lock(loop);
    auto opened = PipeWireConnection::open(loop, std::nullopt, [] {});
    if (!opened)
        throw std::runtime_error("no server for a camera: " + opened.error().message);
    connection = std::move(*opened);
    const std::string priority = "1000";
    stream.reset(pw_stream_new(connection->core(), options.name.c_str(),
                               pw_properties_new(PW_KEY_MEDIA_CLASS, "Video/Source", PW_KEY_MEDIA_ROLE,
                                                 "Camera", PW_KEY_NODE_NAME, options.name.c_str(),
                                                 PW_KEY_NODE_DESCRIPTION, options.description.c_str(),
                                                 PW_KEY_PRIORITY_SESSION, priority.c_str(), nullptr)));
    static const pw_stream_events events{
        .version = PW_VERSION_STREAM_EVENTS,
        .state_changed = [](void *self, pw_stream_state, pw_stream_state state,
                            const char *) { static_cast<Implementation *>(self)->streamStateChanged(state); },
        .param_changed =
            [](void *self, std::uint32_t id, const spa_pod *parameter) {
                if (id == SPA_PARAM_Format && parameter)
                    static_cast<Implementation *>(self)->agree(*parameter);
            },
        .process = [](void *self) { static_cast<Implementation *>(self)->send(); },
    };
    pw_stream_add_listener(stream.get(), listener.hook(), &events, this);
    timer = pw_loop_add_timer(
        loop.loop(),
        [](void *self, std::uint64_t) {
            auto *camera = static_cast<Implementation *>(self);
            if (!camera->isHanging)
                pw_stream_trigger_process(camera->stream.get());
        },
        this);
    offer();
}

void VirtualCamera::Implementation::unplug() {
    const PipeWireLoop::Lock lock(loop);
    isStreaming = false;
    if (timer)
        pw_loop_destroy_source(loop.loop(), std::exchange(timer, nullptr));
    listener.leave();
    stream.reset();
    connection.reset();
}

void VirtualCamera::Implementation::offer() {
    std::vector<std::uint8_t> memory(8192);
    spa_pod_builder builder = SPA_POD_BUILDER_INIT(memory.data(), std::uint32_t(memory.size()));
    std::vector<const spa_pod *> formats;
    for (const Mode &offered : modes)
        formats.push_back(describe(builder, offered));
    if (pw_stream_get_state(stream.get(), nullptr) == PW_STREAM_STATE_UNCONNECTED)
        pw_stream_connect(stream.get(), PW_DIRECTION_OUTPUT, PW_ID_ANY,
                          pw_stream_flags(PW_STREAM_FLAG_DRIVER | PW_STREAM_FLAG_MAP_BUFFERS), formats.data(),
                          std::uint32_t(formats.size()));
    else
        pw_stream_update_params(stream.get(), formats.data(), std::uint32_t(formats.size()));
}

void VirtualCamera::Implementation::agree(const spa_pod &format) {
    const auto parsed = parse(format);
    if (!parsed)
        return;
    mode = *parsed;
    painter = std::make_unique<CameraPainter>(mode.format, mode.size);
    std::array<std::uint8_t, 1024> memory{};
    spa_pod_builder builder = SPA_POD_BUILDER_INIT(memory.data(), std::uint32_t(memory.size()));
    const int bufferSize = mode.size.width * mode.size.height * 2;
    const spa_pod *parameters[2];
    parameters[0] = static_cast<const spa_pod *>(spa_pod_builder_add_object(
        &builder, SPA_TYPE_OBJECT_ParamBuffers, SPA_PARAM_Buffers, SPA_PARAM_BUFFERS_buffers,
        SPA_POD_CHOICE_RANGE_Int(4, 2, 8), SPA_PARAM_BUFFERS_blocks, SPA_POD_Int(1), SPA_PARAM_BUFFERS_size,
        SPA_POD_Int(bufferSize), SPA_PARAM_BUFFERS_dataType,
        SPA_POD_CHOICE_FLAGS_Int((1 << SPA_DATA_MemFd) | (1 << SPA_DATA_MemPtr))));
    parameters[1] = static_cast<const spa_pod *>(spa_pod_builder_add_object(
        &builder, SPA_TYPE_OBJECT_ParamMeta, SPA_PARAM_Meta, SPA_PARAM_META_type, SPA_POD_Id(SPA_META_Header),
        SPA_PARAM_META_size, SPA_POD_Int(int(sizeof(spa_meta_header)))));
    pw_stream_update_params(stream.get(), parameters, options.tellsTime ? 2 : 1);
    setTimer();
}

void VirtualCamera::Implementation::streamStateChanged(pw_stream_state state) {
    isStreaming = state == PW_STREAM_STATE_STREAMING;
    setTimer();
}

void VirtualCamera::Implementation::setTimer() {
    timespec interval{.tv_sec = 0, .tv_nsec = isStreaming ? second / mode.framesPerSecond : 0};
    if (mode.framesPerSecond == 1 && isStreaming)
        interval = {.tv_sec = 1, .tv_nsec = 0};
    pw_loop_update_timer(loop.loop(), timer, &interval, &interval, false);
}

void VirtualCamera::Implementation::send() {
    if (!stream || !painter)
        return;
    pw_buffer *buffer = pw_stream_dequeue_buffer(stream.get());
    if (!buffer)
        return;
    if (buffer->buffer->datas[0].data)
        fill(*buffer->buffer);
    pw_stream_queue_buffer(stream.get(), buffer);
}

void VirtualCamera::Implementation::fill(spa_buffer &buffer) {
    const double now = hostNow();
    const std::uint32_t number = options.numberAt ? options.numberAt(now) : std::uint32_t(sent);
    const auto painted = options.paint ? options.paint(mode, number)
                                       : painter->paint(number, options.isFlash && options.isFlash(number));
    bytes.assign(painted.begin(), painted.end());
    if (options.spoil)
        options.spoil(number, bytes);
    const std::size_t size = std::min(bytes.size(), std::size_t(buffer.datas[0].maxsize));
    std::memcpy(buffer.datas[0].data, bytes.data(), size);
    const bool isRaw = mode.format != CameraFormat::mjpeg && mode.format != CameraFormat::h264;
    const int stride = mode.size.width * (mode.format == CameraFormat::yuyv ? 2 : 1);
    *buffer.datas[0].chunk = {.offset = 0,
                              .size = std::uint32_t(size),
                              .stride = isRaw && options.tellsTime ? stride : 0,
                              .flags = 0};
    if (auto *header = static_cast<spa_meta_header *>(
            spa_buffer_find_meta_data(&buffer, SPA_META_Header, sizeof(spa_meta_header)))) {
        const auto taken = std::int64_t(now * double(second));
        *header = {.flags = 0,
                   .offset = 0,
                   .pts = options.falsifyTime ? options.falsifyTime(number, taken) : taken,
                   .dts_offset = 0,
                   .seq = std::uint64_t(sent)};
    }
    times.try_emplace(number, now);
    ++sent;
}

VirtualCamera::VirtualCamera(Options options)
    : m_implementation(std::make_unique<Implementation>(std::move(options))) {
    plug();
}

VirtualCamera::~VirtualCamera() = default;

void VirtualCamera::unplug() {
    m_implementation->unplug();
}

void VirtualCamera::plug() {
    m_implementation->plug();
    const bool isThere = eventually([this] {
        const PipeWireLoop::Lock lock(m_implementation->loop);
        const auto state = pw_stream_get_state(m_implementation->stream.get(), nullptr);
        return state == PW_STREAM_STATE_PAUSED || state == PW_STREAM_STATE_STREAMING;
    });
    if (!isThere)
        throw std::runtime_error("the virtual camera is not accepted");
}

void VirtualCamera::hang() {
    const PipeWireLoop::Lock lock(m_implementation->loop);
    m_implementation->isHanging = true;
}

void VirtualCamera::goOn() {
    const PipeWireLoop::Lock lock(m_implementation->loop);
    m_implementation->isHanging = false;
}

void VirtualCamera::changeMode(Mode mode) {
    const PipeWireLoop::Lock lock(m_implementation->loop);
    m_implementation->modes = {mode};
    m_implementation->offer();
}

bool VirtualCamera::isWatched() const {
    const PipeWireLoop::Lock lock(m_implementation->loop);
    return m_implementation->isStreaming;
}

VirtualCamera::Mode VirtualCamera::mode() const {
    const PipeWireLoop::Lock lock(m_implementation->loop);
    return m_implementation->mode;
}

int VirtualCamera::sent() const {
    const PipeWireLoop::Lock lock(m_implementation->loop);
    return m_implementation->sent;
}

double VirtualCamera::hostTimeOf(std::uint32_t number) const {
    const PipeWireLoop::Lock lock(m_implementation->loop);
    const auto time = m_implementation->times.find(number);
    return time == m_implementation->times.end() ? 0 : time->second;
}

} // namespace vantrell::testing
