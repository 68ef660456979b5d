// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Support/ModuleMap.h"

#include <algorithm>
#include <charconv>
#include <cstring>
#include <string_view>

#include <fcntl.h>
#include <unistd.h>

namespace vantrell {

namespace {

std::uintptr_t hexNumber(std::string_view &text) {
    std::uintptr_t number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number, 16);
    text.remove_prefix(std::size_t(end - text.data()));
    return error == std::errc() ? number : 0;
}

} // namespace

void ModuleMap::read() {
    m_count = 0;
    const int file = ::open("/proc/self/maps", O_RDONLY | O_CLOEXEC);
    if (file < 0)
        return;
    static char line[1024];
    static char block[4096];
    std::size_t length = 0;
    for (ssize_t got = 0; (got = ::read(file, block, sizeof block)) > 0;)
        for (ssize_t i = 0; i < got; ++i) {
            if (block[i] != '\n') {
                // The rest of a longer path is not needed.
                if (length < sizeof line)
                    line[length++] = block[i];
                continue;
            }
            addLine(line, length);
            length = 0;
        }
    ::close(file);
}

void ModuleMap::addLine(const char *line, std::size_t length) {
    // 7f10-7f20 r-xp 00001000 08:01 123   /usr/lib/libc.so.6
    std::string_view text(line, length);
    const std::uintptr_t begin = hexNumber(text);
    if (text.empty() || m_count == m_modules.size())
        return;
    text.remove_prefix(1);
    const std::uintptr_t end = hexNumber(text);
    if (text.size() < 6)
        return;
    const bool isCode = text[3] == 'x';
    text.remove_prefix(6);
    const std::uintptr_t offset = hexNumber(text);
    const std::size_t slash = text.rfind('/');
    if (slash == std::string_view::npos)
        return;
    // A file's parts follow each other, and its addresses count from the first.
    if (offset == 0)
        m_base = begin;
    if (!isCode)
        return;
    Module &module = m_modules[m_count++];
    module.begin = begin;
    module.end = end;
    module.base = m_base;
    const std::string_view name = text.substr(slash + 1);
    const std::size_t fits = std::min(name.size(), sizeof module.name - 1);
    std::memcpy(module.name, name.data(), fits);
    module.name[fits] = '\0';
}

void ModuleMap::describe(std::uintptr_t address, CrashText &text) const {
    for (std::size_t i = 0; i < m_count; ++i) {
        const Module &module = m_modules[i];
        if (address >= module.begin && address < module.end) {
            text.add(module.name).add("+0x").addHex(address - module.base);
            return;
        }
    }
    text.add("0x").addHex(address);
}

} // namespace vantrell
