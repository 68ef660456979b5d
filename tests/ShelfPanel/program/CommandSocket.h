// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include <QSocketNotifier>
#include <QStringList>

#include <functional>

#include <unistd.h>

namespace vantrell::testing {

/// The program's end of the line to its test: each line that comes in gets one line as an answer.
class CommandSocket {
public:
    using Answer = std::function<QString(const QStringList &words)>;

    CommandSocket(int fd, Answer answer)
        : m_fd(fd), m_answer(std::move(answer)), m_notifier(fd, QSocketNotifier::Read) {
        QObject::connect(&m_notifier, &QSocketNotifier::activated, &m_notifier, [this] { read(); });
    }

private:
    void read() {
        char bytes[4096];
        const ssize_t count = ::read(m_fd, bytes, sizeof bytes);
        if (count <= 0)
            ::_exit(0);
        m_received += QByteArray(bytes, count);
        for (qsizetype end = m_received.indexOf('\n'); end >= 0; end = m_received.indexOf('\n')) {
            const QString line = QString::fromUtf8(m_received.left(end));
            m_received.remove(0, end + 1);
            const QByteArray answer = m_answer(line.split(' ')).toUtf8() + '\n';
            if (::write(m_fd, answer.constData(), std::size_t(answer.size())) != answer.size())
                ::_exit(1);
        }
    }

    const int m_fd;
    const Answer m_answer;
    QSocketNotifier m_notifier;
    QByteArray m_received;
};

} // namespace vantrell::testing
