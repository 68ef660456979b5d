// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Contest.h"

#include "API/TusProtocol.h"
#include "TestSupport/Network/TestCertificate.h"
#include "TestSupport/RunTask.h"
#include "TestSupport/TestFile.h"

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <vector>

namespace vantrell::bench {

using nlohmann::json;

namespace {

std::optional<std::filesystem::path> certificateIn(const std::filesystem::path &folder, bool wanted) {
    if (!wanted)
        return std::nullopt;
    testing::makeTestCertificate(folder);
    return folder;
}

} // namespace

std::string senderProgram() {
    return std::filesystem::read_symlink("/proc/self/exe").replace_filename("upload-send");
}

Contest::Contest(Line line, std::filesystem::path folder)
    : m_folder(std::move(folder)), m_file(m_folder / "film.mov"), m_tls(line.tls),
      m_server(certificateIn(m_folder, line.tls)) {
    if (line.delay.count() > 0)
        m_proxy = std::make_unique<DelayProxy>(m_server.port(), line.delay);
    const std::string authority = m_folder / "authority.pem";
    if (m_tls)
        m_environment = {
            {"SSL_CERT_FILE", authority}, {"CURL_CA_BUNDLE", authority}, {"NODE_EXTRA_CA_CERTS", authority}};
}

void Contest::setFile(std::int64_t bytes) {
    m_bytes = bytes;
    std::filesystem::remove_all(m_folder / "chunks");
    testing::writeTestFile(m_file, std::min<std::int64_t>(bytes, 1 << 30));
    // What is beyond is a hole: it costs the sender the same and the disk nothing.
    std::filesystem::resize_file(m_file, std::uintmax_t(bytes));
}

std::string Contest::url(const std::string &path) const {
    const int port = m_proxy ? m_proxy->port() : m_server.port();
    return (m_tls ? "https://127.0.0.1:" : "http://127.0.0.1:") + std::to_string(port) + path;
}

std::filesystem::path Contest::describe(const json &descriptor) const {
    const std::filesystem::path path = m_folder / "descriptor.json";
    std::ofstream(path) << descriptor.dump();
    return path;
}

std::filesystem::path Contest::describeTus() const {
    return describe({{"kind", "tus"},
                     {"endpoint", url("/tus")},
                     {"signature", "signature"},
                     {"apiKey", "key"},
                     {"bucket", "captures"},
                     {"objectName", "film.mov"},
                     {"contentType", "video/quicktime"},
                     {"chunkSize", chunkBytes}});
}

RunCost Contest::runTus(const Command &command) {
    const RunCost cost = runChild(command, m_environment);
    if (m_server.newestOffset() != m_bytes) {
        std::cerr << command[0] << " did not send everything" << std::endl;
        std::exit(1);
    }
    return cost;
}

RunCost Contest::oursTus() {
    return runTus({senderProgram(), describeTus(), m_file});
}

RunCost Contest::tusJs() {
    return runTus({"node", VANTRELL_SOURCE_DIR "/bench/upload/tus-js.mjs", describeTus(), m_file});
}

RunCost Contest::oursPut() {
    const auto descriptor = describe({{"kind", "standard"}, {"uploadUrl", url("/put")}});
    return runChild({senderProgram(), descriptor, m_file}, m_environment);
}

RunCost Contest::curlPut() {
    return runChild(
        {"curl", "-sSf", "-o", "/dev/null", "-H", "Content-Type: video/quicktime", "-T", m_file, url("/put")},
        m_environment);
}

std::string Contest::createUpload() {
    HttpClient::Options options;
    if (m_tls)
        options.authorities = m_folder / "authority.pem";
    HttpClient http(options);
    const TusProtocol protocol(http, TusUpload{.endpoint = url("/tus")});
    return testing::runTask(protocol.createUpload(m_bytes, {})).value();
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
    const std::string location = createUpload();
    const std::filesystem::path config = m_folder / "curl.conf";
    std::ofstream out(config);
    std::vector<std::filesystem::path> chunks;
    for (const auto &entry : std::filesystem::directory_iterator(m_folder / "chunks"))
        chunks.push_back(entry.path());
    std::ranges::sort(chunks);
    for (std::size_t i = 0; i < chunks.size(); ++i) {
        out << (i ? "next\n" : "") << "url = \"" << location << "\"\nrequest = PATCH\nupload-file = \""
            << chunks[i].string() << "\"\noutput = /dev/null\nsilent\nfail\nheader = \"Expect:\"\n"
            << "header = \"Tus-Resumable: 1.0.0\"\nheader = \"Content-Type: "
               "application/offset+octet-stream\"\n"
            << "header = \"x-signature: signature\"\nheader = \"apikey: key\"\n"
            << "header = \"Upload-Offset: " << std::int64_t(i) * chunkBytes << "\"\n";
    }
    out.close();
    return runTus({"curl", "--config", config});
}

} // namespace vantrell::bench
