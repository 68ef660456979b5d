// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Platform/Desktop/Trash.h"

#include "Support/UniqueFd.h"

#include <QByteArray>
#include <QStandardPaths>

#include <cerrno>
#include <cstdio>
#include <ctime>
#include <optional>
#include <string>
#include <string_view>
#include <system_error>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace vantrell {

namespace {

/// One trash and the folder that the paths in it start from; empty for the whole tree.
struct TrashFolder {
    std::filesystem::path folder;
    std::filesystem::path top;
};

std::unexpected<PlatformError> failure(const std::string &what, int number = errno) {
    return std::unexpected(PlatformError::fromErrno(what, number));
}

std::optional<dev_t> deviceOf(const std::filesystem::path &path) {
    struct stat info{};
    return ::lstat(path.c_str(), &info) == 0 ? std::optional(info.st_dev) : std::nullopt;
}

/// The highest folder above `path` on the same disk.
std::filesystem::path topOf(std::filesystem::path path) {
    const auto device = deviceOf(path);
    while (path.has_relative_path() && deviceOf(path.parent_path()) == device)
        path = path.parent_path();
    return path;
}

/// A folder of our own that nobody else can exchange for a link to elsewhere.
bool isOwnFolder(const std::filesystem::path &path) {
    struct stat info{};
    return ::lstat(path.c_str(), &info) == 0 && S_ISDIR(info.st_mode) && info.st_uid == ::getuid();
}

std::expected<void, PlatformError> makePrivateFolder(const std::filesystem::path &path) {
    if (::mkdir(path.c_str(), S_IRWXU) != 0 && errno != EEXIST)
        return failure("make the trash");
    if (!isOwnFolder(path))
        return failure("use the trash", EACCES);
    return {};
}

std::expected<TrashFolder, PlatformError> homeTrash() {
    const std::filesystem::path data =
        QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation).toStdString();
    std::error_code failed;
    std::filesystem::create_directories(data, failed);
    if (failed)
        return failure("make the folder of the trash", failed.value());
    return TrashFolder{data / "Trash", {}};
}

std::expected<TrashFolder, PlatformError> trashAtTop(const std::filesystem::path &top) {
    const std::string user = std::to_string(::getuid());
    // One that the administrator made for everybody counts only when nobody can take what others put there.
    struct stat shared{};
    if (::lstat((top / ".Trash").c_str(), &shared) == 0 && S_ISDIR(shared.st_mode) &&
        (shared.st_mode & S_ISVTX) != 0 && makePrivateFolder(top / ".Trash" / user))
        return TrashFolder{top / ".Trash" / user, top};
    return TrashFolder{top / (".Trash-" + user), top};
}

std::string infoText(const std::filesystem::path &path) {
    char date[32] = "";
    const std::time_t now = std::time(nullptr);
    std::tm local{};
    localtime_r(&now, &local);
    std::strftime(date, sizeof date, "%Y-%m-%dT%H:%M:%S", &local);
    return "[Trash Info]\nPath=" +
           QByteArray::fromStdString(path.string()).toPercentEncoding("/").toStdString() +
           "\nDeletionDate=" + date + "\n";
}

/// "Name 2.mp4" for the second of that name.
std::string numbered(const std::filesystem::path &name, int number) {
    if (number == 1)
        return name.string();
    return name.stem().string() + ' ' + std::to_string(number) + name.extension().string();
}

bool writeAndSync(int fd, std::string_view text) {
    return ::write(fd, text.data(), text.size()) == ssize_t(text.size()) && ::fsync(fd) == 0;
}

std::expected<std::filesystem::path, PlatformError> moveInto(const TrashFolder &trash,
                                                             const std::filesystem::path &file) {
    for (const std::filesystem::path &folder :
         {trash.folder, trash.folder / "files", trash.folder / "info"}) {
        if (const auto made = makePrivateFolder(folder); !made)
            return std::unexpected(made.error());
    }
    const std::string text = infoText(trash.top.empty() ? file : file.lexically_relative(trash.top));
    constexpr int mostOfOneName = 10000;
    for (int number = 1; number <= mostOfOneName; ++number) {
        const std::string name = numbered(file.filename(), number);
        const std::filesystem::path info = trash.folder / "info" / (name + ".trashinfo");
        // The note comes first: whoever makes it has the name, and what lies there is never without one.
        const UniqueFd note(::open(info.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, S_IRUSR | S_IWUSR));
        if (!note && errno == EEXIST)
            continue;
        if (!note)
            return failure("write into the trash");
        const std::filesystem::path place = trash.folder / "files" / name;
        errno = EIO;
        if (writeAndSync(note.get(), text) &&
            ::renameat2(AT_FDCWD, file.c_str(), AT_FDCWD, place.c_str(), RENAME_NOREPLACE) == 0)
            return place;
        const int problem = errno;
        ::unlink(info.c_str());
        if (problem != EEXIST)
            return failure("move to the trash", problem);
    }
    return failure("find a free name in the trash", EEXIST);
}

} // namespace

std::expected<std::filesystem::path, PlatformError> Trash::moveToTrash(const std::filesystem::path &file) {
    // The way there without links, but a link itself is what is thrown away and not what it leads to.
    std::error_code failed;
    const std::filesystem::path whole = std::filesystem::absolute(file, failed).lexically_normal();
    const std::filesystem::path folder = std::filesystem::canonical(whole.parent_path(), failed);
    if (failed)
        return failure("find " + file.filename().string(), failed.value());
    const std::filesystem::path place = folder / whole.filename();
    const auto device = deviceOf(place);
    if (!device || whole.filename().empty())
        return failure("find " + file.filename().string(), ENOENT);

    const auto home = homeTrash();
    if (home && deviceOf(home->folder.parent_path()) == device) {
        auto moved = moveInto(*home, place);
        // Two mounts of one disk look alike until something is moved between them.
        if (moved || moved.error().code != EXDEV)
            return moved;
    }
    const auto atTop = trashAtTop(topOf(folder));
    return atTop ? moveInto(*atTop, place) : std::unexpected(atTop.error());
}

} // namespace vantrell
