// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Platform/Camera/PipeWireCameraFormats.h"

#include <spa/param/format-utils.h>
#include <spa/param/video/format.h>
#include <spa/param/video/raw.h>
#include <spa/pod/iter.h>
#include <spa/pod/parser.h>

#include <algorithm>
#include <array>
#include <set>
#include <span>
#include <utility>

namespace vantrell {

namespace {

struct KnownFormat {
    CameraFormat format;
    std::uint32_t subtype;
    /// Of raw pixels alone.
    std::uint32_t pixels;
};

constexpr std::array knownFormats{
    KnownFormat{CameraFormat::nv12, SPA_MEDIA_SUBTYPE_raw, SPA_VIDEO_FORMAT_NV12},
    KnownFormat{CameraFormat::i420, SPA_MEDIA_SUBTYPE_raw, SPA_VIDEO_FORMAT_I420},
    KnownFormat{CameraFormat::yuyv, SPA_MEDIA_SUBTYPE_raw, SPA_VIDEO_FORMAT_YUY2},
    KnownFormat{CameraFormat::mjpeg, SPA_MEDIA_SUBTYPE_mjpg, 0},
    KnownFormat{CameraFormat::h264, SPA_MEDIA_SUBTYPE_h264, 0},
};

/// A property's values: one, or a default before a list or a range.
template <typename Value>
struct Values {
    std::vector<Value> all;
    bool isRange = false;
};

template <typename Value>
Values<Value> valuesOf(const spa_pod &object, std::uint32_t key, std::uint32_t type) {
    const spa_pod_prop *property = spa_pod_find_prop(&object, nullptr, key);
    if (!property)
        return {};
    std::uint32_t count = 0;
    std::uint32_t choice = SPA_CHOICE_None;
    const spa_pod *values = spa_pod_get_values(&property->value, &count, &choice);
    if (SPA_POD_TYPE(values) != type || SPA_POD_BODY_SIZE(values) < sizeof(Value))
        return {};
    const auto *first = static_cast<const Value *>(SPA_POD_BODY_CONST(values));
    return {.all = std::vector<Value>(first, first + std::max<std::uint32_t>(count, 1)),
            .isRange = choice == SPA_CHOICE_Range || choice == SPA_CHOICE_Step};
}

double perSecond(const spa_fraction &rate) {
    return rate.denom ? double(rate.num) / rate.denom : 0;
}

double rateOf(const spa_pod &object) {
    const auto rates = valuesOf<spa_fraction>(object, SPA_FORMAT_VIDEO_framerate, SPA_TYPE_Fraction);
    if (rates.isRange && rates.all.size() >= 3)
        return std::clamp(30.0, perSecond(rates.all[1]),
                          std::max(perSecond(rates.all[1]), perSecond(rates.all[2])));
    std::vector<double> told;
    for (const spa_fraction &rate : rates.all)
        told.push_back(perSecond(rate));
    return bestCameraRate(told);
}

std::vector<PixelSize> sizesOf(const spa_pod &object) {
    const auto sizes = valuesOf<spa_rectangle>(object, SPA_FORMAT_VIDEO_size, SPA_TYPE_Rectangle);
    std::vector<PixelSize> told;
    if (sizes.isRange && sizes.all.size() >= 3) {
        const auto [low, high] = std::pair(sizes.all[1], sizes.all[2]);
        for (const PixelSize common : {PixelSize{1920, 1080}, PixelSize{1280, 720}, PixelSize{640, 480}})
            if (common.width >= int(low.width) && common.height >= int(low.height) &&
                common.width <= int(high.width) && common.height <= int(high.height))
                told.push_back(common);
    }
    for (const spa_rectangle &size : sizes.all)
        if (size.width > 0 && size.width <= 16384 && size.height > 0 && size.height <= 16384)
            told.push_back({int(size.width), int(size.height)});
    return told;
}

const spa_pod *build(spa_pod_builder &builder, const KnownFormat &known, const CameraMode *mode) {
    spa_pod_frame frame{};
    spa_pod_builder_push_object(&builder, &frame, SPA_TYPE_OBJECT_Format, SPA_PARAM_EnumFormat);
    spa_pod_builder_add(&builder, SPA_FORMAT_mediaType, SPA_POD_Id(SPA_MEDIA_TYPE_video),
                        SPA_FORMAT_mediaSubtype, SPA_POD_Id(known.subtype), 0);
    if (known.subtype == SPA_MEDIA_SUBTYPE_raw)
        spa_pod_builder_add(&builder, SPA_FORMAT_VIDEO_format, SPA_POD_Id(known.pixels), 0);
    const PixelSize wanted = mode ? mode->size : PixelSize{1280, 720};
    const spa_rectangle size{std::uint32_t(wanted.width), std::uint32_t(wanted.height)};
    const spa_rectangle atLeast{1, 1};
    const spa_rectangle atMost{8192, 8192};
    if (mode)
        spa_pod_builder_add(&builder, SPA_FORMAT_VIDEO_size, SPA_POD_Rectangle(&size), 0);
    else
        spa_pod_builder_add(&builder, SPA_FORMAT_VIDEO_size,
                            SPA_POD_CHOICE_RANGE_Rectangle(&size, &atLeast, &atMost), 0);
    // A rate that is not whole (29.97) is in the range as well.
    const spa_fraction rate{std::uint32_t((mode ? mode->framesPerSecond : 30) * 1000 + 0.5), 1000};
    const spa_fraction slowest{0, 1};
    const spa_fraction fastest{1000, 1};
    spa_pod_builder_add(&builder, SPA_FORMAT_VIDEO_framerate,
                        SPA_POD_CHOICE_RANGE_Fraction(&rate, &slowest, &fastest), 0);
    return static_cast<const spa_pod *>(spa_pod_builder_pop(&builder, &frame));
}

} // namespace

std::vector<CameraMode> cameraModesOf(const spa_pod &formats) {
    std::uint32_t type = 0;
    std::uint32_t subtype = 0;
    if (spa_format_parse(&formats, &type, &subtype) < 0 || type != SPA_MEDIA_TYPE_video)
        return {};
    const auto pixels = valuesOf<std::uint32_t>(formats, SPA_FORMAT_VIDEO_format, SPA_TYPE_Id);
    const double rate = rateOf(formats);
    std::vector<CameraMode> modes;
    for (const KnownFormat &known : knownFormats) {
        if (known.subtype != subtype ||
            (known.subtype == SPA_MEDIA_SUBTYPE_raw && std::ranges::count(pixels.all, known.pixels) == 0))
            continue;
        for (const PixelSize size : sizesOf(formats))
            modes.push_back({known.format, size, rate});
    }
    return modes;
}

std::optional<CameraMode> agreedCameraMode(const spa_pod &format) {
    const auto modes = cameraModesOf(format);
    return modes.empty() ? std::nullopt : std::optional(modes.front());
}

PipeWireCameraOffer::PipeWireCameraOffer(const CameraMode &wanted) : m_memory(8192) {
    spa_pod_builder builder = SPA_POD_BUILDER_INIT(m_memory.data(), std::uint32_t(m_memory.size()));
    const auto known = std::ranges::find(knownFormats, wanted.format, &KnownFormat::format);
    m_pods.push_back(build(builder, *known, &wanted));
    for (const KnownFormat &any : knownFormats)
        m_pods.push_back(build(builder, any, nullptr));
}

} // namespace vantrell
