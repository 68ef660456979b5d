// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Platform/Wayland/CastFormat.h"

#include <spa/param/format.h>
#include <spa/param/param.h>
#include <spa/param/video/format-utils.h>
#include <spa/pod/builder.h>

#include <array>

namespace vantrell {

namespace {

constexpr std::size_t podWords = 128;
constexpr std::uint32_t largestSide = 16384;
/// Above what a recording takes, so that a compositor of 60 Hz need not skip any.
constexpr std::uint32_t mostFramesPerSecond = 120;
/// Rows of pixels, as programs see them (DRM_FORMAT_MOD_LINEAR).
constexpr std::int64_t linearModifier = 0;

std::vector<std::uint64_t> buildFormat(bool linearDmaBuf) {
    std::vector<std::uint64_t> memory(podWords);
    spa_pod_builder builder =
        SPA_POD_BUILDER_INIT(memory.data(), std::uint32_t(memory.size() * sizeof memory[0]));
    spa_pod_frame object{};
    spa_pod_builder_push_object(&builder, &object, SPA_TYPE_OBJECT_Format, SPA_PARAM_EnumFormat);
    const spa_rectangle usual{1920, 1080};
    const spa_rectangle smallest{1, 1};
    const spa_rectangle largest{largestSide, largestSide};
    const spa_fraction never{0, 1};
    const spa_fraction slowest{1, 1};
    const spa_fraction fastest{mostFramesPerSecond, 1};
    const spa_fraction any{1000, 1};
    spa_pod_builder_add(&builder, SPA_FORMAT_mediaType, SPA_POD_Id(SPA_MEDIA_TYPE_video),
                        SPA_FORMAT_mediaSubtype, SPA_POD_Id(SPA_MEDIA_SUBTYPE_raw), SPA_FORMAT_VIDEO_format,
                        SPA_POD_CHOICE_ENUM_Id(5, SPA_VIDEO_FORMAT_BGRx, SPA_VIDEO_FORMAT_BGRx,
                                               SPA_VIDEO_FORMAT_BGRA, SPA_VIDEO_FORMAT_RGBx,
                                               SPA_VIDEO_FORMAT_RGBA),
                        0);
    if (linearDmaBuf) {
        spa_pod_builder_prop(&builder, SPA_FORMAT_VIDEO_modifier, SPA_POD_PROP_FLAG_MANDATORY);
        spa_pod_builder_long(&builder, linearModifier);
    }
    spa_pod_builder_add(
        &builder, SPA_FORMAT_VIDEO_size, SPA_POD_CHOICE_RANGE_Rectangle(&usual, &smallest, &largest),
        SPA_FORMAT_VIDEO_framerate, SPA_POD_CHOICE_RANGE_Fraction(&never, &never, &any),
        SPA_FORMAT_VIDEO_maxFramerate, SPA_POD_CHOICE_RANGE_Fraction(&fastest, &slowest, &fastest), 0);
    spa_pod_builder_pop(&builder, &object);
    return memory;
}

} // namespace

CastFormatOffer::CastFormatOffer(bool dmaBuf) {
    m_memory.push_back(buildFormat(false));
    if (dmaBuf)
        m_memory.push_back(buildFormat(true));
}

std::vector<const spa_pod *> CastFormatOffer::pods() const {
    std::vector<const spa_pod *> pods;
    for (const auto &memory : m_memory)
        pods.push_back(reinterpret_cast<const spa_pod *>(memory.data()));
    return pods;
}

std::optional<CastFormat> CastFormat::parse(const spa_pod &pod) {
    spa_video_info_raw info{};
    if (spa_format_video_raw_parse(&pod, &info) < 0)
        return std::nullopt;
    CastFormat format;
    format.size = {int(info.size.width), int(info.size.height)};
    format.hasModifier = spa_pod_find_prop(&pod, nullptr, SPA_FORMAT_VIDEO_modifier) != nullptr;
    switch (info.format) {
    case SPA_VIDEO_FORMAT_BGRx:
    case SPA_VIDEO_FORMAT_BGRA:
        format.pixels = PixelFormat::bgrx;
        return format;
    case SPA_VIDEO_FORMAT_RGBx:
    case SPA_VIDEO_FORMAT_RGBA:
        format.pixels = PixelFormat::rgbx;
        return format;
    default:
        return std::nullopt;
    }
}

} // namespace vantrell
