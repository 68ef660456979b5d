// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "CommandLine/UploadProgress.h"

#include <string>
#include <variant>
#include <vector>

namespace vantrell {

UploadProgress::UploadProgress(UploadRun &run)
    : m_run(run), m_observation(run.shelf().observe([this] { show(); })) {}

void UploadProgress::show() {
    std::vector<std::string> lines;
    int waiting = 0;
    for (const ShelfItem &item : m_run.shelf().items()) {
        if (!item.entryId || !std::holds_alternative<ShelfItem::Uploading>(item.status))
            continue;
        if (m_run.isRunning(*item.entryId))
            lines.push_back(item.fileURL().value_or("").filename().string() + "  " + item.statusText());
        else
            ++waiting;
    }
    if (waiting > 0)
        lines.push_back(std::to_string(waiting) + " more waiting");
    m_lines.show(lines);
}

} // namespace vantrell
