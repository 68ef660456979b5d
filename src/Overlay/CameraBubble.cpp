// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Overlay/CameraBubble.h"

#include "Overlay/OverlayDesktop.h"
#include "Panels/FloatingPanel.h"
#include "Panels/PanelButton.h"
#include "Panels/PanelFont.h"
#include "Panels/PanelPlacement.h"
#include "Panels/Sentence.h"
#include "Support/TaskScope.h"

#include <QCoreApplication>
#include <QPaintEvent>
#include <QPainter>
#include <QScreen>

#include <algorithm>
#include <array>
#include <chrono>
#include <cmath>

namespace vantrell {

namespace {

constexpr std::array<int, 3> diameters{120, 168, 240};
constexpr int usualSize = 1;
constexpr double rim = 3;
constexpr int bubbleDistance = 24;
constexpr int bubbleButtonHeight = 40;
constexpr const char *sizeKey = "panel.bubble.size";
constexpr const char *mirrorKey = "panel.bubble.mirror";
constexpr std::chrono::seconds watchInterval(1);
/// Slower cameras than this have stopped.
constexpr double patienceSeconds = 2;

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
            m_picture.mirror(true, false);
            update(panelRect());
        });
        resizePanel(panelSize());
    }

    /// It has another size in pixels.
    std::function<void()> onResized;

    QSize panelSize() const {
        const int diameter = diameters[std::size_t(m_size)];
        return {diameter, diameter};
    }
    int pixels() const { return int(std::lround(panelSize().width() * devicePixelRatioF())); }

    /// The newest picture, about as large as the bubble.
    void setPicture(const QImage &picture) {
        m_picture = m_isMirrored ? picture.mirrored(true, false) : picture;
        if (!accessibleDescription().isEmpty())
            setAccessibleDescription({});
        update(panelRect());
    }
    /// Instead of a picture.
    void setWords(Symbol symbol, const QString &words) {
        m_picture = {};
        m_symbol = symbol;
        m_words = words;
        setAccessibleDescription(words);
        update(panelRect());
    }

protected:
    void paintEvent(QPaintEvent *event) override {
        const QRectF circle(panelRect());
        // Below a picture too: the shadow reaches into the corners around the circle.
        FloatingPanel::paintEvent(event);
        QPainter painter(this);
        painter.setRenderHint(QPainter::Antialiasing);
        if (m_picture.isNull())
            paintWords(painter, circle);
        else
            paintPicture(painter, circle);
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
        const QRect panel = panelRect();
        const int top = panel.bottom() + 1 - bubbleButtonHeight - panel.height() / 10;
        m_resize.setGeometry(panel.center().x() - bubbleButtonHeight, top, bubbleButtonHeight,
                             bubbleButtonHeight);
        m_mirror.setGeometry(panel.center().x(), top, bubbleButtonHeight, bubbleButtonHeight);
    }

    void showEvent(QShowEvent *event) override {
        FloatingPanel::showEvent(event);
        // The screen that it is on is known only now.
        if (onResized)
            onResized();
    }
    void enterEvent(QEnterEvent *) override { showButtons(true); }
    void leaveEvent(QEvent *) override { showButtons(false); }

private:
    void paintPicture(QPainter &painter, const QRectF &circle) const {
        // Of the size that was asked for but for a moment after a change.
        const double scale = circle.width() / std::min(m_picture.width(), m_picture.height());
        QBrush brush(m_picture);
        brush.setTransform(QTransform::fromScale(scale, scale) *
                           QTransform::fromTranslate(circle.center().x() - m_picture.width() * scale / 2,
                                                     circle.center().y() - m_picture.height() * scale / 2));
        painter.setBrush(brush);
        painter.setPen(Qt::NoPen);
        painter.drawEllipse(circle.adjusted(1, 1, -1, -1));
    }

    void paintWords(QPainter &painter, const QRectF &circle) const {
        constexpr double size = 28;
        // The chord of the circle in which two lines have room.
        const double width = circle.width() * 0.74;
        const QRectF room(circle.center().x() - width / 2, 0, width, circle.height());
        QFont font;
        QRectF words;
        // Smaller, for a language with a longer word.
        for (double points = secondLineSize; points >= 8; --points) {
            font = panelFont(points);
            words = QFontMetricsF(font).boundingRect(room, Qt::AlignHCenter | Qt::TextWordWrap, m_words);
            if (words.width() <= width)
                break;
        }
        constexpr double gap = 6;
        const double top = circle.center().y() - (size + gap + words.height()) / 2;
        painter.drawPixmap(QPointF(circle.center().x() - size / 2, top),
                           symbolPixmap(m_symbol, theme().quietText, size, devicePixelRatioF()));
        painter.setFont(font);
        painter.setPen(theme().text);
        painter.drawText(QRectF(room.left(), top + size + gap, room.width(), words.height() + 1),
                         Qt::AlignHCenter | Qt::TextWordWrap, m_words);
    }

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
        if (onResized)
            onResized();
    }

    Settings &m_settings;
    int m_size;
    bool m_isMirrored;
    /// As it is shown.
    QImage m_picture;
    Symbol m_symbol = Symbol::camera;
    QString m_words;
    PanelButton m_resize;
    PanelButton m_mirror;
};

} // namespace

