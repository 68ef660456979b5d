// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Media/Camera/CameraPreview.h"

#include <libyuv.h>

#include <algorithm>
#include <utility>

namespace vantrell {

void CameraPreview::show(int squarePixels, std::function<void()> changed) {
    m_changed = std::move(changed);
    const std::scoped_lock lock(m_mutex);
    m_side = squarePixels;
    m_loop = EventLoop::current();
    m_isTold = false;
}

QImage CameraPreview::take() {
    const std::scoped_lock lock(m_mutex);
    m_isTold = false;
    return m_newest;
}

int CameraPreview::wantedSide() const {
    const std::scoped_lock lock(m_mutex);
    return m_isTold ? 0 : m_side;
}

void CameraPreview::offer(const Nv12Frame &frame, ColourMatrix matrix) {
    const int side = wantedSide();
    if (side <= 0)
        return;
    QImage &image = freeImage(side);
    cut(frame, matrix, image);
    EventLoop loop;
    {
        const std::scoped_lock lock(m_mutex);
        m_newest = image;
        m_isTold = true;
        loop = m_loop;
    }
    loop.post([weak = weak_from_this()] {
        if (const auto preview = weak.lock())
            preview->tell();
    });
}

void CameraPreview::tell() {
    // A copy: it may ask for no more pictures.
    if (const auto changed = m_changed)
        changed();
}

QImage &CameraPreview::freeImage(int side) {
    const auto free = std::ranges::find_if(m_images, [](const QImage &image) { return image.isDetached(); });
    QImage &image = free == m_images.end() ? m_images.front() : *free;
    if (free == m_images.end() || image.width() != side)
        image = QImage(side, side, QImage::Format_RGB32);
    return image;
}

void CameraPreview::cut(const Nv12Frame &frame, ColourMatrix matrix, QImage &image) {
    const auto [width, height] = frame.picture();
    const int square = std::min(width, height) / 2 * 2;
    const int x = (width - square) / 4 * 2;
    const int y = (height - square) / 4 * 2;
    const int side = image.width();
    const int evenSide = (side + 1) / 2 * 2;
    if (!m_small || m_small->picture().width != evenSide)
        m_small = std::make_unique<Nv12Frame>(PixelSize{evenSide, evenSide});
    const int stride = int(frame.stride());
    const int smallStride = int(m_small->stride());
    libyuv::NV12Scale(frame.luma() + y * frame.stride() + x, stride,
                      frame.chroma() + y / 2 * frame.stride() + x, stride, square, square, m_small->luma(),
                      smallStride, m_small->chroma(), smallStride, evenSide, evenSide, libyuv::kFilterBox);
    const auto &colours =
        matrix == ColourMatrix::bt709 ? libyuv::kYuvH709Constants : libyuv::kYuvI601Constants;
    libyuv::NV12ToARGBMatrix(m_small->luma(), smallStride, m_small->chroma(), smallStride, image.bits(),
                             int(image.bytesPerLine()), &colours, side, side);
}

} // namespace vantrell
