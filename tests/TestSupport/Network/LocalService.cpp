// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "TestSupport/Network/LocalService.h"

#include "Support/UniqueFd.h"
#include "TestSupport/Network/TestCertificate.h"

#include <curl/curl.h>

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

#include <cstdlib>
#include <fstream>
#include <iostream>

namespace vantrell::testing {

namespace {

[[noreturn]] void giveUp(const std::string &why) {
    std::cerr << "local service: " << why << std::endl;
    std::exit(1);
}

/// A line from the pipe, or what came until the writer closed it or 30 s passed.
std::string readLine(int fd) {
    std::string line;
    pollfd readable{fd, POLLIN, 0};
    char byte = 0;
    while (::poll(&readable, 1, 30'000) > 0 && ::read(fd, &byte, 1) == 1 && byte != '\n')
        line += byte;
    return line;
}

std::size_t append(char *bytes, std::size_t size, std::size_t count, void *target) {
    static_cast<std::string *>(target)->append(bytes, size * count);
    return size * count;
}

} // namespace

LocalService::LocalService(Options options) : m_options(std::move(options)) {
    if (m_options.tls)
        makeTestCertificate(m_folder.path());
    start(0);
}

LocalService::~LocalService() = default;

void LocalService::start(int port) {
    int ends[2];
    if (::pipe2(ends, O_CLOEXEC) != 0)
        giveUp("no pipe");
    const UniqueFd reading(ends[0]);
    UniqueFd writing(ends[1]);
    std::vector<std::string> command = {"bash",
                                        "-c",
                                        "log=$1; shift; exec \"$@\" >&" + std::to_string(writing.get()) +
                                            " 2>>\"$log\"",
                                        "bash",
                                        m_folder / "service.log",
                                        VANTRELL_SOURCE_DIR "/service/bin/vantrell-service",
                                        "serve",
                                        "--test-mode",
                                        "--port",
                                        std::to_string(port),
                                        "--data",
                                        m_folder / "library"};
    if (m_options.tls)
        command.insert(command.end(), {"--tls-cert", authority(), "--tls-key", m_folder / "key.pem"});
    command.insert(command.end(), m_options.arguments.begin(), m_options.arguments.end());
    m_process = std::make_unique<ChildProcess>(command, ChildProcess::Environment{}, writing.get());
    writing.reset();

    const auto hello = nlohmann::json::parse(readLine(reading.get()), nullptr, false);
    if (!hello.is_object()) {
        std::ifstream log(m_folder / "service.log");
        giveUp("did not start: " + std::string(std::istreambuf_iterator<char>(log), {}));
    }
    m_url = hello.at("url");
    m_signInUrl = hello.value("signInUrl", ""); // none with an owner password
    m_controlKey = hello.at("controlKey");
    m_port = std::stoi(m_url.substr(m_url.rfind(':') + 1));
}

void LocalService::stop() {
    m_process.reset();
}

void LocalService::restart() {
    stop();
    start(m_port);
}

nlohmann::json LocalService::call(const std::string &method, const std::string &path,
                                  const nlohmann::json &body, const std::string &key) {
    CURL *const easy = curl_easy_init();
    const std::string bytes = body.is_null() ? std::string() : body.dump();
    const std::string address = m_url + path;
    std::string answer;
    curl_slist *headers = curl_slist_append(nullptr, "Content-Type: application/json");
    headers = curl_slist_append(headers, ("X-Control-Key: " + m_controlKey).c_str());
    if (!key.empty())
        headers = curl_slist_append(headers, ("Authorization: Bearer " + key).c_str());
    curl_easy_setopt(easy, CURLOPT_URL, address.c_str());
    curl_easy_setopt(easy, CURLOPT_CUSTOMREQUEST, method.c_str());
    curl_easy_setopt(easy, CURLOPT_PROXY, "");
    curl_easy_setopt(easy, CURLOPT_HTTPHEADER, headers);
    curl_easy_setopt(easy, CURLOPT_TIMEOUT, 60L);
    curl_easy_setopt(easy, CURLOPT_NOSIGNAL, 1L);
    curl_easy_setopt(easy, CURLOPT_WRITEFUNCTION, append);
    curl_easy_setopt(easy, CURLOPT_WRITEDATA, &answer);
    const std::string trusted = authority();
    if (m_options.tls)
        curl_easy_setopt(easy, CURLOPT_CAINFO, trusted.c_str());
    if (!body.is_null())
        curl_easy_setopt(easy, CURLOPT_COPYPOSTFIELDS, bytes.c_str());
    const CURLcode code = curl_easy_perform(easy);
    long status = 0;
    curl_easy_getinfo(easy, CURLINFO_RESPONSE_CODE, &status);
    curl_slist_free_all(headers);
    curl_easy_cleanup(easy);
    if (code != CURLE_OK || status < 200 || status > 299)
        giveUp(method + " " + path + ": " + curl_easy_strerror(code) + ", status " + std::to_string(status) +
               " " + answer);
    return answer.empty() ? nlohmann::json() : nlohmann::json::parse(answer, nullptr, false);
}

std::string LocalService::createKey(const std::string &account) {
    return call("POST", "/test/keys",
                account.empty() ? nlohmann::json::object() : nlohmann::json{{"account", account}})
        .at("apiKey");
}

void LocalService::revokeKey(const std::string &key) {
    call("POST", "/test/keys/revoke", {{"apiKey", key}});
}

std::string LocalService::createProject(const std::string &name) {
    return call("POST", "/test/projects", {{"name", name}}).at("id");
}

void LocalService::deleteProject(const std::string &id) {
    call("DELETE", "/test/projects/" + id);
}

void LocalService::configure(const nlohmann::json &changes) {
    call("POST", "/test/config", changes);
}

void LocalService::fault(const std::string &method, const std::string &pathPattern,
                         const nlohmann::json &action, int times, int skip) {
    nlohmann::json rule{{"match", {{"pathPattern", pathPattern}}}, {"action", action}, {"skip", skip}};
    if (!method.empty())
        rule["match"]["method"] = method;
    rule["times"] = times == 0 ? nlohmann::json() : nlohmann::json(times);
    call("POST", "/test/faults", {{"rules", nlohmann::json::array({rule})}});
}

void LocalService::clearFaults() {
    call("DELETE", "/test/faults");
}

std::vector<LocalService::LogEntry> LocalService::requests(const std::string &pathPart) {
    std::vector<LogEntry> entries;
    const nlohmann::json log = call("GET", "/test/log");
    for (const nlohmann::json &entry : log.at("requests")) {
        if (entry.at("path").get<std::string>().find(pathPart) == std::string::npos)
            continue;
        LogEntry read{entry.at("connection"), entry.at("method"), entry.at("path"),   entry.at("headers"),
                      entry.at("bodyBytes"),  std::nullopt,       entry.at("outcome")};
        if (entry.at("status").is_number())
            read.status = entry.at("status").get<int>();
        entries.push_back(std::move(read));
    }
    return entries;
}

std::string LocalService::methods(const std::string &pathPart) {
    std::string text;
    for (const LogEntry &entry : requests(pathPart))
        text += (text.empty() ? "" : " ") + entry.method;
    return text;
}

void LocalService::clearLog() {
    call("DELETE", "/test/log");
}

std::vector<nlohmann::json> LocalService::captures(const std::string &key) {
    const nlohmann::json answer = call("GET", "/library/captures", nullptr, key);
    return (answer.is_object() ? answer.at("captures") : answer).get<std::vector<nlohmann::json>>();
}

std::vector<nlohmann::json> LocalService::events() {
    return call("GET", "/test/events").at("events").get<std::vector<nlohmann::json>>();
}

} // namespace vantrell::testing
