// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include <QCoreApplication>

#include <gmock/gmock.h>

#if defined(__has_feature)
#if __has_feature(thread_sanitizer)
/// Qt and GLib are not built with the sanitizer and lock in ways that it cannot see: only what our own code
/// touches is judged.
extern "C" const char *
__tsan_default_options() { // NOLINT(bugprone-reserved-identifier,readability-identifier-naming)
    return "ignore_noninstrumented_modules=1";
}
#endif
#if __has_feature(address_sanitizer)
/// What is freed stays resident for a while, to be found when it is used again. Tests that look at the memory
/// of the process would take more of it for a leak.
extern "C" const char *
__asan_default_options() { // NOLINT(bugprone-reserved-identifier,readability-identifier-naming)
    return "quarantine_size_mb=16";
}
#endif
#endif

int main(int argc, char **argv) {
    testing::InitGoogleMock(&argc, argv);
    QCoreApplication application(argc, argv);
    return RUN_ALL_TESTS();
}
