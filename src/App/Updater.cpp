// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "App/Updater.h"

#include "App/Relaunch.h"
#include "App/ReleaseDownload.h"
#include "App/ReplacePath.h"
#include "App/SystemUpdates.h"
#include "Http/Url.h"
#include "Support/BlockingWork.h"
#include "Support/Log.h"

#include <QByteArray>
#include <QProcess>

#include <chrono>
#include <cstdlib>
#include <system_error>
#include <utility>
#include <variant>
#include <vector>

#include <sys/utsname.h>

using namespace std::chrono_literals;

namespace vantrell {

namespace {

namespace fs = std::filesystem;

using Kind = UpdateError::Kind;

constexpr auto firstLook = 1min;
constexpr auto updateLookInterval = 24h;
constexpr auto busyLook = 1s;

std::unexpected<UpdateError> notPlaced(PlatformError reason) {
    return std::unexpected(UpdateError{Kind::notPlaced, std::move(reason)});
}

void removeAll(const std::vector<fs::path> &paths) {
    std::error_code ignored;
    for (const fs::path &path : paths)
        fs::remove_all(path, ignored);
}

/// Makes what was downloaded a copy that can take the old one's place.
std::expected<void, UpdateError> prepareImage(const fs::path &image) {
    std::error_code failed;
    fs::permissions(image, fs::perms::owner_all | fs::perms::group_exec | fs::perms::others_exec,
                    fs::perm_options::add, failed);
    if (failed)
        return notPlaced(PlatformError::fromErrno("make the update executable", failed.value()));
    return {};
}

std::expected<void, UpdateError> unpackFolder(const fs::path &archive, const fs::path &folder,
                                              const fs::path &program) {
    removeAll({folder});
    std::error_code failed;
    fs::create_directory(folder, failed);
    if (failed)
        return notPlaced(PlatformError::fromErrno("make a folder for the update", failed.value()));
    const int code = QProcess::execute(QStringLiteral("tar"),
                                       {"-xf", QString::fromStdString(archive.string()), "-C",
                                        QString::fromStdString(folder.string()), "--no-same-owner"});
    removeAll({archive});
    std::error_code error;
    if (code == 0 && fs::exists(folder / PortableCopy::marker, error) && fs::exists(folder / program, error))
        return {};
    removeAll({folder});
    return std::unexpected(UpdateError{Kind::damaged, {}});
}

UpdateError errorOf(const std::variant<PlatformError, Cancelled> &error) {
    const auto *platform = std::get_if<PlatformError>(&error);
    return platform ? UpdateError{Kind::notPlaced, *platform} : UpdateError{};
}

UpdateError errorOf(const std::variant<UpdateError, Cancelled> &error) {
    const auto *update = std::get_if<UpdateError>(&error);
    return update ? *update : UpdateError{};
}

} // namespace

Updater::Options Updater::Options::builtIn() {
    utsname machine{};
    ::uname(&machine);
    return {.feed = VANTRELL_UPDATE_FEED,
            .publicKey = QByteArray::fromBase64(VANTRELL_UPDATE_KEY).toStdString(),
            .currentVersion = VANTRELL_VERSION,
            .architecture = machine.machine,
            .copy = PortableCopy::running(),
            .isBusy = [] { return false; },
            .relaunch = vantrell::relaunch};
}

Updater::Updater(Options options, HttpClient &http, Clock &clock, Ask ask)
    : m_options(std::move(options)), m_http(http), m_clock(clock), m_ask(std::move(ask)) {}

fs::path Updater::staged() const {
    const fs::path &root = m_options.copy->root;
    return root.parent_path() / ("." + root.filename().string() + ".update");
}

fs::path Updater::archive() const {
    return staged().string() + ".tar";
}

void Updater::start() {
    if (isManagedBySystem())
        return;
    // What the last update, or one that was cut off, has left.
    const std::vector<fs::path> leftovers{staged(), archive(), staged().string() + ".part",
                                          archive().string() + ".part", staged().string() + ".old"};
    postToWorker([leftovers] { removeAll(leftovers); });
    m_scope.start(this, &Updater::lookDaily);
}

Task<> Updater::lookDaily(std::stop_token stop) {
    std::chrono::milliseconds pause = firstLook;
    while (co_await m_clock.sleep(pause, stop)) {
        pause = updateLookInterval;
        if (m_isInSession || m_staged)
            continue;
        const Found found = co_await findNewest(stop);
        if (stop.stop_requested())
            co_return;
        if (!found)
            qCInfo(logApp, "look for updates: %s", found.error().description().c_str());
        else if (*found && !m_isInSession)
            announce((*found)->version);
    }
}

void Updater::checkForUpdates() {
    if (!canCheckForUpdates())
        return;
    setInSession(true);
    m_scope.start(this, &Updater::runSession);
}

Task<> Updater::runSession(std::stop_token stop) {
    co_await converse(stop);
    // Cancelled is: this object is going.
    if (stop.stop_requested())
        co_return;
    setInSession(false);
    if (const auto finished = onSessionFinished)
        finished();
}

Task<> Updater::converse(std::stop_token stop) {
    if (isManagedBySystem()) {
        const std::string sentence = showSystemUpdates();
        if (!sentence.empty())
            co_await tell("Updates come with your system", sentence, stop);
        co_return;
    }
    const Found found = co_await findNewest(stop);
    if (stop.stop_requested())
        co_return;
    if (!found) {
        co_await tell("Could not check for updates", found.error().description(), stop);
        co_return;
    }
    if (!*found) {
        co_await tell("Vantrell Capture is up to date",
                      "Version " + m_options.currentVersion + " is the newest there is.", stop);
        co_return;
    }
    const Release release = **found;
    announce(release.version);
    int answer =
        co_await m_ask("Vantrell Capture " + release.version + " is available",
                       "You have version " + m_options.currentVersion +
                           ". The new one is downloaded and put in its place; then the app restarts.",
                       {"Install and Restart", "Later"}, stop);
    if (answer != 0 || stop.stop_requested())
        co_return;
    auto done = co_await stage(release, stop);
    if (done && m_options.isBusy()) {
        while (m_options.isBusy()) {
            if (!co_await m_clock.sleep(busyLook, stop))
                co_return;
        }
        // The wish is a recording ago.
        answer = co_await m_ask("Vantrell Capture " + release.version + " is ready",
                                "The app restarts with it.", {"Restart Now", "Later"}, stop);
        if (answer != 0 || stop.stop_requested() || m_options.isBusy())
            co_return;
    }
    if (done)
        done = co_await install(stop);
    if (done || stop.stop_requested())
        co_return;
    qCWarning(logApp, "update failed: %s", done.error().description().c_str());
    co_await tell("Could not update Vantrell Capture", done.error().description(), stop);
}

Task<Updater::Found> Updater::findNewest(std::stop_token stop) {
    const auto address = Url::parse(m_options.feed);
    if (!address || (address->scheme != "https" && !address->isLoopback()))
        co_return std::unexpected(UpdateError{Kind::unreachable, {}});
    HttpRequest request;
    request.url = m_options.feed;
    const auto answer = co_await m_http.send(std::move(request), stop);
    if (!answer || answer->status != 200 || answer->bodyDropped)
        co_return std::unexpected(UpdateError{Kind::unreachable, {}});
    const auto releases = readReleaseFeed(answer->body, m_options.publicKey);
    if (!releases)
        co_return std::unexpected(releases.error());
    co_return newestRelease(*releases, m_options.copy->isImage() ? "image" : "folder", m_options.architecture,
                            m_options.currentVersion);
}

Task<std::expected<void, UpdateError>> Updater::stage(Release release, std::stop_token stop) {
    std::error_code error;
    if (m_staged && m_staged->sha256 == release.sha256 && fs::exists(staged(), error))
        co_return std::expected<void, UpdateError>();
    m_staged.reset();
    const auto address = resolveUrl(m_options.feed, release.url);
    if (!address)
        co_return std::unexpected(UpdateError{Kind::unreachable, {}});
    const bool isImage = m_options.copy->isImage();
    const fs::path file = isImage ? staged() : archive();
    const auto downloaded = co_await downloadRelease(m_http, m_clock, release, *address, file, stop);
    if (!downloaded)
        co_return std::unexpected(downloaded.error());
    const fs::path program = m_options.copy->program.lexically_relative(m_options.copy->root);
    const auto prepared = co_await runBlocking(
        [isImage, file, program, folder = staged()] {
            return isImage ? prepareImage(file) : unpackFolder(file, folder, program);
        },
        stop);
    if (!prepared)
        co_return std::unexpected(errorOf(prepared.error()));
    m_staged = std::move(release);
    co_return std::expected<void, UpdateError>();
}

Task<std::expected<void, UpdateError>> Updater::install(std::stop_token stop) {
    const PortableCopy copy = *m_options.copy;
    const auto placed =
        co_await runBlocking([fresh = staged(), copy] { return replacePath(fresh, copy.root); }, stop);
    if (!placed)
        co_return std::unexpected(errorOf(placed.error()));
    m_staged.reset();
    qCInfo(logApp, "update put in place");
    if (!m_options.relaunch(copy.program))
        co_return notPlaced({"process", 0, "the new version does not start by itself"});
    co_return std::expected<void, UpdateError>();
}

Task<> Updater::tell(std::string message, std::string informative, std::stop_token stop) {
    co_await m_ask(std::move(message), std::move(informative), {"OK"}, stop);
}

void Updater::setInSession(bool inSession) {
    m_isInSession = inSession;
    // A copy: it may exchange the handler.
    if (const auto changed = onChange)
        changed();
}

void Updater::announce(const std::string &version) const {
    if (const auto found = onUpdateFound)
        found(version);
}

} // namespace vantrell