struct CameraBubble::Panel {
    Q_DECLARE_TR_FUNCTIONS(CameraBubble)

public:
    Panel(Settings &settings, Clock &clock) : clock(clock), window(settings), placement(settings, "bubble") {
        window.onMoved = [this](QRect frame) { placement.save(frame); };
        window.onResized = [this] { refresh(); };
    }
    ~Panel() { release(); }

    /// Nothing more of the camera's is wanted.
    void release() {
        scope.cancel();
        observation.reset();
        if (state && state->showPreview)
            state->showPreview(0, {});
        state.reset();
    }

    void refresh() {
        if (!state)
            return;
        using Camera = CameraBubbleState::Camera;
        const bool isRunning = state->camera == Camera::running;
        if (state->showPreview)
            state->showPreview(isRunning ? window.pixels() : 0,
                               isRunning ? [this] { takePicture(); } : std::function<void()>());
        if (state->camera == Camera::missing)
            window.setWords(Symbol::cameraOff, inUsersLanguage(QString::fromStdString(state->problem)));
        else if (!hasPicture || !isRunning)
            window.setWords(Symbol::camera, tr("Starting…"));
        hasPicture = hasPicture && isRunning;
    }

    void takePicture() {
        const QImage picture = state && state->preview ? state->preview() : QImage();
        if (picture.isNull())
            return;
        hasPicture = true;
        pictureAt = clock.hostNow();
        window.setPicture(picture);
    }

    /// Says so when no more pictures come though the camera is there.
    Task<> watch(std::stop_token stop) {
        while (co_await clock.sleep(watchInterval, stop)) {
            if (hasPicture && clock.hostNow() - pictureAt > patienceSeconds) {
                hasPicture = false;
                window.setWords(Symbol::cameraOff, tr("No picture"));
            }
        }
    }

    Clock &clock;
    BubbleWindow window;
    PanelPlacement placement;
    std::shared_ptr<CameraBubbleState> state;
    Observation observation;
    bool hasPicture = false;
    double pictureAt = 0;
    TaskScope scope;
};

CameraBubble::CameraBubble(Settings &settings, Clock &clock)
    : m_panel(std::make_unique<Panel>(settings, clock)) {}

CameraBubble::~CameraBubble() = default;

void CameraBubble::show(std::shared_ptr<CameraBubbleState> state, const Display &display,
                        const QRect &taken) {
    Panel &panel = *m_panel;
    panel.release();
    panel.hasPicture = false;
    panel.state = std::move(state);
    panel.observation = panel.state->observe([&panel] { panel.refresh(); });
    panel.refresh();
    panel.scope.start(&panel, &Panel::watch);
    BubbleWindow &window = panel.window;
    const QScreen *screen = screenOf(display);
    const QRect room = PanelShell::instance().room(*screen);
    const QSize size = window.panelSize();
    const QPoint first(room.left() + bubbleDistance, room.bottom() + 1 - bubbleDistance - size.height());
    // Its picture is recorded as it is; in the screen's it would be twice.
    const auto place =
        placeOutOfPicture(window, *screen, panel.placement.restore(*screen, size).value_or(first), taken);
    if (place && window.placePanel(*place))
        window.showPanel();
}

void CameraBubble::hide() {
    m_panel->release();
    m_panel->window.hide();
}

} // namespace vantrell
