// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Platform/X11/X11CompositorLag.h"

#include <utility>

namespace vantrell {

namespace {

constexpr double compositorPatience = 0.03;

} // namespace

void X11CompositorLag::add(const QRegion &beneath, const QRegion &beside) {
    m_waiting += beneath;
    m_awaited += beside;
}

QRegion X11CompositorLag::release(const QRegion &onRoot) {
    m_awaited -= onRoot;
    if (!m_awaited.isEmpty() && m_since)
        return {};
    m_awaited = QRegion();
    m_since.reset();
    return std::exchange(m_waiting, QRegion());
}

std::optional<double> X11CompositorLag::looksAt() const {
    return m_since ? std::optional(*m_since + compositorPatience) : std::nullopt;
}

std::optional<double> X11CompositorLag::look(double now) {
    if (!m_since || now < *m_since + compositorPatience)
        return std::nullopt;
    m_awaited = QRegion();
    return std::exchange(m_since, std::nullopt);
}

} // namespace vantrell
