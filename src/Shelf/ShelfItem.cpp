// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Shelf/ShelfItem.h"

namespace vantrell {

namespace {

struct StatusText {
    std::string operator()(const ShelfItem::Uploading &uploading) const {
        if (uploading.progress <= 0)
            return "Uploading…";
        // 0.29 * 100 is a hair below 29: what is shown is the number that was meant.
        return "Uploading " + std::to_string(int(uploading.progress * 100 + 1e-9)) + "%";
    }
    std::string operator()(const ShelfItem::Done &) const { return "In your library"; }
    std::string operator()(const ShelfItem::Failed &failed) const { return failed.message; }
    std::string operator()(const ShelfItem::Processing &) const { return "Processing…"; }
    std::string operator()(const ShelfItem::NeedsProject &) const {
        return "Pick a project in the menu bar first";
    }
};

} // namespace

std::optional<std::filesystem::path> ShelfItem::fileURL() const {
    return capture ? std::optional(capture->fileURL) : restoredFileURL;
}

std::optional<std::int64_t> ShelfItem::durationMs() const {
    return capture ? capture->durationMs : restoredDurationMs;
}

const std::string &ShelfItem::title() const {
    return capture && !capture->name.empty() ? capture->name : placeholderName;
}

std::string ShelfItem::statusText() const {
    return std::visit(StatusText{}, status);
}

} // namespace vantrell
