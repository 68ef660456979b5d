// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "BatchFolder.h"

#include "TestSupport/TestFile.h"

#include <algorithm>
#include <fstream>
#include <random>

namespace vantrell::testing {

namespace {

std::filesystem::path markerOf(const std::filesystem::path &file) {
    return std::filesystem::path(file).replace_extension(".handed-over");
}

std::filesystem::path bareMarkerOf(const std::filesystem::path &file) {
    return std::filesystem::path(file).replace_extension(".without-side-files");
}

} // namespace

void BatchFolder::fill(int count, unsigned seed) const {
    std::mt19937 random(seed);
    std::filesystem::create_directories(m_folder);
    for (int i = 0; i < count; ++i) {
        const auto file = m_folder / ("capture " + std::to_string(100 + i) + ".mov");
        // Ends on a chunk, just beyond one, and anywhere.
        const std::int64_t sizes[] = {1, 100'000, 100'001, 400'000,
                                      std::uniform_int_distribution<std::int64_t>(2, 600'000)(random)};
        writeTestFile(file, i < 4 ? sizes[i] : sizes[4], random());
    }
}

std::vector<std::filesystem::path> BatchFolder::files() const {
    std::vector<std::filesystem::path> found;
    for (const auto &entry : std::filesystem::directory_iterator(m_folder)) {
        if (entry.path().extension() == ".mov")
            found.push_back(entry.path());
    }
    std::ranges::sort(found);
    return found;
}

std::shared_ptr<const CaptureResult> BatchFolder::capture(const std::filesystem::path &file) const {
    CaptureResult capture;
    capture.mime = "video/quicktime";
    capture.fileURL = file;
    capture.name = file.stem().string();
    capture.durationMs = 1000;
    capture.metadata.type = "recording";
    capture.thumbnailJPEG = "thumbnail of " + capture.name;
    return std::make_shared<const CaptureResult>(std::move(capture));
}

bool BatchFolder::wasHandedOver(const std::filesystem::path &file) const {
    return std::filesystem::exists(markerOf(file));
}

void BatchFolder::noteHandedOver(const std::filesystem::path &file, bool withSideFiles) const {
    if (!withSideFiles)
        std::ofstream(bareMarkerOf(file)).flush();
    std::ofstream(markerOf(file)).flush();
}

bool BatchFolder::mustHaveSideFiles(const std::filesystem::path &file) const {
    return !std::filesystem::exists(bareMarkerOf(file));
}

} // namespace vantrell::testing
