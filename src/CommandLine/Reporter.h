// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include <nlohmann/json_fwd.hpp>

#include <filesystem>
#include <string>

namespace vantrell {

/// What a command tells its user: results on standard output, as text or as one JSON object a line; remarks
/// on standard error. Control characters in a text, which may hold what other programs and servers call their
/// things, are not let through to the terminal. Main thread.
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

private:
    bool m_json;
};

} // namespace vantrell
