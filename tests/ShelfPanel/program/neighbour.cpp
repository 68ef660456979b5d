// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

// Another application beside the shelf: a field to type in, over a window that counts clicks and takes what
// is dropped on it.
//
//     neighbour FD        answers "text", "clicks" and "dropped" on that descriptor

#include "CommandSocket.h"

#include <QApplication>
#include <QDragEnterEvent>
#include <QLineEdit>
#include <QMimeData>
#include <QScreen>

using vantrell::testing::CommandSocket;

namespace {

class Neighbour final : public QWidget {
public:
    Neighbour() {
        setAcceptDrops(true);
        setGeometry(screen()->geometry());
        m_field.setGeometry(10, 10, 300, 40);
        m_field.setAcceptDrops(false);
        m_field.setFocus();
    }

    QString answer(const QStringList &words) const {
        if (words[0] == "text")
            return m_field.text();
        if (words[0] == "clicks")
            return QString::number(m_clicks);
        return m_dropped;
    }

protected:
    void mousePressEvent(QMouseEvent *) override { ++m_clicks; }
    void dragEnterEvent(QDragEnterEvent *event) override {
        if (event->mimeData()->hasFormat("text/uri-list"))
            event->acceptProposedAction();
    }
    void dropEvent(QDropEvent *event) override {
        m_dropped = QString::fromUtf8(event->mimeData()->data("text/uri-list")).trimmed();
        event->acceptProposedAction();
    }

private:
    QLineEdit m_field{this};
    int m_clicks = 0;
    QString m_dropped;
};

} // namespace

int main(int argc, char **argv) {
    QApplication application(argc, argv);
    Neighbour neighbour;
    neighbour.show();
    const CommandSocket socket(application.arguments().value(1).toInt(),
                               [&](const QStringList &words) { return neighbour.answer(words); });
    return application.exec();
}
