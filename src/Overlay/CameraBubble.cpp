// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Overlay/CameraBubble.h"

#include "Panels/FloatingPanel.h"
#include "Panels/PanelButton.h"
#include "Panels/PanelPlacement.h"

#include <QCoreApplication>
#include <QPainter>
#include <QScreen>

#include <algorithm>
#include <array>

namespace vantrell {

namespace {

constexpr std::array<int, 3> diameters{120, 168, 240};
constexpr int usualSize = 1;
constexpr double rim = 3;
constexpr int bubbleDistance = 24;
constexpr int bubbleButtonHeight = 40;
constexpr const char *sizeKey = "panel.bubble.size";
constexpr const char *mirrorKey = "panel.bubble.mirror";

class BubbleWindow final : public FloatingPanel {
    Q_DECLARE_TR_FUNCTIONS(CameraBubble)

public:
    explicit BubbleWindow(Settings &settings)
        : FloatingPanel({.radius = diameters.back() / 2.0}), m_settings(settings),
          m_size(std::clamp(int(settings.number(sizeKey).value_or(usualSize)), 0, int(diameters.size()) - 1)),
          m_isMirrored(settings.number(mirrorKey).value_or(1) != 0), m_resize(tr("Change size"), this),
          m_mirror(tr("Mirror"), this) {
        setWindowTitle(tr("Camera"));
        setAccessibleName(windowTitle());
        m_resize.setSymbol(Symbol::resize);
        m_mirror.setSymbol(Symbol::mirror);
        m_mirror.setCheckable(true);
        m_mirror.setChecked(m_isMirrored);
        for (PanelButton *button : {&m_resize, &m_mirror}) {
            button->setHeight(bubbleButtonHeight);
            button->setRadius(bubbleButtonHeight / 2.0);
            button->setKind(PanelButton::Kind::filled);
            button->hide();
        }
        QObject::connect(&m_resize, &QAbstractButton::clicked, this, [this] { setSize((m_size + 1) % 3); });
        QObject::connect(&m_mirror, &QAbstractButton::toggled, this, [this](bool isMirrored) {
            m_isMirrored = isMirrored;
            m_settings.setNumber(mirrorKey, isMirrored ? 1 : 0);
            setPicture(m_original);
        });
        resizePanel(panelSize());
    }

    QSize panelSize() const {
        const int diameter = diameters[std::size_t(m_size)];
        return {diameter, diameter};
    }

    void setPicture(const QImage &picture) {
        m_original = picture;
        m_picture = {};
        update(panelRect());
    }

protected:
    void paintEvent(QPaintEvent *event) override {
        FloatingPanel::paintEvent(event);
        QPainter painter(this);
        painter.setRenderHint(QPainter::Antialiasing);
        const QRectF circle(panelRect());
        if (m_original.isNull()) {
            constexpr double size = 32;
            painter.drawPixmap(circle.center() - QPointF(size / 2, size / 2),
                               symbolPixmap(Symbol::camera, theme().quietText, size, devicePixelRatioF()));
        } else {
            fitPicture();
            QBrush brush(m_picture);
            brush.setTransform(QTransform::fromScale(1 / devicePixelRatioF(), 1 / devicePixelRatioF()) *
                               QTransform::fromTranslate(circle.left(), circle.top()));
            painter.setBrush(brush);
            painter.setPen(Qt::NoPen);
            painter.drawEllipse(circle.adjusted(1, 1, -1, -1));
        }
        painter.setBrush(Qt::NoBrush);
        painter.setPen(QPen(Qt::white, rim));
        painter.drawEllipse(circle.adjusted(rim / 2, rim / 2, -rim / 2, -rim / 2));
        if (m_resize.isVisible()) {
            // Behind the buttons, so that they can be seen on any picture.
            painter.setPen(Qt::NoPen);
            painter.setBrush(theme().panel);
            const QRectF both = QRectF(m_resize.geometry() | m_mirror.geometry());
            painter.drawRoundedRect(both, bubbleButtonHeight / 2.0, bubbleButtonHeight / 2.0);
        }
    }

    void resizeEvent(QResizeEvent *event) override {
        FloatingPanel::resizeEvent(event);
        m_picture = {};
        const QRect panel = panelRect();
        const int top = panel.bottom() + 1 - bubbleButtonHeight - panel.height() / 10;
        m_resize.setGeometry(panel.center().x() - bubbleButtonHeight, top, bubbleButtonHeight,
                             bubbleButtonHeight);
        m_mirror.setGeometry(panel.center().x(), top, bubbleButtonHeight, bubbleButtonHeight);
    }

    void enterEvent(QEnterEvent *) override { showButtons(true); }
    void leaveEvent(QEvent *) override { showButtons(false); }

private:
    void showButtons(bool shown) {
        m_resize.setVisible(shown);
        m_mirror.setVisible(shown);
        update(panelRect());
    }

    void setSize(int size) {
        const QPoint middle = panelFrame().center();
        m_size = size;
        m_settings.setNumber(sizeKey, size);
        const QSize points = panelSize();
        resizePanel(points);
        placePanel(middle - QPoint(points.width() / 2, points.height() / 2));
        if (onMoved)
            onMoved(panelFrame());
    }

    /// Scaled and cut to the square around the circle once a picture.
    void fitPicture() {
        if (!m_picture.isNull())
            return;
        const QSize pixels = panelSize() * devicePixelRatioF();
        const QImage scaled =
            m_original.scaled(pixels, Qt::KeepAspectRatioByExpanding, Qt::SmoothTransformation);
        const QPoint corner((scaled.width() - pixels.width()) / 2, (scaled.height() - pixels.height()) / 2);
        m_picture = scaled.copy(QRect(corner, pixels));
        m_picture.setDevicePixelRatio(1);
        if (m_isMirrored)
            m_picture.mirror(true, false);
    }

    Settings &m_settings;
    int m_size;
    bool m_isMirrored;
    QImage m_original;
    QImage m_picture;
    PanelButton m_resize;
    PanelButton m_mirror;
};

} // namespace

struct CameraBubble::Panel {
    explicit Panel(Settings &settings) : window(settings), placement(settings, "bubble") {
        window.onMoved = [this](QRect frame) { placement.save(frame); };
    }

    BubbleWindow window;
    PanelPlacement placement;
};

CameraBubble::CameraBubble(Settings &settings) : m_panel(std::make_unique<Panel>(settings)) {}

CameraBubble::~CameraBubble() = default;

void CameraBubble::show(const Display &display) {
    BubbleWindow &window = m_panel->window;
    const QScreen *screen = screenOf(display.id, QPoint(int(display.frame.x), int(display.frame.y)));
    const QRect room = screen->availableGeometry();
    const QSize size = window.panelSize();
    const QPoint first(room.left() + bubbleDistance, room.bottom() + 1 - bubbleDistance - size.height());
    window.placePanel(m_panel->placement.restore(*screen, size).value_or(first));
    window.showPanel();
}

void CameraBubble::hide() {
    m_panel->window.hide();
}

void CameraBubble::setPicture(const QImage &picture) {
    m_panel->window.setPicture(picture);
}

} // namespace vantrell
