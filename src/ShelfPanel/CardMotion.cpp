// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "ShelfPanel/CardMotion.h"

#include <algorithm>
#include <chrono>
#include <utility>

namespace vantrell {

namespace {

using namespace std::chrono_literals;

constexpr auto motionTime = 160ms;
/// Cards come from there, and go there.
constexpr double comesFrom = 28;

} // namespace

CardMotion::CardMotion() {
    m_animation.setDuration(int(std::chrono::milliseconds(motionTime).count()));
    m_animation.setStartValue(0.0);
    m_animation.setEndValue(1.0);
    m_animation.setEasingCurve(QEasingCurve::OutCubic);
    QObject::connect(&m_animation, &QVariantAnimation::valueChanged, &m_animation,
                     [this](const QVariant &value) { moveOn(value.toDouble()); });
    QObject::connect(&m_animation, &QVariantAnimation::finished, &m_animation, [this] { settle(); });
}

CardMotion::Entry CardMotion::newcomer(ShelfCard *card) {
    const Place start{.aside = comesFrom, .opacity = 0};
    return {card, start, start, start};
}

void CardMotion::replace(std::vector<Entry> cards) {
    for (const Entry &entry : m_cards) {
        if (std::ranges::find(cards, entry.card, &Entry::card) == cards.end())
            m_leaving.push_back(entry);
    }
    m_cards = std::move(cards);
}

void CardMotion::aim(Entry &entry, const Place &target) {
    // A new card comes in at its place, not from below the others.
    if (entry.card->isHidden() && entry.now.aside != 0)
        entry.now.up = target.up;
    entry.from = entry.now;
    entry.to = target;
}

void CardMotion::aimLeaving() {
    for (Entry &entry : m_leaving) {
        entry.from = entry.now;
        entry.to = {.up = entry.now.up, .aside = std::max(comesFrom, entry.now.aside), .opacity = 0};
    }
}

void CardMotion::start(bool isAnimated) {
    m_animation.stop();
    if (isAnimated) {
        moveOn(0);
        m_animation.start();
    } else {
        moveOn(1);
        settle();
    }
}

void CardMotion::hurry() {
    if (m_animation.state() != QAbstractAnimation::Running)
        return;
    m_animation.stop();
    moveOn(1);
    settle();
}

void CardMotion::moveOn(double progress) {
    const auto between = [progress](double from, double to) { return from + (to - from) * progress; };
    for (std::vector<Entry> *entries : {&m_cards, &m_leaving}) {
        for (Entry &entry : *entries)
            place(entry, {between(entry.from.up, entry.to.up), between(entry.from.aside, entry.to.aside),
                          between(entry.from.opacity, entry.to.opacity)});
    }
    onMoved();
}

void CardMotion::settle() {
    for (const Entry &entry : std::exchange(m_leaving, {})) {
        entry.card->hide();
        entry.card->deleteLater();
    }
    for (const Entry &entry : m_cards) {
        if (entry.to.opacity == 0)
            entry.card->hide();
    }
    onSettled();
}

void CardMotion::place(Entry &entry, const Place &place) {
    entry.now = place;
    onPlaced(*entry.card, place);
}

void CardMotion::placeAll() {
    for (std::vector<Entry> *entries : {&m_cards, &m_leaving}) {
        for (Entry &entry : *entries)
            place(entry, entry.now);
    }
}

double CardMotion::top() const {
    double top = 0;
    for (const std::vector<Entry> *entries : {&m_cards, &m_leaving}) {
        for (const Entry &entry : *entries) {
            if (entry.to.opacity > 0)
                top = std::max(top, entry.to.up);
            if (entry.now.opacity > 0)
                top = std::max(top, entry.now.up);
        }
    }
    return top;
}

std::vector<const ShelfCard *> CardMotion::seen() const {
    std::vector<const ShelfCard *> cards;
    for (const std::vector<Entry> *entries : {&m_cards, &m_leaving}) {
        for (const Entry &entry : *entries) {
            if (entry.now.opacity > 0 && !entry.card->isHidden())
                cards.push_back(entry.card);
        }
    }
    return cards;
}

void CardMotion::deleteCards() {
    m_animation.stop();
    for (std::vector<Entry> *entries : {&m_cards, &m_leaving}) {
        for (const Entry &entry : std::exchange(*entries, {}))
            delete entry.card;
    }
}

} // namespace vantrell
