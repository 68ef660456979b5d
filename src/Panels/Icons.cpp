// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Panels/Icons.h"

#include <QIconEngine>
#include <QPainter>
#include <QSvgRenderer>

#include <algorithm>
#include <cmath>
#include <map>
#include <tuple>

namespace vantrell {

namespace {

/// The lines of a symbol in a box of 20 x 20. FILL stands for an area in the symbol's colour.
const char *drawing(Symbol symbol) {
    switch (symbol) {
    case Symbol::close:
        return R"(<path d="M5 5l10 10M15 5L5 15"/>)";
    case Symbol::area:
        return R"(<path d="M3.5 7V5A1.5 1.5 0 0 1 5 3.5h2M13 3.5h2A1.5 1.5 0 0 1 16.5 5v2M16.5 13v2a1.5 1.5 0 0 1-1.5 1.5h-2M7 16.5H5A1.5 1.5 0 0 1 3.5 15v-2"/>)";
    case Symbol::window:
        return R"(<rect x="2.9" y="3.7" width="14.2" height="12.6" rx="2.2"/><path d="M2.9 7.6h14.2"/>)";
    case Symbol::screen:
        return R"(<rect x="2.2" y="3.3" width="15.6" height="10.6" rx="2"/><path d="M7.3 17.1h5.4"/>)";
    case Symbol::microphone:
        return R"(<rect x="7.4" y="2.2" width="5.2" height="9.6" rx="2.6"/><path d="M4.3 9.4a5.7 5.7 0 0 0 11.4 0M10 15.1v2.6"/>)";
    case Symbol::microphoneOff:
        return R"(<path d="M7.4 7.8v1.4a2.6 2.6 0 0 0 3.9 2.25M12.6 8.7V4.8a2.6 2.6 0 0 0-4.9-1.15M4.3 9.4a5.7 5.7 0 0 0 8.7 4.85M15.5 10.9a5.7 5.7 0 0 0 .2-1.5M10 15.1v2.6M2.7 2.7l14.6 14.6"/>)";
    case Symbol::camera:
        return R"(<rect x="2" y="5.2" width="10.6" height="9.6" rx="2"/><path d="M12.6 9.2l4.3-2.5a.6.6 0 0 1 .9.5v5.6a.6.6 0 0 1-.9.5l-4.3-2.5"/>)";
    case Symbol::cameraOff:
        return R"(<path d="M7.7 5.2h2.9a2 2 0 0 1 2 2v3M12.6 9.2l4.3-2.5a.6.6 0 0 1 .9.5v5.6a.6.6 0 0 1-.9.5l-.7-.4M12.3 13.7a2 2 0 0 1-1.7 1.1H4a2 2 0 0 1-2-2V7.2a2 2 0 0 1 1.6-1.96M2.7 2.7l14.6 14.6"/>)";
    case Symbol::speaker:
        return R"(<path d="M2.8 7.8v4.4h2.9l4 3.5V4.3l-4 3.5zM12.8 7.5a3.6 3.6 0 0 1 0 5M15.1 5.2a6.8 6.8 0 0 1 0 9.6"/>)";
    case Symbol::speakerOff:
        return R"(<path d="M2.8 7.8v4.4h2.9l4 3.5V4.3l-4 3.5zM13 7.9l4.2 4.2M17.2 7.9L13 12.1"/>)";
    case Symbol::timer:
        return R"(<circle cx="10" cy="11.2" r="6.3"/><path d="M10 7.9v3.3l2.2 1.6M7.8 2.2h4.4"/>)";
    case Symbol::more:
        return R"(<g FILL><circle cx="4.4" cy="10" r="1.5"/><circle cx="10" cy="10" r="1.5"/><circle cx="15.6" cy="10" r="1.5"/></g>)";
    case Symbol::pause:
        return R"(<path d="M7.2 4.8v10.4M12.8 4.8v10.4"/>)";
    case Symbol::play:
        return R"(<path d="M6.8 4.5v11l9-5.5z"/>)";
    case Symbol::restart:
        return R"(<path d="M4.2 10.6a5.9 5.9 0 1 0 1.9-5L3.9 7.5M3.9 3.6v3.9h3.9"/>)";
    case Symbol::trash:
        return R"(<path d="M3.5 5.6h13M7.7 5.3V3.2h4.6v2.1M5.2 5.9l.7 10.9h8.2l.7-10.9M8.5 9v4.5M11.5 9v4.5"/>)";
    case Symbol::stop:
        return R"(<rect x="4.6" y="4.6" width="10.8" height="10.8" rx="2.6" FILL/>)";
    case Symbol::record:
        return R"(<circle cx="10" cy="10" r="5.6" FILL/>)";
    case Symbol::still:
        return R"(<path d="M2.4 7.5a1.7 1.7 0 0 1 1.7-1.7h1.7l1.5-2.2h5.4l1.5 2.2h1.7a1.7 1.7 0 0 1 1.7 1.7v6.8a1.7 1.7 0 0 1-1.7 1.7H4.1a1.7 1.7 0 0 1-1.7-1.7z"/><circle cx="10" cy="10.7" r="2.9"/>)";
    case Symbol::check:
        return R"(<path d="M4 10.6l4 4 8-9"/>)";
    case Symbol::chevronDown:
        return R"(<path d="M5.5 8l4.5 4.5L14.5 8"/>)";
    case Symbol::chevronUp:
        return R"(<path d="M5.5 12.3l4.5-4.5 4.5 4.5"/>)";
    case Symbol::retry:
        return R"(<path d="M15.7 8.3A6 6 0 0 0 4.6 7.5M4.3 11.7a6 6 0 0 0 11.1.8M4.5 4v3.6h3.6M15.5 16v-3.6h-3.6"/>)";
    case Symbol::open:
        return R"(<path d="M8.6 4.2H5.3a1.8 1.8 0 0 0-1.8 1.8v8.7a1.8 1.8 0 0 0 1.8 1.8H14a1.8 1.8 0 0 0 1.8-1.8v-3.3M11.8 3.5h4.7v4.7M16.3 3.7l-7 7"/>)";
    case Symbol::link:
        return R"(<path d="M8.3 11.7a3.3 3.3 0 0 0 4.9.2l2.7-2.7a3.3 3.3 0 0 0-4.7-4.7l-1.2 1.2M11.7 8.3a3.3 3.3 0 0 0-4.9-.2l-2.7 2.7a3.3 3.3 0 0 0 4.7 4.7l1.2-1.2"/>)";
    case Symbol::folder:
        return R"(<path d="M2.6 6a1.7 1.7 0 0 1 1.7-1.7h3.3l2 2.3h6.1a1.7 1.7 0 0 1 1.7 1.7v5.9a1.7 1.7 0 0 1-1.7 1.7H4.3a1.7 1.7 0 0 1-1.7-1.7z"/>)";
    case Symbol::user:
        return R"(<circle cx="10" cy="6.6" r="3.3"/><path d="M3.8 16.7a6.2 5.2 0 0 1 12.4 0"/>)";
    case Symbol::update:
        return R"(<path d="M10 3.2v9M6.3 8.7l3.7 3.6 3.7-3.6M3.9 13.6v1.3a1.9 1.9 0 0 0 1.9 1.9h8.4a1.9 1.9 0 0 0 1.9-1.9v-1.3"/>)";
    case Symbol::warning:
        return R"(<path d="M10 3.2l7.3 12.9H2.7zM10 8.3v3.4"/><circle cx="10" cy="13.9" r=".5" FILL/>)";
    case Symbol::mark:
        return R"(<path d="M3.2 4.6l5 10.8a2 2 0 0 0 3.6 0l2.1-4.5"/><circle cx="15.3" cy="6" r="2.2" FILL/>)";
    case Symbol::options:
        return R"(<path d="M2.8 6.2h7.7M15.3 6.2h1.9M2.8 13.8h1.9M9.5 13.8h7.7"/><circle cx="12.9" cy="6.2" r="2.3"/><circle cx="7.1" cy="13.8" r="2.3"/>)";
    case Symbol::mirror:
        return R"(<path d="M10 2.8v14.4M7 5.8L2.7 14.2H7zM13 5.8l4.3 8.4H13z"/>)";
    case Symbol::resize:
        return R"(<path d="M11.8 3.5h4.7v4.7M16.3 3.7l-4.8 4.8M8.2 16.5H3.5v-4.7M3.7 16.3l4.8-4.8"/>)";
    }
    return "";
}

QPixmap rendered(Symbol symbol, const QColor &color, double points, double scale) {
    const int pixels = int(std::lround(points * scale));
    QImage image(pixels, pixels, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    const QByteArray ink = color.name(QColor::HexRgb).toLatin1();
    QByteArray svg =
        R"(<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 20 20"><g fill="none" stroke=")" + ink +
        R"(" stroke-width="1.8" stroke-linecap="round" stroke-linejoin="round">)" + drawing(symbol) +
        "</g></svg>";
    svg.replace("FILL", "fill=\"" + ink + "\" stroke=\"none\"");
    QSvgRenderer renderer(svg);
    QPainter painter(&image);
    // As a whole: where lines cross, the symbol would else be less transparent.
    renderer.render(&painter, QRectF(0, 0, pixels, pixels));
    painter.setCompositionMode(QPainter::CompositionMode_DestinationIn);
    painter.fillRect(image.rect(), QColor(0, 0, 0, color.alpha()));
    painter.end();
    QPixmap pixmap = QPixmap::fromImage(std::move(image));
    pixmap.setDevicePixelRatio(scale);
    return pixmap;
}

class SymbolEngine final : public QIconEngine {
public:
    SymbolEngine(Symbol symbol, const QColor &color) : m_symbol(symbol), m_color(color) {}

