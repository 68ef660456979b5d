// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Overlay/OverlayCanvas.h"

#include "Overlay/OverlayColours.h"
#include "Panels/DesktopLink.h"

#include <QPainter>
#include <QWidget>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <utility>

#include <xcb/render.h>
#include <xcb/xcb.h>

namespace vantrell {

namespace {

template <typename T>
struct FreedByXcb {
    void operator()(T *memory) const { std::free(memory); }
};
template <typename T>
using FromXcb = std::unique_ptr<T, FreedByXcb<T>>;

/// Pictures go to the server in bands that fit into one request everywhere.
constexpr int bandBytes = 128 * 1024;
/// A larger part is drawn on the window at once: a pixmap of that size costs more than it hides.
constexpr qint64 mostBufferedPixels = 2048 * 1024;

xcb_render_color_t premultiplied(const QColor &colour) {
    const auto part = [&](int value) { return std::uint16_t(value * 257 * colour.alpha() / 255); };
    return {part(colour.red()), part(colour.green()), part(colour.blue()),
            std::uint16_t(colour.alpha() * 257)};
}

std::vector<xcb_rectangle_t> rectangles(const QRegion &region, const QPoint &origin) {
    std::vector<xcb_rectangle_t> all;
    for (const QRect &rect : region)
        all.push_back({std::int16_t(rect.x() - origin.x()), std::int16_t(rect.y() - origin.y()),
                       std::uint16_t(rect.width()), std::uint16_t(rect.height())});
    return all;
}

} // namespace

/// The server's side: the connection, what it can do, and the window.
struct OverlayCanvas::Server {
    xcb_connection_t *connection = nullptr;
    xcb_window_t root = XCB_NONE;
    int rootDepth = 0;
    xcb_window_t window = XCB_NONE;
    int windowDepth = 0;
    xcb_render_pictformat_t windowFormat = 0;
    xcb_render_pictformat_t alphaFormat = 0;
    xcb_gcontext_t windowContext = XCB_NONE;
    /// Copies the root with all the windows on it.
    xcb_gcontext_t screenContext = XCB_NONE;

