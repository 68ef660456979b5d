// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "ProcessTree.h"

#include <charconv>
#include <filesystem>
#include <fstream>
#include <map>
#include <string>
#include <vector>

namespace vantrell::bench {

namespace {

pid_t parentOf(pid_t pid) {
    std::ifstream file("/proc/" + std::to_string(pid) + "/stat");
    std::string text;
    std::getline(file, text);
    const std::size_t afterName = text.rfind(')');
    if (afterName == std::string::npos || afterName + 4 > text.size())
        return -1;
    return std::atoi(text.c_str() + afterName + 4);
}

std::vector<pid_t> treeOf(pid_t root) {
    std::multimap<pid_t, pid_t> children;
    for (const auto &entry : std::filesystem::directory_iterator("/proc")) {
        const std::string name = entry.path().filename();
        pid_t pid = 0;
        const auto [end, error] = std::from_chars(name.data(), name.data() + name.size(), pid);
        if (error == std::errc() && end == name.data() + name.size())
            children.emplace(parentOf(pid), pid);
    }
    std::vector<pid_t> tree{root};
    for (std::size_t i = 0; i < tree.size(); ++i) {
        const auto [first, last] = children.equal_range(tree[i]);
        for (auto child = first; child != last; ++child)
            tree.push_back(child->second);
    }
    return tree;
}

std::uint64_t field(const std::string &path, const std::string &name) {
    std::ifstream file(path);
    for (std::string line; std::getline(file, line);) {
        if (line.starts_with(name))
            return std::strtoull(line.c_str() + name.size(), nullptr, 10);
    }
    return 0;
}

} // namespace

ProcessTreeUse useOf(pid_t root) {
    ProcessTreeUse use;
    for (const pid_t pid : treeOf(root)) {
        const std::string base = "/proc/" + std::to_string(pid);
        std::error_code error;
        for (const auto &task : std::filesystem::directory_iterator(base + "/task", error)) {
            // Nanoseconds on a processor: the usual counters tick only a hundred times a second.
            std::ifstream stat(task.path() / "schedstat");
            double nanoseconds = 0;
            if (stat >> nanoseconds)
                use.cpuSeconds += nanoseconds * 1e-9;
            use.voluntarySwitches += field(task.path() / "status", "voluntary_ctxt_switches:");
        }
        use.pssMiB += double(field(base + "/smaps_rollup", "Pss:")) / 1024;
    }
    return use;
}

} // namespace vantrell::bench