    void paint(QPainter *painter, const QRect &rect, QIcon::Mode mode, QIcon::State) override {
        const double scale = painter->device() ? painter->device()->devicePixelRatio() : 1;
        painter->drawPixmap(rect,
                            symbolPixmap(m_symbol, tint(mode), std::min(rect.width(), rect.height()), scale));
    }
    QPixmap pixmap(const QSize &size, QIcon::Mode mode, QIcon::State state) override {
        return scaledPixmap(size, mode, state, 1);
    }
    /// `size` counts the device's pixels.
    QPixmap scaledPixmap(const QSize &size, QIcon::Mode mode, QIcon::State, qreal scale) override {
        return symbolPixmap(m_symbol, tint(mode), std::min(size.width(), size.height()) / scale, scale);
    }
    QIconEngine *clone() const override { return new SymbolEngine(m_symbol, m_color); }
    bool isNull() override { return false; }

private:
    QColor tint(QIcon::Mode mode) const {
        QColor color = m_color;
        if (mode == QIcon::Disabled)
            color.setAlphaF(color.alphaF() * 0.4F);
        return color;
    }

    Symbol m_symbol;
    QColor m_color;
};

} // namespace

QPixmap symbolPixmap(Symbol symbol, const QColor &color, double points, double scale) {
    using Key = std::tuple<int, QRgb, int, int>;
    constexpr int fraction = 100;
    static std::map<Key, QPixmap> cache;
    // Tints come from two themes and sizes from a few layouts; whoever makes more of them starts anew.
    constexpr std::size_t most = 400;
    if (cache.size() > most)
        cache.clear();
    const Key key(int(symbol), color.rgba(), int(std::lround(points * fraction)),
                  int(std::lround(scale * fraction)));
    const auto known = cache.find(key);
    if (known != cache.end())
        return known->second;
    return cache.emplace(key, rendered(symbol, color, points, scale)).first->second;
}

QIcon symbolIcon(Symbol symbol, const QColor &color) {
    return QIcon(new SymbolEngine(symbol, color));
}

} // namespace vantrell
