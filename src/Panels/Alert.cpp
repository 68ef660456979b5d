// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Panels/Alert.h"

#include "Panels/FloatingPanel.h"
#include "Panels/PanelButton.h"
#include "Panels/PanelFont.h"
#include "Panels/Sentence.h"
#include "Support/OneShot.h"

#include <QCoreApplication>
#include <QDialog>
#include <QHBoxLayout>
#include <QLabel>
#include <QPainter>
#include <QVBoxLayout>

#include <algorithm>
#include <utility>

namespace vantrell {

namespace {

constexpr int alertTextWidth = 400;
constexpr int alertMargin = 24;

class AlertWindow final : public QDialog {
public:
    AlertWindow(const QString &message, const QString &informative, const std::vector<std::string> &buttons)
        : m_last(int(buttons.size()) - 1) {
        setWindowTitle(QStringLiteral("Vantrell Capture"));
        setAccessibleName(message);
        setAttribute(Qt::WA_QuitOnClose, false);
        auto *column = new QVBoxLayout(this);
        column->setContentsMargins(alertMargin, alertMargin, alertMargin, alertMargin);
        column->setSpacing(8);
        column->addWidget(text(message, panelFont(16, QFont::DemiBold), Theme::ofDesktop().text));
        if (!informative.isEmpty())
            column->addWidget(text(informative, panelFont(13.5), Theme::ofDesktop().quietText));
        column->addSpacing(14);
        auto *row = new QHBoxLayout;
        row->setSpacing(8);
        row->addStretch();
        // The default one at the end of the line, where the eye arrives.
        for (int at = m_last; at >= 0; --at)
            row->addWidget(button(buttons[std::size_t(at)], at));
        column->addLayout(row);
        column->setSizeConstraint(QLayout::SetFixedSize);
    }

    void present() {
        m_default->setFocus();
        // Mapped at its full size: a window manager places what it sees first.
        layout()->activate();
        adjustSize();
        show();
        markAsOwnWindow(*this);
        raise();
        activateWindow();
    }

    void reject() override { m_answer.resolve(m_last); }

    const OneShot<int> &answer() const { return m_answer; }

protected:
    void paintEvent(QPaintEvent *) override {
        QColor ground = Theme::ofDesktop().panel;
        ground.setAlpha(255);
        QPainter(this).fillRect(rect(), ground);
    }

private:
    static QLabel *text(const QString &words, const QFont &font, const QColor &ink) {
        auto *label = new QLabel(words);
        label->setTextFormat(Qt::PlainText);
        label->setWordWrap(true);
        label->setFont(font);
        label->setFixedWidth(alertTextWidth);
        QPalette palette = label->palette();
        palette.setColor(QPalette::WindowText, ink);
        label->setPalette(palette);
        return label;
    }

    PanelButton *button(const std::string &title, int index) {
        const QString label = inUsersLanguage(QString::fromStdString(title));
        auto *made = new PanelButton(label);
        made->setKind(index == 0 ? PanelButton::Kind::accent : PanelButton::Kind::filled);
        made->setHeight(40);
        made->setMostTextWidth(alertTextWidth);
        made->setWords(label);
        QObject::connect(made, &QAbstractButton::clicked, this, [this, index] { m_answer.resolve(index); });
        if (index == 0)
            m_default = made;
        return made;
    }

    const int m_last;
    PanelButton *m_default = nullptr;
    OneShot<int> m_answer;
};

} // namespace

Task<int> ask(std::string message, std::string informative, std::vector<std::string> buttons,
              std::stop_token stop) {
    if (buttons.empty())
        buttons.push_back(QCoreApplication::translate("Alert", "OK").toStdString());
    AlertWindow window(inUsersLanguage(QString::fromStdString(message)),
                       inUsersLanguage(QString::fromStdString(informative)), buttons);
    window.present();
    const auto answer = co_await window.answer().wait(stop);
    co_return answer.value_or(int(buttons.size()) - 1);
}

} // namespace vantrell
