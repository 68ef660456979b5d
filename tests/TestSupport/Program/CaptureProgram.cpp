// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "TestSupport/Program/CaptureProgram.h"

#include <gtest/gtest.h>

#include <csignal>

namespace vantrell::testing {

nlohmann::json CaptureProgram::Ended::json() const {
    const size_t end = output.find_last_not_of('\n');
    const size_t begin = output.find_last_of('\n', end == std::string::npos ? end : end - 1);
    const std::string line = output.substr(begin == std::string::npos ? 0 : begin + 1);
    const auto parsed = nlohmann::json::parse(line, nullptr, false);
    EXPECT_FALSE(parsed.is_discarded()) << "not JSON: " << output << errors;
    return parsed;
}

CaptureProgram::CaptureProgram()
    : m_folder(std::make_shared<TemporaryFolder>()), m_environment(QProcessEnvironment::systemEnvironment()) {
    set("XDG_DATA_HOME", *m_folder / "data");
    set("XDG_CONFIG_HOME", *m_folder / "config");
    // No keyring: what is not said here must not come from the person who runs the tests.
    set("DBUS_SESSION_BUS_ADDRESS", "unix:path=/nonexistent");
}

void CaptureProgram::set(const std::string &variable, const std::string &value) {
    m_environment.insert(QString::fromStdString(variable), QString::fromStdString(value));
}

CaptureProgram::Ended CaptureProgram::run(const std::vector<std::string> &arguments) {
    start(arguments);
    return finish();
}

void CaptureProgram::start(const std::vector<std::string> &arguments,
                           const std::vector<std::string> &wrapper) {
    QStringList words;
    for (const std::string &word : wrapper)
        words << QString::fromStdString(word);
    words << VANTRELL_CAPTURE;
    for (const std::string &argument : arguments)
        words << QString::fromStdString(argument);
    m_errors.clear();
    m_heard = 0;
    m_process.setProcessEnvironment(m_environment);
    const QString command = words.takeFirst();
    m_process.start(command, words);
    ASSERT_TRUE(m_process.waitForStarted());
}

void CaptureProgram::waitForLog(const std::string &line) {
    m_process.setReadChannel(QProcess::StandardError);
    std::size_t found = 0;
    while ((found = m_errors.find(line, m_heard)) == std::string::npos) {
        ASSERT_TRUE(m_process.waitForReadyRead(30000)) << "no '" << line << "' in: " << m_errors;
        m_errors += m_process.readAllStandardError().toStdString();
    }
    m_heard = found + line.size();
}

std::string CaptureProgram::nextLine() {
    m_process.setReadChannel(QProcess::StandardOutput);
    while (!m_process.canReadLine()) {
        if (!m_process.waitForReadyRead(30000)) {
            ADD_FAILURE() << "no line of output; errors: " << m_process.readAllStandardError().toStdString();
            return {};
        }
    }
    return m_process.readLine().trimmed().toStdString();
}

void CaptureProgram::signal(int number) {
    // A program that has ended has the id 0, which is everybody in the group of the tests.
    if (const auto id = pid_t(m_process.processId()); id > 0)
        ::kill(id, number);
}

CaptureProgram::Ended CaptureProgram::finish() {
    EXPECT_TRUE(!isRunning() || m_process.waitForFinished(60000))
        << "still running; errors: " << m_process.readAllStandardError().toStdString();
    m_errors += m_process.readAllStandardError().toStdString();
    return {m_process.exitStatus() == QProcess::NormalExit ? m_process.exitCode() : -1,
            m_process.readAllStandardOutput().toStdString(), m_errors};
}

std::vector<std::string> CaptureProgram::captureFiles() const {
    std::vector<std::string> names;
    std::error_code missing;
    for (const auto &entry : std::filesystem::directory_iterator(captures(), missing))
        names.push_back(entry.path().filename().string());
    return names;
}

} // namespace vantrell::testing
