// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Media/Encoding/SmallEncoder.h"

#include "Platform/ScreenError.h"

#include <algorithm>
#include <utility>

namespace vantrell {

namespace {

constexpr int mostCarefulBlocks = 1024;

/// The margins are there, as far as can be seen from outside.
bool hasMargins(const ReconstructedPicture &picture) {
    const std::ptrdiff_t row = picture.columns * blockEdge + 2 * ReconstructedPicture::margin;
    return !picture.isNull() && picture.chroma && picture.lumaStride >= row && picture.chromaStride >= row;
}

/// The smallest area that has all blocks of `place` that are not known to be as before.
BlockArea changedPart(const std::vector<std::uint8_t> &hints, const BlockArea &place) {
    int left = place.columns;
    int right = 0;
    int top = place.rows;
    int bottom = 0;
    auto hint = hints.begin();
    for (int row = 0; row < place.rows; ++row) {
        for (int column = 0; column < place.columns; ++column) {
            if (*hint++ == X264Instance::constantHint)
                continue;
            left = std::min(left, column);
            right = std::max(right, column + 1);
            top = std::min(top, row);
            bottom = row + 1;
        }
    }
    if (right <= left)
        return {place.column, place.row, 0, 0};
    return {place.column + left, place.row + top, right - left, bottom - top};
}

} // namespace

std::optional<StreamFacts> StreamFacts::of(const X264Instance &whole) {
    const auto layout = layoutOf(whole.sequenceParameters(), whole.pictureParameters());
    if (!layout)
        return std::nullopt;
    return StreamFacts{.layout = *layout,
                       .pictureParameters = whole.pictureParameters(),
                       .level = whole.level(),
                       .isFast = whole.options().isFast};
}

std::unique_ptr<SmallEncoder> SmallEncoder::create(const StreamFacts &stream, int columns, int rows) {
    // There is always time for the details of a line of text.
    const bool isForText = columns * rows <= mostCarefulBlocks;
    auto instance = X264Instance::open({.size = {columns * blockEdge, rows * blockEdge},
                                        .isFast = stream.isFast,
                                        .dropsSmallDifferences = stream.isFast && !isForText,
                                        .partOf = stream.layout.columns * stream.layout.rows,
                                        .isForText = isForText,
                                        .savesInPart = !stream.isFast && !isForText,
                                        .level = stream.level});
    if (!instance || instance->pictureParameters() != stream.pictureParameters)
        return nullptr;
    const auto own = layoutOf(instance->sequenceParameters(), instance->pictureParameters());
    if (!own || own->columns != columns || own->rows != rows)
        return nullptr;
    instance->warmUp(1);
    if (!hasMargins(instance->reconstruction()))
        return nullptr;
    return std::unique_ptr<SmallEncoder>(new SmallEncoder(stream, *own, std::move(instance)));
}

std::expected<void, PlatformError> SmallEncoder::encode(const Nv12Frame &frame, const BlockArea &place,
                                                        const BlockMap &touched, int quantizer,
                                                        const ReconstructedPicture &whole) {
    if (place.columns != columns() || place.rows != rows() || !hasMargins(whole))
        return std::unexpected(screenError(ScreenErrorCode::encoderFailed, "A band has no place"));
    const bool isUpToDate = std::exchange(m_isUpToDate, false) && place == m_place;
    m_place = place;
    m_hints.clear();
    for (int row = place.row; row < place.bottom(); ++row) {
        const auto marks = touched.marks().begin() + std::ptrdiff_t(row) * touched.columns() + place.column;
        std::transform(marks, marks + place.columns, std::back_inserter(m_hints),
                       [](std::uint8_t mark) { return mark ? std::uint8_t(0) : X264Instance::constantHint; });
    }
    if (isUpToDate)
        m_instance->reconstruction().fillMarginFrom(whole, place, m_stream.margin);
    else
        m_instance->reconstruction().fillFrom(whole, place, m_stream.margin);
    const auto picture = m_instance->encode(frame, place, m_hints, quantizer, false);
    if (!picture)
        return std::unexpected(picture.error());
    m_changed = changedPart(m_hints, place);
    const PlatformError odd = screenError(ScreenErrorCode::encoderFailed, "A band's slice is not understood");
    if (picture->isKey || !hasMargins(m_instance->reconstruction()))
        return std::unexpected(odd);
    m_slices.clear();
    for (const H264Unit unit : splitSized(picture->data)) {
        if (typeOf(unit) != H264UnitType::slice)
            continue;
        const auto parsed = parseSlice(unit, m_own);
        if (!parsed)
            return std::unexpected(odd);
        m_slices.push_back({unit, *parsed});
    }
    if (m_slices.empty())
        return std::unexpected(odd);
    return {};
}

void SmallEncoder::appendTo(std::vector<std::uint8_t> &stream, std::uint32_t frameNumber) const {
    const int firstBlock = m_place.row * m_stream.layout.columns + m_place.column;
    for (const Slice &slice : m_slices) {
        SliceHeader header = slice.parsed.header;
        header.firstBlock += firstBlock;
        header.frameNumber = frameNumber;
        appendSliceWithHeader(stream, m_stream.layout, header, slice.unit, slice.parsed);
    }
}

void SmallEncoder::reconstructIn(const ReconstructedPicture &whole) {
    m_instance->reconstruction().writeTo(whole, m_place, m_changed);
    m_isUpToDate = true;
}

} // namespace vantrell
