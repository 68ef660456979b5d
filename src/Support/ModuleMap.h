// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Support/CrashText.h"

#include <array>
#include <cstddef>
#include <cstdint>

namespace vantrell {

/// Which file of the process an address belongs to. For signal handlers: allocates nothing, and reads
/// /proc/self/maps with plain system calls.
class ModuleMap {
public:
    void read();

    /// "libc.so.6+0x3c050", which addr2line takes apart, or the bare address. The file's folder is left out:
    /// it may tell who the user is.
    void describe(std::uintptr_t address, CrashText &text) const;

private:
    struct Module {
        std::uintptr_t begin = 0;
        std::uintptr_t end = 0;
        /// Where the file's first byte lies.
        std::uintptr_t base = 0;
        char name[64] = "";
    };
    void addLine(const char *line, std::size_t length);

    std::array<Module, 512> m_modules;
    std::size_t m_count = 0;
    std::uintptr_t m_base = 0;
};

} // namespace vantrell
