// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Support/HostTime.h"
#include "TestSupport/FrameCode.h"

#include <QGuiApplication>
#include <QPainter>
#include <QRasterWindow>
#include <QTimer>

#include <cstdio>
#include <cstdlib>
#include <cstring>

// A window that shows numbers as frame codes, one after another, and tells when it painted each: "12
// 3456.789" with the host time in seconds. Arguments: numbers a second (0: one number only), colour of the
// ground, title.

namespace {

class Numbers : public QRasterWindow {
public:
    explicit Numbers(QColor ground) : m_ground(ground) {}

    void next() {
        ++m_number;
        update(m_number == 1 ? QRect({}, size()) : place());
    }

protected:
    void paintEvent(QPaintEvent *) override {
        QPainter painter(this);
        painter.fillRect(QRect({}, size()), m_ground);
        using namespace vantrell::testing;
        QImage code(framecode::width, framecode::height, QImage::Format_RGB32);
        framecode::draw(m_number, code.bits(), code.bytesPerLine());
        // Without the unused byte of each pixel, which some compositors take for transparency.
        painter.drawImage(place().topLeft(), code.convertToFormat(QImage::Format_RGB888));
        std::printf("%u %.6f\n", m_number, vantrell::hostNow());
        std::fflush(stdout);
    }

private:
    static QRect place() {
        return {32, 48, vantrell::testing::framecode::width, vantrell::testing::framecode::height};
    }

    QColor m_ground;
    std::uint32_t m_number = 0;
};

} // namespace

int main(int argc, char **argv) {
    QGuiApplication application(argc, argv);
    const double rate = argc > 1 ? std::atof(argv[1]) : 10;
    Numbers window(QColor(argc > 2 ? argv[2] : "#306090"));
    window.setTitle(QString::fromUtf8(argc > 3 ? argv[3] : "numbers"));
    window.resize(640, 400);
    window.show();
    window.next();
    QTimer timer;
    QObject::connect(&timer, &QTimer::timeout, &window, [&] { window.next(); });
    timer.setTimerType(Qt::PreciseTimer);
    if (rate > 0)
        timer.start(int(1000 / rate));
    return QGuiApplication::exec();
}
