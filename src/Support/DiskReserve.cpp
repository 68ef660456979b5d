// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Support/DiskReserve.h"

namespace vantrell {

namespace {

constexpr std::uint64_t reserveGrowth = std::uint64_t(1) << 20;

} // namespace

std::expected<void, PlatformError> DiskReserve::hold(std::uint64_t bytes) {
    if (!m_isSupported || bytes <= m_held)
        return {};
    if (!m_file.isOpen()) {
        auto file = DiskFile::createNameless(m_folder);
        if (!file) {
            m_isSupported = false;
            if (isDiskFull(file.error()))
                return std::unexpected(file.error());
            return {};
        }
        m_file = std::move(*file);
    }
    const std::uint64_t wanted = (bytes / reserveGrowth + 1) * reserveGrowth;
    const auto reserved = m_file.reserve(wanted);
    if (!reserved && isDiskFull(reserved.error()))
        return reserved;
    if (!reserved)
        m_isSupported = false;
    else
        m_held = wanted;
    return {};
}

void DiskReserve::release() {
    m_file.close();
    m_held = 0;
}

} // namespace vantrell
