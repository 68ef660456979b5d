// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "ScenePainter.h"

#include "Scene.h"
#include "Support/HostTime.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <vector>

#include <poll.h>
#include <sys/mman.h>
#include <time.h>
#include <unistd.h>
#include <xcb/shm.h>
#include <xcb/xcb.h>
#include <xcb/xtest.h>

namespace vantrell::bench {

namespace {

/// Milliseconds.
constexpr int repaintInterval = 10;

/// A full-screen window that a picture in shared memory is put on.
class Screen {
public:
    explicit Screen() : m_xcb(xcb_connect(nullptr, nullptr)) {
        const xcb_screen_t *screen = xcb_setup_roots_iterator(xcb_get_setup(m_xcb)).data;
        m_root = screen->root;
        m_size = {screen->width_in_pixels, screen->height_in_pixels};
        m_window = xcb_generate_id(m_xcb);
        const std::uint32_t values[] = {1, XCB_EVENT_MASK_EXPOSURE};
        xcb_create_window(m_xcb, XCB_COPY_FROM_PARENT, m_window, m_root, 0, 0, screen->width_in_pixels,
                          screen->height_in_pixels, 0, XCB_WINDOW_CLASS_INPUT_OUTPUT, XCB_COPY_FROM_PARENT,
                          XCB_CW_OVERRIDE_REDIRECT | XCB_CW_EVENT_MASK, values);
        m_context = xcb_generate_id(m_xcb);
        xcb_create_gc(m_xcb, m_context, m_window, 0, nullptr);
        const int fd = ::memfd_create("scene", MFD_CLOEXEC);
        const std::size_t bytes = std::size_t(m_size.width) * std::size_t(m_size.height) * 4;
        if (::ftruncate(fd, off_t(bytes)) != 0)
            std::abort();
        m_memory = ::mmap(nullptr, bytes, PROT_READ | PROT_WRITE, MAP_SHARED, fd, 0);
        m_segment = xcb_generate_id(m_xcb);
        xcb_shm_attach_fd(m_xcb, m_segment, fd, 0);
        xcb_map_window(m_xcb, m_window);
        sync();
    }
    ~Screen() { xcb_disconnect(m_xcb); }

    PixelSize size() const { return m_size; }

    /// What `put` shows; not to be drawn into before `sync` has returned.
    Picture picture() const { return {m_size, static_cast<std::uint32_t *>(m_memory)}; }

    void put(const std::vector<PixelRect> &rects) {
        for (const PixelRect &rect : rects)
            put(m_window, rect, rect.x, rect.y);
    }
    /// Puts again what the display has lost, as programs do when something was over their window.
    void repaint() {
        while (xcb_generic_event_t *event = xcb_poll_for_event(m_xcb)) {
            if ((event->response_type & 0x7f) == XCB_EXPOSE) {
                const auto &lost = *reinterpret_cast<xcb_expose_event_t *>(event);
                put({{lost.x, lost.y, lost.width, lost.height}});
            }
            std::free(event);
        }
        sync();
    }
    /// Brings a picture to the display, for `putPart`.
    void upload(const Picture &wall) {
        m_wall = xcb_generate_id(m_xcb);
        xcb_create_pixmap(m_xcb, 24, m_wall, m_root, std::uint16_t(wall.size.width),
                          std::uint16_t(wall.size.height));
        m_covered = xcb_generate_id(m_xcb);
        xcb_create_pixmap(m_xcb, 24, m_covered, m_root, std::uint16_t(m_size.width),
                          std::uint16_t(m_size.height));
        const int rows = m_size.width * m_size.height / wall.size.width;
        for (int y = 0; y < wall.size.height; y += rows) {
            const int count = std::min(rows, wall.size.height - y);
            std::memcpy(m_memory, wall.row(y), std::size_t(wall.size.width) * std::size_t(count) * 4);
            xcb_shm_put_image(m_xcb, m_wall, m_context, std::uint16_t(wall.size.width), std::uint16_t(rows),
                              0, 0, std::uint16_t(wall.size.width), std::uint16_t(count), 0, std::int16_t(y),
                              24, XCB_IMAGE_FORMAT_Z_PIXMAP, 0, m_segment, 0);
            sync();
        }
    }
    /// Shows that part of the wall with a piece of the picture over it, in one stroke: what looks at the
    /// display in between sees the frame before.
    void putPart(const PixelRect &part, const PixelRect &piece) {
        const auto copy = [this](xcb_drawable_t from, xcb_drawable_t to, const PixelRect &rect, int x,
                                 int y) {
            xcb_copy_area(m_xcb, from, to, m_context, std::int16_t(rect.x), std::int16_t(rect.y),
                          std::int16_t(x), std::int16_t(y), std::uint16_t(rect.width),
                          std::uint16_t(rect.height));
        };
        const PixelRect covered{part.x + piece.x, part.y + piece.y, piece.width, piece.height};
        copy(m_wall, m_covered, covered, 0, 0);
        put(m_wall, piece, covered.x, covered.y);
        copy(m_wall, m_window, part, 0, 0);
        copy(m_covered, m_wall, {0, 0, piece.width, piece.height}, covered.x, covered.y);
    }
    /// As a device moves it, not as a program sets it.
    void movePointer(const Point &place) {
        xcb_test_fake_input(m_xcb, XCB_MOTION_NOTIFY, 0, XCB_CURRENT_TIME, m_root, std::int16_t(place.x),
                            std::int16_t(place.y), 0);
    }
    void sync() { std::free(xcb_get_input_focus_reply(m_xcb, xcb_get_input_focus(m_xcb), nullptr)); }

private:
    void put(xcb_drawable_t to, const PixelRect &rect, int x, int y) {
        xcb_shm_put_image(m_xcb, to, m_context, std::uint16_t(m_size.width), std::uint16_t(m_size.height),
                          std::uint16_t(rect.x), std::uint16_t(rect.y), std::uint16_t(rect.width),
                          std::uint16_t(rect.height), std::int16_t(x), std::int16_t(y), 24,
                          XCB_IMAGE_FORMAT_Z_PIXMAP, 0, m_segment, 0);
    }

