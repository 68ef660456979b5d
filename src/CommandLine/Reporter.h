// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include <nlohmann/json_fwd.hpp>

#include <filesystem>
#include <string>

namespace vantrell {

/// What a command tells its user: results on standard output, as text or as one JSON object a line; remarks
/// and progress on standard error. Main thread.
class Reporter {
public:
    explicit Reporter(bool json);

    void result(const nlohmann::json &object, const std::string &text) const;

    /// `{"error": sentence}` or the sentence on standard error.
    void failure(const std::string &sentence) const;
    /// The same, about one of several files.
    void failure(const std::string &sentence, const std::filesystem::path &file) const;

    /// A remark for a person; left out with JSON.
    void note(const std::string &text) const;

    /// A line that is written over by the next one; only on a terminal. Empty ends it.
    void progress(const std::string &text);

private:
    bool m_json;
    bool m_onTerminal;
    bool m_inProgress = false;
};

} // namespace vantrell
