// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "TestSupport/TestFile.h"

#include <QCryptographicHash>
#include <QFile>

#include <algorithm>
#include <fstream>
#include <iterator>
#include <vector>

namespace vantrell::testing {

void writeTestFile(const std::filesystem::path &path, std::int64_t bytes, std::uint64_t seed) {
    std::ofstream out(path, std::ios::binary | std::ios::trunc);
    std::vector<std::uint64_t> block(8192);
    std::uint64_t state = seed * 0x9E3779B97F4A7C15ULL + 1;
    while (bytes > 0) {
        for (std::uint64_t &word : block) {
            state ^= state << 13;
            state ^= state >> 7;
            state ^= state << 17;
            word = state;
        }
        const std::int64_t count =
            std::min<std::int64_t>(bytes, std::int64_t(block.size() * sizeof(std::uint64_t)));
        out.write(reinterpret_cast<const char *>(block.data()), count);
        bytes -= count;
    }
}

std::string fileContents(const std::filesystem::path &path) {
    std::ifstream in(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
}

std::string sha256Of(const std::filesystem::path &path) {
    QFile file(QString::fromStdString(path.string()));
    QCryptographicHash hash(QCryptographicHash::Sha256);
    if (file.open(QIODevice::ReadOnly))
        hash.addData(&file);
    return hash.result().toHex().toStdString();
}

} // namespace vantrell::testing
