# SPDX-License-Identifier: GPL-3.0-or-later
# Every library that comes from the system, in one place.
find_package(Qt6 6.4 REQUIRED COMPONENTS Core Gui Widgets DBus Svg)
find_package(QCoro6 REQUIRED COMPONENTS Core DBus)
find_package(nlohmann_json REQUIRED)
find_package(CURL REQUIRED)
find_package(GTest REQUIRED)
find_package(PkgConfig REQUIRED)
find_package(Threads REQUIRED)
include(GoogleTest)

pkg_check_modules(FFMPEG REQUIRED IMPORTED_TARGET libavformat libavcodec libavutil libswscale libswresample)
pkg_check_modules(X264 REQUIRED IMPORTED_TARGET x264)
# Comes without a description for pkg-config.
find_path(YUV_INCLUDE_DIR libyuv.h REQUIRED)
find_library(YUV_LIBRARY yuv REQUIRED)
pkg_check_modules(XCB REQUIRED IMPORTED_TARGET xcb xcb-shm xcb-damage xcb-xfixes xcb-composite xcb-randr xcb-render xcb-shape xcb-xinput xcb-xkb xcb-screensaver xcb-ewmh xcb-icccm)
pkg_check_modules(WAYLAND REQUIRED IMPORTED_TARGET wayland-client)
pkg_check_modules(PULSE REQUIRED IMPORTED_TARGET libpulse)
pkg_check_modules(PIPEWIRE REQUIRED IMPORTED_TARGET libpipewire-0.3)
pkg_check_modules(GIO REQUIRED IMPORTED_TARGET gio-2.0)
pkg_check_modules(SECRET REQUIRED IMPORTED_TARGET libsecret-1)
pkg_check_modules(CRYPTO REQUIRED IMPORTED_TARGET libcrypto)
