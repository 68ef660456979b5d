// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Overlay/CountdownPanel.h"

#include "Overlay/OverlayDesktop.h"
#include "Panels/DesktopLink.h"
#include "Panels/FloatingPanel.h"
#include "Panels/PanelFont.h"
#include "Support/OneShot.h"
#include "Support/TaskScope.h"

#include <QAccessible>
#include <QCoreApplication>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QScreen>
#include <QTimer>

#include <algorithm>
#include <chrono>
#include <utility>

namespace vantrell {

namespace {

using namespace std::chrono_literals;

constexpr int diameter = 148;
constexpr double ringWidth = 4;
constexpr double ringInset = 9;
constexpr int numberSize = 68;
constexpr auto ringInterval = 40ms;
/// A compositor paints for certain, sooner or later. Where there is none, who paints nothing for so long has
/// nothing to paint.
constexpr auto compositorPatience = 1000ms;
constexpr auto applicationPatience = 200ms;
/// For what comes after the first painting.
constexpr auto secondPatience = 40ms;
/// For the compositor's next pictures, of which nobody tells.
constexpr auto waylandPatience = 80ms;

constexpr std::uint32_t escapeKey = 0xff1b;
constexpr std::uint32_t returnKey = 0xff0d;
constexpr std::uint32_t enterKey = 0xff8d;

enum class End { elapsed = 1, startedEarly, cancelled };

class CountdownWindow final : public FloatingPanel {
    Q_DECLARE_TR_FUNCTIONS(CountdownPanel)

public:
    CountdownWindow(int seconds, Clock &clock)
        : FloatingPanel({.radius = diameter / 2.0, .isMovable = false}), m_clock(clock), m_seconds(seconds),
          m_number(seconds), m_startedAt(clock.hostNow()) {
        setWindowTitle(tr("Recording countdown"));
        setToolTip(tr("Click or press Escape to cancel, Enter to start now"));
        setAccessibleDescription(toolTip());
        setCursor(Qt::PointingHandCursor);
        resizePanel({diameter, diameter});
        tellNumber();
        if (!prefersReducedMotion()) {
            m_ring.setInterval(ringInterval);
            QObject::connect(&m_ring, &QTimer::timeout, this, [this] { update(); });
            m_ring.start();
        }
    }

    void setNumber(int number) {
        m_number = number;
        tellNumber();
        update();
    }

    /// Shows nothing any more, though the window is still there.
    void clear() {
        m_ring.stop();
        m_isClear = true;
        repaint();
    }

    std::function<void()> onCancel;
    std::function<void()> onStart;

protected:
    void paintEvent(QPaintEvent *event) override {
        if (m_isClear) {
            QPainter painter(this);
            painter.setCompositionMode(QPainter::CompositionMode_Source);
            painter.fillRect(rect(), Qt::transparent);
            return;
        }
        FloatingPanel::paintEvent(event);
        QPainter painter(this);
        painter.setRenderHint(QPainter::Antialiasing);
        const QRectF panel(panelRect());
        const double inset = ringInset + ringWidth / 2;
        const QRectF ring = panel.adjusted(inset, inset, -inset, -inset);
        painter.setPen(QPen(theme().selected, ringWidth));
        painter.drawEllipse(ring);
        constexpr double fullTurn = 360 * 16;
        painter.setPen(QPen(theme().accent, ringWidth, Qt::SolidLine, Qt::RoundCap));
        painter.drawArc(ring, 90 * 16, int(-fullTurn * left()));

        QFont font = panelFont(numberSize, QFont::Light);
        const QString text = QString::number(m_number);
        const QFontMetricsF metrics(font);
        painter.setFont(font);
        painter.setPen(theme().text);
        painter.drawText(QPointF(panel.center().x() - metrics.horizontalAdvance(text) / 2,
                                 panel.center().y() + metrics.capHeight() / 2),
                         text);
    }

    /// Only where the desktop lends it the keyboard: no keys of other windows can be heard there.
    void keyPressEvent(QKeyEvent *event) override {
        const bool starts = event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter;
        if (event->key() == Qt::Key_Escape && onCancel)
            onCancel();
        else if (starts && !event->isAutoRepeat() && onStart)
            onStart();
    }

