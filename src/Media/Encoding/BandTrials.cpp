// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Media/Encoding/BandTrials.h"

#include "Media/Encoding/BandTrial.h"
#include "Media/Encoding/SlicedX264.h"
#include "Support/BlockMap.h"
#include "Support/Log.h"

namespace vantrell {

std::optional<bool> BandTrials::result(PixelSize picture) {
    const Kind kind{picture.width, picture.height % BlockMap::blockSize, SlicedX264::isLarge(picture)};
    const std::scoped_lock lock(m_mutex);
    const auto [known, isNew] = m_results.try_emplace(kind);
    if (isNew)
        m_worker.post([this, picture, kind] { run(picture, kind); });
    return known->second;
}

void BandTrials::run(PixelSize picture, const Kind &kind) {
    const auto tried = BandTrial{.picture = picture, .isLarge = std::get<2>(kind)}.run(m_isStopping);
    if (!tried && !m_isStopping)
        qCWarning(logCapture, "not encoding in bands: %s", tried.error().message.c_str());
    const std::scoped_lock lock(m_mutex);
    m_results[kind] = tried.has_value();
}

} // namespace vantrell
