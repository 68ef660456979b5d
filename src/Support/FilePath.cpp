// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Support/FilePath.h"

#include <QByteArray>
#include <QStringDecoder>

#include <system_error>

namespace vantrell {

namespace {

constexpr std::string_view addressOfFile = "file://";

bool isUtf8(std::string_view bytes) {
    QStringDecoder decoder(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless);
    [[maybe_unused]] const QString decoded = decoder(QByteArrayView(bytes.data(), qsizetype(bytes.size())));
    return !decoder.hasError();
}

} // namespace

std::filesystem::path realPath(const std::filesystem::path &path) {
    std::error_code failed;
    const std::filesystem::path absolute = std::filesystem::absolute(path, failed);
    if (failed)
        return path.lexically_normal();
    const std::filesystem::path real = std::filesystem::weakly_canonical(absolute, failed);
    return failed ? absolute.lexically_normal() : real;
}

std::string textOfPath(const std::filesystem::path &path) {
    const std::string &bytes = path.native();
    if (isUtf8(bytes))
        return bytes;
    return std::string(addressOfFile) + QByteArray::fromStdString(bytes).toPercentEncoding("/").toStdString();
}

std::filesystem::path pathFromText(std::string_view text) {
    if (!text.starts_with(addressOfFile))
        return text;
    text.remove_prefix(addressOfFile.size());
    return QByteArray::fromPercentEncoding(QByteArray(text.data(), qsizetype(text.size()))).toStdString();
}

} // namespace vantrell
