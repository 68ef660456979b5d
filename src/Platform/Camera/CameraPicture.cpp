// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Platform/Camera/CameraPicture.h"

#include <algorithm>

namespace vantrell {

bool splitCameraPicture(std::span<const std::uint8_t> bytes, std::ptrdiff_t stride, CameraFrame &frame) {
    frame.planes = {};
    if (frame.size.isEmpty() || bytes.empty())
        return false;
    if (frame.format == CameraFormat::mjpeg || frame.format == CameraFormat::h264) {
        frame.planes[0] = {bytes, 0};
        return true;
    }
    const auto width = std::size_t(frame.size.width);
    const auto height = std::size_t(frame.size.height);
    const std::size_t rowBytes = frame.format == CameraFormat::yuyv ? (width + 1) / 2 * 4 : width;
    const std::size_t first = stride > 0 ? std::size_t(stride) : rowBytes;
    if (first < rowBytes)
        return false;
    const std::size_t chromaRows = (height + 1) / 2;
    struct Plane {
        std::size_t stride, rows;
    };
    std::array<Plane, 3> planes{Plane{first, height}, {}, {}};
    if (frame.format == CameraFormat::nv12)
        planes[1] = {(first + 1) / 2 * 2, chromaRows};
    else if (frame.format == CameraFormat::i420)
        planes[1] = planes[2] = {(first + 1) / 2, chromaRows};
    std::size_t offset = 0;
    for (std::size_t i = 0; i < planes.size(); ++i) {
        const std::size_t size = planes[i].stride * planes[i].rows;
        // Some leave out the gap behind the last row.
        const std::size_t needed = size - (planes[i].rows > 0 && i == 0 ? first - rowBytes : 0);
        if (offset + needed > bytes.size())
            return false;
        if (size > 0)
            frame.planes[i] = {bytes.subspan(offset, std::min(size, bytes.size() - offset)),
                               std::ptrdiff_t(planes[i].stride)};
        offset += size;
    }
    return true;
}

} // namespace vantrell