    xcb_connection_t *m_xcb;
    xcb_window_t m_root;
    PixelSize m_size;
    xcb_window_t m_window;
    xcb_pixmap_t m_wall = XCB_NONE;
    /// What the wall has under the piece that is put over it.
    xcb_pixmap_t m_covered = XCB_NONE;
    xcb_gcontext_t m_context;
    void *m_memory;
    xcb_shm_seg_t m_segment;
};

void sleepUntil(double hostTime) {
    timespec time{};
    time.tv_sec = time_t(hostTime);
    time.tv_nsec = long((hostTime - double(time.tv_sec)) * 1e9);
    ::clock_nanosleep(CLOCK_MONOTONIC, TIMER_ABSTIME, &time, nullptr);
}

} // namespace

int paintScene(const std::string &name, double seconds, const std::filesystem::path &log) {
    Screen screen;
    const auto scene = Scene::make(name, screen.size());
    if (!scene)
        return 2;
    if (scene->wall())
        screen.upload(*scene->wall());
    Picture picture = screen.picture();
    scene->background(picture);
    screen.put({{0, 0, picture.size.width, picture.size.height}});
    screen.movePointer(scene->movesPointer()
                           ? pointerAt(0, picture.size)
                           : Point{double(picture.size.width - 1), double(picture.size.height - 1)});
    screen.sync();
    std::ofstream(log.string() + ".ready").put('\n');

    char byte = 0;
    for (pollfd start{STDIN_FILENO, POLLIN, 0}; ::poll(&start, 1, repaintInterval) == 0;)
        screen.repaint();
    if (::read(STDIN_FILENO, &byte, 1) != 1)
        return 1;
    struct Shown {
        int number;
        double time;
    };
    std::vector<Shown> shown;
    const double start = hostNow();
    const int frames = int(seconds * scene->rate());
    shown.reserve(std::size_t(frames));
    for (int n = 1; n <= frames; ++n) {
        const auto rects =
            scene->wall() ? std::vector{Scene::drawNumber(n, picture)} : scene->draw(n, picture);
        sleepUntil(start + n / scene->rate());
        if (scene->movesPointer())
            screen.movePointer(pointerAt(n, picture.size));
        else if (scene->wall())
            screen.putPart(scene->wallPart(n), rects.front());
        else
            screen.put(rects);
        screen.sync();
        shown.push_back({n, hostNow()});
    }
    {
        std::ofstream out(log);
        out.precision(9);
        out << std::fixed;
        for (const Shown &frame : shown)
            out << frame.number << ' ' << frame.time << '\n';
    }
    std::ofstream(log.string() + ".done").put('\n');
    while (::read(STDIN_FILENO, &byte, 1) == 1) {
    }
    return 0;
}

} // namespace vantrell::bench
