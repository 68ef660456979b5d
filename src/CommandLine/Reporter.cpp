// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "CommandLine/Reporter.h"

#include "Support/FilePath.h"

#include <nlohmann/json.hpp>

#include <cstdio>

#include <unistd.h>

namespace vantrell {

Reporter::Reporter(bool json) : m_json(json), m_onTerminal(::isatty(STDERR_FILENO) == 1) {}

void Reporter::result(const nlohmann::json &object, const std::string &text) const {
    const std::string line =
        m_json ? object.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace) : text;
    std::fprintf(stdout, "%s\n", line.c_str());
    std::fflush(stdout);
}

void Reporter::failure(const std::string &sentence) const {
    if (m_json)
        result({{"error", sentence}}, {});
    else
        std::fprintf(stderr, "%s\n", sentence.c_str());
}

void Reporter::failure(const std::string &sentence, const std::filesystem::path &file) const {
    if (m_json)
        result({{"error", sentence}, {"file", textOfPath(file)}}, {});
    else
        failure(file.string() + ": " + sentence);
}

void Reporter::note(const std::string &text) const {
    if (!m_json)
        std::fprintf(stderr, "%s\n", text.c_str());
}

void Reporter::progress(const std::string &text) {
    if (!m_onTerminal)
        return;
    if (text.empty()) {
        if (m_inProgress)
            std::fputc('\n', stderr);
        m_inProgress = false;
        return;
    }
    std::fprintf(stderr, "\r\x1b[K%s", text.c_str());
    std::fflush(stderr);
    m_inProgress = true;
}

} // namespace vantrell