    void mousePressEvent(QMouseEvent *) override {
        if (onCancel)
            onCancel();
    }

private:
    /// How much of the time is left, from 1 to 0; in whole seconds where nothing shall move.
    double left() const {
        if (prefersReducedMotion())
            return double(m_number) / m_seconds;
        return std::clamp(1 - (m_clock.hostNow() - m_startedAt) / m_seconds, 0.0, 1.0);
    }

    void tellNumber() {
        setAccessibleName(tr("Recording starts in %1").arg(m_number));
        QAccessibleEvent event(this, QAccessible::NameChanged);
        QAccessible::updateAccessibility(&event);
    }

    Clock &m_clock;
    const int m_seconds;
    int m_number;
    const double m_startedAt;
    bool m_isClear = false;
    QTimer m_ring;
};

Task<> count(CountdownWindow *window, int seconds, Clock *clock, OneShot<End> ended, std::stop_token stop) {
    for (int number = seconds; number >= 1; --number) {
        window->setNumber(number);
        if (!co_await clock->sleep(1s, stop))
            co_return;
    }
    ended.resolve(End::elapsed);
}

Task<> resolveAfter(std::chrono::milliseconds patience, Clock *clock, OneShot<bool> waiting,
                    std::stop_token stop) {
    if (co_await clock->sleep(patience, stop))
        waiting.resolve(false);
}

/// Waits until the place was painted twice: the first time may have been on its way before.
Task<> waitForFrames(QRect pixels, std::chrono::milliseconds first, Clock &clock, std::stop_token stop) {
    for (const std::chrono::milliseconds patience : {first, std::chrono::milliseconds(secondPatience)}) {
        const OneShot<bool> painted;
        const Observation watch =
            DesktopLink::instance().watchForPainting(pixels, [painted] { painted.resolve(true); });
        TaskScope limit;
        limit.start(&resolveAfter, patience, &clock, painted);
        if (!co_await painted.wait(stop))
            co_return;
    }
}

/// The window's place in the desktop's pixels.
QRect pixelsOf(const QWidget &window) {
    const QScreen *screen = window.screen();
    const QPoint corner = screen->geometry().topLeft();
    const QRectF inside(QPointF(window.pos() - corner) * screen->devicePixelRatio(),
                        QSizeF(window.size()) * screen->devicePixelRatio());
    return inside.toAlignedRect().translated(corner);
}

} // namespace

Task<bool> countDown(int seconds, Display display, Clock &clock, std::stop_token stop) {
    if (seconds < 1)
        co_return !stop.stop_requested();
    CountdownWindow window(seconds, clock);
    const OneShot<End> ended;
    window.onCancel = [ended] { ended.resolve(End::cancelled); };
    window.onStart = [ended] { ended.resolve(End::startedEarly); };
    const QRect room = screenOf(display)->geometry();
    window.placePanel(room.center() - QPoint(diameter / 2, diameter / 2));
    window.showPanel();
    PanelShell &shell = PanelShell::instance();
    shell.lendKeyboard(window);

    std::expected<End, Cancelled> end = std::unexpected(Cancelled{});
    {
        const Observation keys =
            DesktopLink::instance().grabKeys({escapeKey, returnKey, enterKey}, [ended](std::uint32_t key) {
                ended.resolve(key == escapeKey ? End::cancelled : End::startedEarly);
            });
        TaskScope counting;
        counting.start(&count, &window, seconds, &clock, ended);
        end = co_await ended.wait(stop);
    }
    shell.takeKeyboardBack(window);
    if (!end) {
        window.hide();
        co_return false;
    }
    const QRect pixels = pixelsOf(window);
    // A compositor may let a window that goes fade for a while: it has nothing on it when it goes. Without
    // one the application below has to paint anew.
    const bool isBlended = window.isBlended();
    if (isBlended)
        window.clear();
    else
        window.hide();
    if (shell.keepsOutOfPictures()) {
        shell.sync();
        co_await waitForFrames(pixels, isBlended ? compositorPatience : applicationPatience, clock, stop);
        window.hide();
        shell.sync();
    } else {
        // Nobody tells when the screen is painted: a picture or two after the window has gone.
        window.hide();
        shell.sync();
        co_await clock.sleep(waylandPatience, stop);
    }
    co_return end && !stop.stop_requested() && *end != End::cancelled;
}

} // namespace vantrell
