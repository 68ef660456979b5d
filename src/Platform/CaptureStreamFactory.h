// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Platform/CaptureSource.h"
#include "Platform/CaptureStream.h"
#include "Platform/CaptureStreamConfiguration.h"

#include <memory>

namespace vantrell {

/// Port: makes stretches of recording from whatever a backend has to record. Main thread.
class CaptureStreamFactory {
public:
    virtual ~CaptureStreamFactory() = default;

    /// Touches nothing until the stream is started. The factory outlives the stream.
    virtual std::unique_ptr<CaptureStream> makeStream(CaptureSource &source,
                                                      CaptureStreamConfiguration configuration,
                                                      CaptureStreamEvents events) = 0;
};

} // namespace vantrell
