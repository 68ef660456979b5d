// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "App/CrashNotice.h"

#include "Capture/CaptureStorage.h"
#include "Support/BlockingWork.h"
#include "Support/Log.h"

#include <algorithm>
#include <vector>

namespace vantrell {

namespace {

constexpr const char *lastToldKey = "lastCrashTold";
constexpr std::size_t mostKept = 10;

/// The reports' names, oldest first: a name begins with its time. Older ones than the newest few go.
std::vector<std::string> reports() {
    const std::filesystem::path folder = CaptureStorage::crashFolder();
    std::vector<std::string> names;
    std::error_code error;
    for (std::filesystem::directory_iterator entry(folder, error), end; !error && entry != end;
         entry.increment(error))
        if (entry->path().filename().string().starts_with("crash-"))
            names.push_back(entry->path().filename().string());
    std::ranges::sort(names);
    while (names.size() > mostKept) {
        std::filesystem::remove(folder / names.front(), error);
        names.erase(names.begin());
    }
    return names;
}

} // namespace

Task<> CrashNotice::tellIfNew(Ask ask, std::stop_token stop) {
    const auto names = co_await runBlocking(reports, stop);
    if (!names || names->empty())
        co_return;
    const std::string newest = names->back();
    if (newest <= m_settings.store().string(lastToldKey).value_or(""))
        co_return;
    m_settings.store().setString(lastToldKey, newest);
    qCInfo(logApp, "a crash left %s", newest.c_str());
    const int answer =
        co_await ask("Vantrell Capture ended unexpectedly",
                     "What it was doing is in a file on this computer, for a bug report if you want to write "
                     "one. Nothing was sent anywhere. A recording that was cut off is on the shelf.",
                     {"Open Folder", "OK"}, stop);
    if (answer == 0 && !stop.stop_requested())
        m_opener.showInFileManager(CaptureStorage::crashFolder() / newest);
}

} // namespace vantrell
