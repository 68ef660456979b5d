// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Media/Camera/CameraDecoder.h"
#include "Media/Libav/ColourMatrix.h"
#include "Media/Picture/Nv12Frame.h"

#include <memory>
#include <optional>

namespace vantrell {

/// Makes NV12, limited range, of whatever a camera sends, without a detour over RGB. Thread-bound.
class CameraPictureReader {
public:
    /// Takes a picture, which `write` then reads: call that before the frame's memory goes. False when there
    /// is nothing to be seen in it. `leastSide` is what its shorter side has to have: where that is quicker,
    /// the picture is smaller than the camera's; 0 for its own size.
    bool open(const CameraFrame &frame, int leastSide = 0);

    /// Of the opened picture; even numbers.
    PixelSize size() const { return m_size; }
    ColourMatrix matrix() const { return m_matrix; }

    /// Writes it into a picture of the same size, or fits it into one of another size with black bars.
    void write(Nv12Frame &to);

private:
    bool openDecoded(const AVFrame &decoded);
    bool convert(Nv12Frame &to);
    bool convertDecoded(const AVFrame &decoded, Nv12Frame &to);

    CameraFrame m_frame;
    const AVFrame *m_decoded = nullptr;
    PixelSize m_size;
    ColourMatrix m_matrix = ColourMatrix::bt601;
    std::optional<CameraFormat> m_decoderFormat;
    std::unique_ptr<CameraDecoder> m_decoder;
    ScalerPtr m_scaler;
    /// In the camera's own size, while another is wanted.
    std::unique_ptr<Nv12Frame> m_unfitted;
};

} // namespace vantrell
