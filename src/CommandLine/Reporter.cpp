// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "CommandLine/Reporter.h"

#include "Support/FilePath.h"

#include <nlohmann/json.hpp>

#include <cstdint>
#include <cstdio>

namespace vantrell {

namespace {

/// Control characters, of which terminals take orders, as question marks; lines stay lines.
std::string harmless(std::string text) {
    const auto at = [&text](std::size_t i) { return i < text.size() ? std::uint8_t(text[i]) : 0; };
    for (std::size_t i = 0; i < text.size(); ++i) {
        if ((at(i) < 0x20 && text[i] != '\n') || at(i) == 0x7f)
            text[i] = '?';
        else if (at(i) == 0xc2 && at(i + 1) >= 0x80 && at(i + 1) < 0xa0)
            text.replace(i, 2, "?");
    }
    return text;
}

void print(std::FILE *out, const std::string &line) {
    std::fprintf(out, "%s\n", line.c_str());
    std::fflush(out);
}

} // namespace

Reporter::Reporter(bool json) : m_json(json) {}

void Reporter::result(const nlohmann::json &object, const std::string &text) const {
    print(stdout,
          m_json ? object.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace) : harmless(text));
}

void Reporter::failure(const std::string &sentence) const {
    if (m_json)
        result({{"error", sentence}}, {});
    else
        print(stderr, harmless(sentence));
}

void Reporter::failure(const std::string &sentence, const std::filesystem::path &file) const {
    if (m_json)
        result({{"error", sentence}, {"file", textOfPath(file)}}, {});
    else
        failure(file.string() + ": " + sentence);
}

void Reporter::note(const std::string &text) const {
    if (!m_json)
        print(stderr, harmless(text));
}

} // namespace vantrell
