// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

/* Loaded into xdg-desktop-portal-wlr 0.7 on a compositor that draws without a graphics card: that version
 * casts a screen only after it was told of a DMA-BUF format, which such a compositor never tells of. Behind
 * each offer of shared memory one is made up; no modifiers are found for it, and shared memory is taken. */
#define _GNU_SOURCE
#include <dlfcn.h>
#include <stdint.h>
#include <string.h>

struct wl_proxy;
extern const char *wl_proxy_get_class(struct wl_proxy *);

/* The events of zwlr_screencopy_frame_v1 in the protocol's order. */
struct frame_events {
    void (*buffer)(void *, struct wl_proxy *, uint32_t, uint32_t, uint32_t, uint32_t);
    void (*flags)(void *, struct wl_proxy *, uint32_t);
    void (*ready)(void *, struct wl_proxy *, uint32_t, uint32_t, uint32_t);
    void (*failed)(void *, struct wl_proxy *);
    void (*damage)(void *, struct wl_proxy *, uint32_t, uint32_t, uint32_t, uint32_t);
    void (*linux_dmabuf)(void *, struct wl_proxy *, uint32_t, uint32_t, uint32_t);
    void (*buffer_done)(void *, struct wl_proxy *);
};

static const struct frame_events *theirs;
static struct frame_events ours;

static void on_buffer(void *data, struct wl_proxy *frame, uint32_t format, uint32_t width, uint32_t height,
                      uint32_t stride) {
    const uint32_t xrgb8888 = 0x34325258;
    theirs->buffer(data, frame, format, width, height, stride);
    theirs->linux_dmabuf(data, frame, xrgb8888, width, height);
}

__attribute__((visibility("default"))) int wl_proxy_add_listener(struct wl_proxy *proxy,
                                                                 void (**events)(void), void *data) {
    typedef int (*add_listener)(struct wl_proxy *, void (**)(void), void *);
    static add_listener next;
    if (!next)
        next = (add_listener)dlsym(RTLD_NEXT, "wl_proxy_add_listener");
    if (strcmp(wl_proxy_get_class(proxy), "zwlr_screencopy_frame_v1") == 0) {
        theirs = (const struct frame_events *)events;
        ours = *theirs;
        ours.buffer = on_buffer;
        events = (void (**)(void))&ours;
    }
    return next(proxy, events, data);
}
