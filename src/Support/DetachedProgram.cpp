// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Support/DetachedProgram.h"

#include <QProcess>
#include <QProcessEnvironment>
#include <QStringList>

#include <csignal>

namespace vantrell {

bool startDetached(const std::string &program, const std::vector<std::string> &arguments,
                   const std::map<std::string, std::string> &variables) {
    QStringList words;
    for (const std::string &argument : arguments)
        words.append(QString::fromStdString(argument));
    QProcess process;
    process.setProgram(QString::fromStdString(program));
    process.setArguments(words);
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    for (const auto &[name, value] : variables)
        environment.insert(QString::fromStdString(name), QString::fromStdString(value));
    process.setProcessEnvironment(environment);
    process.setStandardInputFile(QProcess::nullDevice());
    process.setStandardOutputFile(QProcess::nullDevice());
    process.setStandardErrorFile(QProcess::nullDevice());
    // What this process takes through its event loop would otherwise never reach the other one.
    process.setChildProcessModifier([] {
        sigset_t none;
        sigemptyset(&none);
        ::sigprocmask(SIG_SETMASK, &none, nullptr);
    });
    return process.startDetached();
}

} // namespace vantrell
