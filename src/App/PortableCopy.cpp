// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "App/PortableCopy.h"

#include "Support/FilePath.h"

#include <QCoreApplication>

namespace vantrell {

std::optional<PortableCopy> PortableCopy::running() {
    // Set by the runtime of an image to the file that was started.
    return find(qgetenv("APPIMAGE").toStdString(), QCoreApplication::applicationFilePath().toStdString());
}

std::optional<PortableCopy> PortableCopy::find(const std::filesystem::path &image,
                                               const std::filesystem::path &executable) {
    std::error_code error;
    if (!image.empty() && std::filesystem::is_regular_file(image, error))
        return PortableCopy{realPath(image), realPath(image)};
    const std::filesystem::path program = realPath(executable);
    // Beside the program, or above its folder "bin".
    const std::filesystem::path folder = program.parent_path();
    for (const std::filesystem::path &root : {folder, folder.parent_path()}) {
        if (!std::filesystem::exists(root / marker, error))
            continue;
        const std::filesystem::path launcher = root / program.filename();
        return PortableCopy{root, std::filesystem::exists(launcher, error) ? launcher : program};
    }
    return std::nullopt;
}

} // namespace vantrell
