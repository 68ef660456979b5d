// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "App/Ask.h"
#include "App/PortableCopy.h"
#include "App/ReleaseFeed.h"
#include "App/UpdateError.h"
#include "Http/HttpClient.h"
#include "Support/Clock.h"
#include "Support/Task.h"
#include "Support/TaskScope.h"

#include <expected>
#include <filesystem>
#include <functional>
#include <optional>
#include <stop_token>
#include <string>

namespace vantrell {

/// Updates of a copy that no package manager looks after, from a signed list of releases. What it finds by
/// itself it only tells; windows come when the user asks. A release is downloaded beside the running copy and
/// takes its place at once when it is whole and wanted, and never while a recording is under way. Main
/// thread.
class Updater {
public:
    struct Options {
        /// https, or http on this computer. Empty: the system brings the updates.
        std::string feed;
        /// Ed25519, 32 bytes.
        std::string publicKey;
        std::string currentVersion;
        std::string architecture;
        /// None: a package of the distribution, which the system updates.
        std::optional<PortableCopy> copy;
        /// A recording is under way, or being saved: nothing may be restarted.
        std::function<bool()> isBusy;
        /// Starts the new copy and ends this process; false when it does not start.
        std::function<bool(const std::filesystem::path &program)> relaunch;

        /// As this program was built and lies. `isBusy` is never.
        static Options builtIn();
    };

    /// The client and the clock must outlive the updater.
    Updater(Options options, HttpClient &http, Clock &clock, Ask ask);
    Updater(const Updater &) = delete;
    Updater &operator=(const Updater &) = delete;

    /// Looks by itself from now on, soon and then once a day, and clears up after an update.
    void start();

    /// Not while a check or an update is under way.
    bool canCheckForUpdates() const { return !m_isInSession; }
    /// The user wants to know, or to have what was announced. May be done before it returns.
    void checkForUpdates();

    /// The version that may be had; from a look of its own as well as before the user is asked.
    std::function<void(std::string version)> onUpdateFound;
    /// What was announced is done with: put in place, put off, or failed.
    std::function<void()> onSessionFinished;
    /// `canCheckForUpdates` has changed.
    std::function<void()> onChange;

private:
    using Found = std::expected<std::optional<Release>, UpdateError>;

    bool isManagedBySystem() const { return m_options.feed.empty() || !m_options.copy; }
    /// Where the release lies until it takes the copy's place.
    std::filesystem::path staged() const;
    std::filesystem::path archive() const;
    Task<> lookDaily(std::stop_token stop);
    Task<> runSession(std::stop_token stop);
    Task<> converse(std::stop_token stop);
    Task<Found> findNewest(std::stop_token stop);
    Task<std::expected<void, UpdateError>> stage(Release release, std::stop_token stop);
    Task<std::expected<void, UpdateError>> install(std::stop_token stop);
    Task<> tell(std::string message, std::string informative, std::stop_token stop);
    void setInSession(bool inSession);
    void announce(const std::string &version) const;

    const Options m_options;
    HttpClient &m_http;
    Clock &m_clock;
    const Ask m_ask;
    bool m_isInSession = false;
    /// Downloaded and checked in this run of the program, but put off.
    std::optional<Release> m_staged;
    TaskScope m_scope;
};

} // namespace vantrell
