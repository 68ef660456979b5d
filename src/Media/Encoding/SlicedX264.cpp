// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Media/Encoding/SlicedX264.h"

#include "Media/Encoding/PreparedX264.h"
#include "Platform/ScreenError.h"
#include "Support/HostTime.h"
#include "Support/Log.h"

#include <algorithm>
#include <thread>
#include <utility>

namespace vantrell {

namespace {

constexpr int mostSlices = 4;

/// A picture may be cut into slices that are encoded at the same time, which costs 3 % more in all and up to
/// a tenth more bytes.
int slicesHere() {
    return std::clamp(int(std::thread::hardware_concurrency()), 1, mostSlices);
}

} // namespace

SlicedX264::SlicedX264(PixelSize size, std::unique_ptr<X264Instance> instance)
    : m_size(size), m_instance(std::move(instance)) {
    if (!m_instance->options().isFast && slicesHere() > 1)
        m_load.emplace(slicesHere());
}

SlicedX264::~SlicedX264() = default;

std::expected<std::unique_ptr<SlicedX264>, PlatformError> SlicedX264::create(PixelSize picture,
                                                                             bool isLarge) {
    const PixelSize size{(picture.width + 1) / 2 * 2, (picture.height + 1) / 2 * 2};
    auto instance = X264Instance::open(
        {.size = size, .slices = isLarge ? slicesHere() : 1, .isFast = isLarge, .savesInPart = !isLarge});
    if (!instance)
        return std::unexpected(
            screenError(ScreenErrorCode::encoderFailed, "The video encoder could not be started"));
    return std::unique_ptr<SlicedX264>(new SlicedX264(size, std::move(instance)));
}

bool SlicedX264::chooseSlices(bool isKey) {
    if (!m_load)
        return false;
    if (m_instance->options().slices > 1)
        return isKey && m_load->canDoWithoutSlices() &&
               goOver(X264Instance::open({.size = m_size, .savesInPart = true}));
    if (m_load->canDoWithoutSlices())
        m_prepared.reset();
    else if (m_load->mayNeedSlices() && !m_prepared)
        m_prepared = std::make_unique<PreparedX264>(
            X264Instance::Options{.size = m_size, .slices = slicesHere(), .savesInPart = true});
    if (!m_load->needsSlices() || !m_prepared || !m_prepared->isReady())
        return false;
    auto next = m_prepared->take();
    m_prepared.reset();
    return goOver(std::move(next));
}

bool SlicedX264::goOver(std::unique_ptr<X264Instance> next) {
    if (!next) {
        m_load.reset();
        return false;
    }
    qCInfo(logCapture, "encoding in slices: %d", next->options().slices);
    m_previous = std::exchange(m_instance, std::move(next));
    return true;
}

std::expected<X264Instance::Picture, PlatformError> SlicedX264::encode(const Nv12Frame &frame,
                                                                       std::vector<std::uint8_t> &hints,
                                                                       int quantizer, bool isKey,
                                                                       Change change) {
    const double begin = hostNow();
    if (chooseSlices(isKey)) {
        const ReconstructedPicture &own = m_instance->reconstruction();
        const ReconstructedPicture &before = m_previous->reconstruction();
        if (change == Change::carriedOver && !own.isNull() && !before.isNull())
            own.fillFrom(before, {0, 0, own.columns, own.rows});
        else
            isKey = true;
        m_previous.reset();
    }
    auto picture = m_instance->encode(frame, {}, hints, quantizer, isKey);
    if (picture && m_load)
        m_load->frameEncoded(begin, hostNow());
    return picture;
}

} // namespace vantrell
