// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

// What the camera's bubble costs: the share of a core that this process needs to show 30 pictures a second,
// in each of the bubble's sizes. The pictures are there already: cutting them is the camera's business.
//
//     bench_bubble [SECONDS]     10 by default, each; on a virtual display of its own

#include "OwnProcessorTime.h"

#include "Overlay/CameraBubble.h"
#include "Support/SystemClock.h"
#include "TestSupport/Desktop/X11Session.h"

#include <QApplication>
#include <QTemporaryDir>
#include <QTimer>

#include <array>
#include <cstdio>
#include <cstdlib>

using namespace vantrell;

namespace {

/// A camera of which every picture is another one.
class TwoPictures {
public:
    explicit TwoPictures(const std::shared_ptr<CameraBubbleState> &state) {
        state->camera = CameraBubbleState::Camera::running;
        state->showPreview = [this](int pixels, std::function<void()> changed) {
            for (QImage &picture : m_pictures)
                picture = QImage(pixels, pixels, QImage::Format_RGB32);
            m_pictures[0].fill(Qt::darkCyan);
            m_pictures[1].fill(Qt::darkGreen);
            m_changed = std::move(changed);
        };
        state->preview = [this] { return m_pictures[m_shown]; };
    }

    void next() {
        m_shown = 1 - m_shown;
        if (m_changed)
            m_changed();
    }

private:
    std::array<QImage, 2> m_pictures;
    std::size_t m_shown = 0;
    std::function<void()> m_changed;
};

void measure(int size, double seconds) {
    const QTemporaryDir folder;
    Settings settings((folder.path() + "/settings.ini").toStdString());
    settings.setNumber("panel.bubble.size", size);
    SystemClock clock;
    const auto state = std::make_shared<CameraBubbleState>();
    TwoPictures camera(state);
    CameraBubble bubble(settings, clock);
    bubble.show(state, {});
    QTimer frames;
    frames.setTimerType(Qt::PreciseTimer);
    QObject::connect(&frames, &QTimer::timeout, &frames, [&] { camera.next(); });
    frames.start(1000 / 30);
    // What is made once does not count.
    QTimer::singleShot(1000, &frames, [&] {
        const double before = ownProcessorTime();
        QTimer::singleShot(int(seconds * 1000), &frames, [&, before] {
            std::printf("bubble of size %d: %.1f %% of a core\n", size + 1,
                        (ownProcessorTime() - before) * 100 / seconds);
            QApplication::quit();
        });
    });
    QApplication::exec();
}

} // namespace

int main(int argc, char **argv) {
    const double seconds = argc > 1 ? std::atof(argv[1]) : 10;
    const testing::X11Session session({.width = 1920, .height = 1080});
    qputenv("QT_QPA_PLATFORM", "xcb");
    QApplication application(argc, argv);
    for (const int size : {0, 1, 2})
        measure(size, seconds);
}