    bool learn(xcb_visualid_t visual);
    void put(xcb_drawable_t target, xcb_gcontext_t context, int depth, const QImage &image,
             const QPoint &corner = {}) const;
};

bool OverlayCanvas::Server::learn(xcb_visualid_t visual) {
    const FromXcb<xcb_render_query_pict_formats_reply_t> reply(
        xcb_render_query_pict_formats_reply(connection, xcb_render_query_pict_formats(connection), nullptr));
    if (!reply)
        return false;
    for (auto formats = xcb_render_query_pict_formats_formats_iterator(reply.get()); formats.rem > 0;
         xcb_render_pictforminfo_next(&formats)) {
        const xcb_render_directformat_t &direct = formats.data->direct;
        if (formats.data->depth == 32 && direct.alpha_mask == 0xff && direct.alpha_shift == 24 &&
            direct.red_shift == 16 && direct.green_shift == 8 && direct.blue_shift == 0)
            alphaFormat = formats.data->id;
    }
    for (auto screens = xcb_render_query_pict_formats_screens_iterator(reply.get()); screens.rem > 0;
         xcb_render_pictscreen_next(&screens)) {
        for (auto depths = xcb_render_pictscreen_depths_iterator(screens.data); depths.rem > 0;
             xcb_render_pictdepth_next(&depths)) {
            const xcb_render_pictvisual_t *visuals = xcb_render_pictdepth_visuals(depths.data);
            for (int place = 0; place < xcb_render_pictdepth_visuals_length(depths.data); ++place) {
                if (visuals[place].visual == visual)
                    windowFormat = visuals[place].format;
            }
        }
    }
    return windowFormat != 0 && alphaFormat != 0;
}

void OverlayCanvas::Server::put(xcb_drawable_t target, xcb_gcontext_t context, int depth, const QImage &image,
                                const QPoint &corner) const {
    const int rows = std::max<int>(1, bandBytes / int(image.bytesPerLine()));
    for (int top = 0; top < image.height(); top += rows) {
        const int height = std::min(rows, image.height() - top);
        xcb_put_image(connection, XCB_IMAGE_FORMAT_Z_PIXMAP, target, context, std::uint16_t(image.width()),
                      std::uint16_t(height), std::int16_t(corner.x()), std::int16_t(corner.y() + top), 0,
                      std::uint8_t(depth), std::uint32_t(image.bytesPerLine() * height),
                      image.constScanLine(top));
    }
}

bool OverlayCanvas::hasServer() {
    return DesktopLink::serverOfQt();
}

std::unique_ptr<OverlayCanvas> OverlayCanvas::create(QWidget &window, const PixelRect &display,
                                                     bool isBlended) {
    xcb_connection_t *const connection = DesktopLink::serverOfQt();
    if (!connection)
        return nullptr;
    auto server = std::make_unique<Server>();
    server->connection = connection;
    server->window = xcb_window_t(window.winId());
    const auto geometryAsked = xcb_get_geometry(connection, server->window);
    const auto attributesAsked = xcb_get_window_attributes(connection, server->window);
    const FromXcb<xcb_get_geometry_reply_t> geometry(
        xcb_get_geometry_reply(connection, geometryAsked, nullptr));
    const FromXcb<xcb_get_window_attributes_reply_t> attributes(
        xcb_get_window_attributes_reply(connection, attributesAsked, nullptr));
    if (!geometry || !attributes || !server->learn(attributes->visual))
        return nullptr;
    server->root = geometry->root;
    server->windowDepth = geometry->depth;
    server->rootDepth = xcb_setup_roots_iterator(xcb_get_setup(connection)).data->root_depth;

    // Copies within the server tell nobody what they could not copy.
    const std::uint32_t quiet[] = {0};
    server->windowContext = xcb_generate_id(connection);
    xcb_create_gc(connection, server->windowContext, server->window, XCB_GC_GRAPHICS_EXPOSURES, quiet);
    const std::uint32_t withWindows[] = {XCB_SUBWINDOW_MODE_INCLUDE_INFERIORS, 0};
    server->screenContext = xcb_generate_id(connection);
    xcb_create_gc(connection, server->screenContext, server->root,
                  XCB_GC_SUBWINDOW_MODE | XCB_GC_GRAPHICS_EXPOSURES, withWindows);
    return std::unique_ptr<OverlayCanvas>(new OverlayCanvas(std::move(server), display, isBlended));
}

OverlayCanvas::OverlayCanvas(std::unique_ptr<Server> server, const PixelRect &display, bool isBlended)
    : m_server(std::move(server)), m_display(display), m_isBlended(isBlended) {}

OverlayCanvas::~OverlayCanvas() {
    if (m_pixmap != XCB_NONE)
        xcb_free_pixmap(m_server->connection, m_pixmap);
    xcb_free_gc(m_server->connection, m_server->windowContext);
    xcb_free_gc(m_server->connection, m_server->screenContext);
    xcb_flush(m_server->connection);
}

void OverlayCanvas::freezeScreen() {
    if (m_pixmap == XCB_NONE) {
        m_pixmap = xcb_generate_id(m_server->connection);
        xcb_create_pixmap(m_server->connection, std::uint8_t(m_server->rootDepth), m_pixmap, m_server->root,
                          std::uint16_t(m_display.width), std::uint16_t(m_display.height));
    }
    xcb_copy_area(m_server->connection, m_server->root, m_pixmap, m_server->screenContext,
                  std::int16_t(m_display.x), std::int16_t(m_display.y), 0, 0, std::uint16_t(m_display.width),
                  std::uint16_t(m_display.height));
    xcb_flush(m_server->connection);
}

void OverlayCanvas::setPicture(const QImage &picture, const QPoint &corner) {
    if (m_pixmap == XCB_NONE || m_server->rootDepth != 24)
        return;
    m_server->put(m_pixmap, m_server->screenContext, m_server->rootDepth,
                  picture.convertToFormat(QImage::Format_RGB32), corner);
    xcb_flush(m_server->connection);
}

QImage OverlayCanvas::pixels(const QRect &part) const {
    const QRect inside = part & QRect(0, 0, m_display.width, m_display.height);
    if (m_pixmap == XCB_NONE || inside.isEmpty() || m_server->rootDepth != 24)
        return {};
    const FromXcb<xcb_get_image_reply_t> reply(
        xcb_get_image_reply(m_server->connection,
                            xcb_get_image(m_server->connection, XCB_IMAGE_FORMAT_Z_PIXMAP, m_pixmap,
                                          std::int16_t(inside.x()), std::int16_t(inside.y()),
                                          std::uint16_t(inside.width()), std::uint16_t(inside.height()), ~0u),
                            nullptr));
    QImage image(inside.size(), QImage::Format_RGB32);
    const auto bytes = std::size_t(image.sizeInBytes());
    if (!reply || image.isNull() || std::size_t(xcb_get_image_data_length(reply.get())) < bytes)
        return {};
    std::memcpy(image.bits(), xcb_get_image_data(reply.get()), bytes);
    return image;
}

void OverlayCanvas::paint(const QRegion &part, const OverlayScene &scene, double scale) {
    const QRegion chrome = scene.chromePixels(scale);
    for (const QRect &rect : part &QRect(0, 0, m_display.width, m_display.height))
        paintRect(rect, chrome & rect, scene, scale);
    xcb_flush(m_server->connection);
}

void OverlayCanvas::paintRect(const QRect &rect, const QRegion &chromeThere, const OverlayScene &scene,
                              double scale) {
    xcb_connection_t *connection = m_server->connection;
    const auto width = std::uint16_t(rect.width()), height = std::uint16_t(rect.height());
    const bool isBuffered = qint64(rect.width()) * rect.height() <= mostBufferedPixels;
    xcb_drawable_t target = m_server->window;
    QPoint origin;
    if (isBuffered) {
        target = xcb_generate_id(connection);
        xcb_create_pixmap(connection, std::uint8_t(m_server->windowDepth), target, m_server->window, width,
                          height);
        origin = rect.topLeft();
    }
    const xcb_render_picture_t picture = xcb_generate_id(connection);
    xcb_render_create_picture(connection, picture, target, m_server->windowFormat, 0, nullptr);
    const auto fill = [&](std::uint8_t operation, const QColor &colour, const QRegion &region) {
        const auto places = rectangles(region, origin);
        if (!places.empty())
            xcb_render_fill_rectangles(connection, operation, picture, premultiplied(colour),
                                       std::uint32_t(places.size()), places.data());
    };
    const QPoint at = rect.topLeft() - origin;
    const QRegion lit = scene.lit & rect, dimmed = QRegion(rect) - scene.lit;
    if (m_isBlended) {
        fill(XCB_RENDER_PICT_OP_SRC, overlayColours::dimming, dimmed);
        fill(XCB_RENDER_PICT_OP_SRC, Qt::transparent, lit);
    } else {
        if (m_pixmap != XCB_NONE)
            xcb_copy_area(connection, m_pixmap, target, m_server->windowContext, std::int16_t(rect.x()),
                          std::int16_t(rect.y()), std::int16_t(at.x()), std::int16_t(at.y()), width, height);
        else
            fill(XCB_RENDER_PICT_OP_SRC, overlayColours::noPicture, rect);
        fill(XCB_RENDER_PICT_OP_OVER, overlayColours::dimming, dimmed);
    }

    // What is drawn upon it, of which a large part holds little.
    for (const QRect &chrome : chromeThere) {
        QImage image(chrome.size(), QImage::Format_ARGB32_Premultiplied);
        image.fill(Qt::transparent);
        QPainter painter(&image);
        painter.translate(-chrome.topLeft());
        painter.scale(scale, scale);
        scene.draw(painter, chrome, scale);
        painter.end();
        const xcb_pixmap_t drawn = xcb_generate_id(connection);
        xcb_create_pixmap(connection, 32, drawn, m_server->root, std::uint16_t(chrome.width()),
                          std::uint16_t(chrome.height()));
        const xcb_gcontext_t context = xcb_generate_id(connection);
        xcb_create_gc(connection, context, drawn, 0, nullptr);
        m_server->put(drawn, context, 32, image);
        const xcb_render_picture_t source = xcb_generate_id(connection);
        xcb_render_create_picture(connection, source, drawn, m_server->alphaFormat, 0, nullptr);
        xcb_render_composite(connection, XCB_RENDER_PICT_OP_OVER, source, XCB_NONE, picture, 0, 0, 0, 0,
                             std::int16_t(chrome.x() - origin.x()), std::int16_t(chrome.y() - origin.y()),
                             std::uint16_t(chrome.width()), std::uint16_t(chrome.height()));
        xcb_render_free_picture(connection, source);
        xcb_free_gc(connection, context);
        xcb_free_pixmap(connection, drawn);
    }
    xcb_render_free_picture(connection, picture);
    if (isBuffered) {
        xcb_copy_area(connection, target, m_server->window, m_server->windowContext, 0, 0,
                      std::int16_t(rect.x()), std::int16_t(rect.y()), width, height);
        xcb_free_pixmap(connection, target);
    }
}

} // namespace vantrell
