// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "App/InstallLocation.h"

#include "App/ApplicationIcon.h"
#include "App/Relaunch.h"
#include "App/ReplacePath.h"
#include "Platform/ApplicationIdentity.h"
#include "Platform/DesktopEntryFile.h"
#include "Support/AtomicFile.h"
#include "Support/BlockingWork.h"
#include "Support/FilePath.h"
#include "Support/Log.h"
#include "Support/UniqueFd.h"

#include <QStandardPaths>

#include <cerrno>
#include <cstdio>
#include <system_error>
#include <utility>

#include <fcntl.h>
#include <sys/statvfs.h>
#include <unistd.h>

namespace vantrell {

namespace {

namespace fs = std::filesystem;

constexpr const char *programName = "vantrell-capture";

bool isBelow(const fs::path &path, const fs::path &folder) {
    if (folder.empty())
        return false;
    const fs::path way = path.lexically_relative(realPath(folder));
    return !way.empty() && *way.begin() != "..";
}

bool isReadOnly(const fs::path &path) {
    struct statvfs volume{};
    return ::statvfs(path.c_str(), &volume) == 0 && (volume.f_flag & ST_RDONLY) != 0;
}

std::unexpected<PlatformError> failure(const std::string &what, const std::error_code &code) {
    return std::unexpected(PlatformError::fromErrno(what, code.value()));
}

} // namespace

InstallLocation::Options InstallLocation::Options::fromEnvironment(std::string systemName) {
    const auto place = [](QStandardPaths::StandardLocation which) {
        return fs::path(QStandardPaths::writableLocation(which).toStdString());
    };
    Options options{
        .copy = PortableCopy::running(),
        .home = place(QStandardPaths::HomeLocation),
        .data = place(QStandardPaths::GenericDataLocation),
        .passingFolders = {"/tmp", "/var/tmp", place(QStandardPaths::TempLocation), "/media", "/run/media"},
        .systemName = std::move(systemName),
        .relaunch = vantrell::relaunch};
    // Who has no folder for downloads has the home named here.
    if (const fs::path downloads = place(QStandardPaths::DownloadLocation); downloads != options.home)
        options.passingFolders.push_back(downloads);
    return options;
}

InstallLocation::InstallLocation(Options options) : m_options(std::move(options)) {}

fs::path InstallLocation::destination() const {
    return m_options.home / ".local" / "lib" / programName;
}

bool InstallLocation::needsMove() const {
    if (!m_options.copy)
        return false;
    const fs::path &root = m_options.copy->root;
    if (root == realPath(destination()) || isBelow(root, destination()))
        return false;
    for (const fs::path &folder : m_options.passingFolders) {
        if (isBelow(root, folder))
            return true;
    }
    return isReadOnly(root);
}

Task<bool> InstallLocation::offerMoveIfNeeded(Ask ask, std::stop_token stop) {
    if (!needsMove())
        co_return false;
    const int answer = co_await ask(
        "Move Vantrell Capture to Applications",
        "Vantrell Capture is running from the disk image. " + m_options.systemName +
            " cannot remember the Screen Recording permission from there, so the app will move itself into "
            "Applications and reopen.",
        {"Move to Applications", "Not Now"}, stop);
    if (answer != 0 || stop.stop_requested()) {
        qCInfo(logApp, "install: user declined move to Applications");
        co_return false;
    }
    const InstallLocation copied = *this;
    const auto installed = co_await runBlocking([copied] { return copied.install(); }, stop);
    if (installed) {
        qCInfo(logApp, "install: moved to %s", installed->c_str());
        if (m_options.relaunch(*installed))
            co_return true;
    }
    std::string reason = "The moved copy could not be started";
    if (!installed) {
        const auto *error = std::get_if<PlatformError>(&installed.error());
        if (!error)
            co_return false;
        reason = error->description();
    }
    qCCritical(logApp, "install: move failed: %s", reason.c_str());
    co_await showMoveFailure(std::move(ask), std::move(reason), stop);
    co_return false;
}

Task<> InstallLocation::showMoveFailure(Ask ask, std::string reason, std::stop_token stop) const {
    const std::string informative =
        reason + "\n\nDrag Vantrell Capture into your Applications folder and open it from there.";
    co_await ask("Could not move Vantrell Capture", informative, {"OK"}, stop);
}

std::expected<fs::path, PlatformError> InstallLocation::install() const {
    if (!m_options.copy)
        return std::unexpected(PlatformError::fromErrno("install", ENOENT));
    const PortableCopy &copy = *m_options.copy;
    std::error_code error;
    fs::create_directories(destination().parent_path(), error);
    if (error)
        return failure("make the folder .local/lib", error);
    const fs::path fresh = destination().parent_path() / ("." + std::string(programName) + ".new");
    fs::remove_all(fresh, error);
    if (const auto copied = copyTo(fresh); !copied) {
        fs::remove_all(fresh, error);
        return std::unexpected(copied.error());
    }
    if (const auto placed = replacePath(fresh, destination()); !placed) {
        fs::remove_all(fresh, error);
        return std::unexpected(placed.error());
    }
    const fs::path program =
        destination() / (copy.isImage() ? copy.root.filename() : copy.program.lexically_relative(copy.root));
    if (const auto told = tellDesktop(program); !told)
        return std::unexpected(told.error());
    return program;
}

std::expected<void, PlatformError> InstallLocation::copyTo(const fs::path &folder) const {
    const PortableCopy &copy = *m_options.copy;
    std::error_code error;
    if (copy.isImage()) {
        fs::create_directory(folder, error);
        if (!error)
            fs::copy_file(copy.root, folder / copy.root.filename(), error);
        if (!error)
            fs::permissions(folder / copy.root.filename(),
                            fs::perms::owner_all | fs::perms::group_exec | fs::perms::others_exec,
                            fs::perm_options::add, error);
    } else {
        fs::copy(copy.root, folder, fs::copy_options::recursive | fs::copy_options::copy_symlinks, error);
        // From a read-only disk also the folder comes read-only.
        if (!error)
            fs::permissions(folder, fs::perms::owner_all, fs::perm_options::add, error);
    }
    if (error)
        return failure("copy Vantrell Capture", error);
    // Before it takes the old one's place all of it is on the disk.
    const UniqueFd opened(::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (!opened || ::syncfs(opened.get()) != 0)
        return std::unexpected(PlatformError::fromErrno("write Vantrell Capture", errno));
    return {};
}

std::expected<void, PlatformError> InstallLocation::tellDesktop(const fs::path &program) const {
    const fs::path icons = m_options.data / "icons" / "hicolor" / "scalable" / "apps";
    const fs::path entries = m_options.data / "applications";
    const fs::path binaries = m_options.home / ".local" / "bin";
    std::error_code error;
    for (const fs::path &folder : {icons, entries, binaries}) {
        fs::create_directories(folder, error);
        if (error)
            return failure("make the folder " + folder.filename().string(), error);
    }
    const fs::path fresh = binaries / ("." + std::string(programName) + ".new");
    fs::remove(fresh, error);
    fs::create_symlink(program, fresh, error);
    if (error)
        return failure("link the program", error);
    if (::rename(fresh.c_str(), (binaries / programName).c_str()) != 0) {
        const int problem = errno;
        fs::remove(fresh, error);
        return std::unexpected(PlatformError::fromErrno("link the program", problem));
    }
    const std::string id = applicationId;
    if (const auto written = writeFileAtomically(icons / (id + ".svg"), applicationIconSvg()); !written)
        return written;
    return writeFileAtomically(
        entries / (id + ".desktop"),
        ownDesktopEntry(program, {}, {{"Categories", "AudioVideo;Recorder;"}, {"StartupNotify", "false"}}));
}

} // namespace vantrell
