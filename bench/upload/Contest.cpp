// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Contest.h"

#include "API/TusProtocol.h"
#include "TestSupport/RunTask.h"
#include "TestSupport/TestFile.h"

#include <QUuid>

#include <algorithm>
#include <fstream>

namespace vantrell::bench {

using nlohmann::json;

namespace {

/// The same request to another port of this computer.
std::string withPort(const std::string &url, int port) {
    if (port == 0)
        return url;
    const auto colon = url.find(':', url.find("//"));
    const auto end = url.find('/', colon);
    return url.substr(0, colon + 1) + std::to_string(port) +
           (end == std::string::npos ? "" : url.substr(end));
}

} // namespace

std::string ownProgram() {
    return std::filesystem::read_symlink("/proc/self/exe");
}

Contest::Contest(bool tls, std::filesystem::path folder)
    : m_folder(std::move(folder)), m_file(m_folder / "film.mov"), m_tls(tls),
      m_service(
          {.arguments = {"--discard", "--quiet", "--chunk-size", std::to_string(chunkBytes)}, .tls = tls}),
      m_key(m_service.createKey()), m_project(m_service.createProject("Bench")) {}

int Contest::servicePort() const {
    const std::string &url = m_service.url();
    return std::stoi(url.substr(url.rfind(':') + 1));
}

void Contest::setFile(std::int64_t bytes) {
    m_bytes = bytes;
    std::filesystem::remove_all(m_folder / "chunks");
    testing::writeTestFile(m_file, std::min<std::int64_t>(bytes, 1 << 30));
    // What is beyond is a hole: it costs the sender the same and the disk nothing.
    std::filesystem::resize_file(m_file, std::uintmax_t(bytes));
}

json Contest::descriptor(const std::string &transfer) {
    m_service.configure({{"transfer", transfer}});
    json answer =
        m_service.call("POST", "/v1/capture/sign",
                       {{"projectId", m_project},
                        {"kind", "video"},
                        {"mime", "video/quicktime"},
                        {"bytes", m_bytes},
                        {"durationMs", 1000},
                        {"meta", false},
                        {"captureId", QUuid::createUuid().toString(QUuid::WithoutBraces).toStdString()}},
                       m_key);
    json upload = answer.at("main").at("upload");
    for (const char *key : {"endpoint", "uploadUrl"})
        if (upload.contains(key))
            upload[key] = withPort(upload.at(key), m_port);
    return upload;
}

std::filesystem::path Contest::write(const json &descriptor) const {
    const std::filesystem::path path = m_folder / "descriptor.json";
    std::ofstream(path) << descriptor.dump();
    return path;
}

Variables Contest::environment() const {
    if (!m_tls)
        return {};
    const std::string authority = m_service.authority();
    return {{"SSL_CERT_FILE", authority}, {"CURL_CA_BUNDLE", authority}, {"NODE_EXTRA_CA_CERTS", authority}};
}

RunCost Contest::oursTus() {
    return runChild({ownProgram(), "send", write(descriptor("tus")), m_file}, environment());
}

RunCost Contest::oursPut() {
    return runChild({ownProgram(), "send", write(descriptor("standard")), m_file}, environment());
}

RunCost Contest::tusJs() {
    const std::string script = VANTRELL_SOURCE_DIR "/bench/upload/tus-js.mjs";
    return runChild({"node", script, write(descriptor("tus")), m_file}, environment());
}

RunCost Contest::curlPut() {
    const std::string url = descriptor("standard").at("uploadUrl");
    return runChild(
        {"curl", "-sSf", "-o", "/dev/null", "-H", "Content-Type: video/quicktime", "-T", m_file, url},
        environment());
}

std::string Contest::createUpload(const json &descriptor) {
    HttpClient::Options options;
    if (m_tls)
        options.authorities = m_service.authority();
    HttpClient http(options);
    JsonReader reader(descriptor);
    const TusProtocol protocol(http, std::get<TusUpload>(decodeUploadDescriptor(reader)));
    return withPort(testing::runTask(protocol.createUpload(m_bytes, {})).value(), m_port);
}

void Contest::splitFile() {
    const std::filesystem::path chunks = m_folder / "chunks";
    if (!std::filesystem::create_directory(chunks))
        return;
    const std::string command = "split -b " + std::to_string(chunkBytes) + " -a 6 -d '" + m_file.string() +
                                "' '" + chunks.string() + "/'";
    if (std::system(command.c_str()) != 0)
        std::exit(1);
}

RunCost Contest::curlTus() {
    splitFile();
    const json target = descriptor("tus");
    const std::string location = createUpload(target);
    const std::filesystem::path config = m_folder / "curl.conf";
    std::ofstream out(config);
    std::vector<std::filesystem::path> chunks;
    for (const auto &entry : std::filesystem::directory_iterator(m_folder / "chunks"))
        chunks.push_back(entry.path());
    std::ranges::sort(chunks);
    for (std::size_t i = 0; i < chunks.size(); ++i) {
        out << (i ? "next\n" : "") << "url = \"" << location << "\"\nrequest = PATCH\nupload-file = \""
            << chunks[i].string() << "\"\noutput = /dev/null\nsilent\nfail\n"
            << "header = \"Expect:\"\nheader = \"Tus-Resumable: 1.0.0\"\n"
            << "header = \"Content-Type: application/offset+octet-stream\"\n"
            << "header = \"x-signature: " << target.at("signature").get<std::string>() << "\"\n"
            << "header = \"apikey: " << target.at("apiKey").get<std::string>() << "\"\n"
            << "header = \"Upload-Offset: " << std::int64_t(i) * chunkBytes << "\"\n";
    }
    out.close();
    return runChild({"curl", "--config", config}, environment());
}

} // namespace vantrell::bench
