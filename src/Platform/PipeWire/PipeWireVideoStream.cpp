// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Platform/PipeWire/PipeWireVideoStream.h"

#include <spa/param/buffers.h>
#include <spa/param/param.h>
#include <spa/pod/builder.h>

#include <array>
#include <utility>
#include <vector>

namespace vantrell {

namespace {

pw_properties *propertiesOf(const PipeWireVideoStream::Target &target) {
    pw_properties *properties = pw_properties_new(PW_KEY_MEDIA_TYPE, "Video", PW_KEY_MEDIA_CATEGORY,
                                                  "Capture", PW_KEY_MEDIA_ROLE, target.role.c_str(), nullptr);
    if (!target.object.empty())
        pw_properties_set(properties, PW_KEY_TARGET_OBJECT, target.object.c_str());
    return properties;
}

const spa_pod *asPod(void *built) {
    return static_cast<const spa_pod *>(built);
}

int cursorBytes(int pixels) {
    return int(sizeof(spa_meta_cursor) + sizeof(spa_meta_bitmap)) + pixels * pixels * 4;
}

} // namespace

PipeWireVideoStream::PipeWireVideoStream(const PipeWireConnection &connection, const Target &target,
                                         Handlers handlers)
    : m_nodeId(target.nodeId), m_handlers(std::move(handlers)),
      m_stream(pw_stream_new(connection.core(), "Vantrell Capture", propertiesOf(target))) {
    static const pw_stream_events events{
        .version = PW_VERSION_STREAM_EVENTS,
        .state_changed =
            [](void *self, pw_stream_state, pw_stream_state state, const char *error) {
                if (const auto &told = static_cast<PipeWireVideoStream *>(self)->m_handlers.stateChanged)
                    told(state, error);
            },
        .param_changed =
            [](void *self, std::uint32_t id, const spa_pod *parameter) {
                if (id == SPA_PARAM_Format && parameter)
                    static_cast<PipeWireVideoStream *>(self)->m_handlers.formatChanged(*parameter);
            },
        .remove_buffer =
            [](void *self, pw_buffer *buffer) {
                if (const auto &told = static_cast<PipeWireVideoStream *>(self)->m_handlers.bufferGoes)
                    told(buffer);
            },
        .process = [](void *self) { static_cast<PipeWireVideoStream *>(self)->m_handlers.arrived(); },
    };
    pw_stream_add_listener(m_stream.get(), m_listener.hook(), &events, this);
}

bool PipeWireVideoStream::connect(std::span<const spa_pod *const> formats) {
    std::vector<const spa_pod *> offered(formats.begin(), formats.end());
    constexpr auto flags = pw_stream_flags(PW_STREAM_FLAG_AUTOCONNECT | PW_STREAM_FLAG_MAP_BUFFERS |
                                           PW_STREAM_FLAG_DONT_RECONNECT);
    return pw_stream_connect(m_stream.get(), PW_DIRECTION_INPUT, m_nodeId, flags, offered.data(),
                             std::uint32_t(offered.size())) >= 0;
}

void PipeWireVideoStream::offer(std::span<const spa_pod *const> formats) {
    std::vector<const spa_pod *> offered(formats.begin(), formats.end());
    pw_stream_update_params(m_stream.get(), offered.data(), std::uint32_t(offered.size()));
}

void PipeWireVideoStream::agree(const PipeWireBufferWishes &wishes) {
    std::array<std::uint8_t, 2048> memory{};
    spa_pod_builder builder = SPA_POD_BUILDER_INIT(memory.data(), std::uint32_t(memory.size()));
    std::vector<const spa_pod *> parameters;
    parameters.push_back(asPod(spa_pod_builder_add_object(
        &builder, SPA_TYPE_OBJECT_ParamBuffers, SPA_PARAM_Buffers, SPA_PARAM_BUFFERS_buffers,
        SPA_POD_CHOICE_RANGE_Int(wishes.count, 2, 16), SPA_PARAM_BUFFERS_dataType,
        SPA_POD_CHOICE_FLAGS_Int(int(wishes.memory)))));
    const auto wantMeta = [&](std::uint32_t type, int size, int smallest, int largest) {
        parameters.push_back(asPod(spa_pod_builder_add_object(
            &builder, SPA_TYPE_OBJECT_ParamMeta, SPA_PARAM_Meta, SPA_PARAM_META_type, SPA_POD_Id(type),
            SPA_PARAM_META_size, SPA_POD_CHOICE_RANGE_Int(size, smallest, largest))));
    };
    const auto wantOneMeta = [&](std::uint32_t type, int size) {
        parameters.push_back(asPod(spa_pod_builder_add_object(
            &builder, SPA_TYPE_OBJECT_ParamMeta, SPA_PARAM_Meta, SPA_PARAM_META_type, SPA_POD_Id(type),
            SPA_PARAM_META_size, SPA_POD_Int(size))));
    };
    if (wishes.header)
        wantOneMeta(SPA_META_Header, sizeof(spa_meta_header));
    if (wishes.crop)
        wantOneMeta(SPA_META_VideoCrop, sizeof(spa_meta_region));
    if (wishes.transform)
        wantOneMeta(SPA_META_VideoTransform, sizeof(spa_meta_videotransform));
    if (wishes.damageRegions > 0) {
        const int all = wishes.damageRegions * int(sizeof(spa_meta_region));
        wantMeta(SPA_META_VideoDamage, all, sizeof(spa_meta_region), all);
    }
    if (wishes.cursorPixels > 0)
        wantMeta(SPA_META_Cursor, cursorBytes(64), cursorBytes(1), cursorBytes(wishes.cursorPixels));
    pw_stream_update_params(m_stream.get(), parameters.data(), std::uint32_t(parameters.size()));
}

std::optional<PipeWireBuffer> PipeWireVideoStream::take() {
    pw_buffer *buffer = pw_stream_dequeue_buffer(m_stream.get());
    return buffer ? std::optional<PipeWireBuffer>(std::in_place, m_stream.get(), buffer) : std::nullopt;
}

std::optional<PipeWireBuffer>
PipeWireVideoStream::takeNewest(const std::function<void(const PipeWireBuffer &)> &skipped) {
    std::optional<PipeWireBuffer> newest = take();
    while (newest) {
        std::optional<PipeWireBuffer> next = take();
        if (!next)
            break;
        if (skipped)
            skipped(*newest);
        newest = std::move(next);
    }
    return newest;
}

} // namespace vantrell
