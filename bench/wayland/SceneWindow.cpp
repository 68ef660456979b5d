// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "SceneWindow.h"

#include <QPaintEvent>
#include <QPainter>

namespace vantrell::bench {

SceneWindow::SceneWindow(const std::string &scene, PixelSize size)
    : m_scene(Scene::make(scene, size)), m_pixels(size.width, size.height, QImage::Format_RGB32),
      m_picture(size, reinterpret_cast<std::uint32_t *>(m_pixels.bits())) {
    m_scene->background(m_picture);
    resize(size.width, size.height);
    // What the test session's sway makes full screen.
    setTitle(QStringLiteral("numbers"));
    connect(&m_timer, &QTimer::timeout, this, [this] { next(); });
    m_timer.setTimerType(Qt::PreciseTimer);
    if (m_scene->rate() > 0)
        m_timer.start(int(1000 / m_scene->rate()));
}

void SceneWindow::next() {
    QRegion changed;
    for (const PixelRect &rect : m_scene->draw(++m_number, m_picture))
        changed += QRect(rect.x, rect.y, rect.width, rect.height);
    update(changed);
}

void SceneWindow::paintEvent(QPaintEvent *event) {
    QPainter painter(this);
    for (const QRect &rect : event->region())
        painter.drawImage(rect.topLeft(), m_pixels, rect);
}

} // namespace vantrell::bench
