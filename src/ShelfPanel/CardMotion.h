// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "ShelfPanel/ShelfCard.h"

#include <QVariantAnimation>

#include <functional>
#include <vector>

namespace vantrell {

/// Where the shelf's cards lie and how they get from one place to another: those that are there, and
/// dismissed ones on their way out. Main thread.
class CardMotion {
public:
    struct Place {
        /// Points above the lowest place, and to the right.
        double up = 0;
        double aside = 0;
        double opacity = 1;
        bool operator==(const Place &) const = default;
    };
    struct Entry {
        ShelfCard *card;
        Place from;
        Place to;
        Place now;
    };

    CardMotion();
    CardMotion(const CardMotion &) = delete;
    CardMotion &operator=(const CardMotion &) = delete;

    /// The oldest first.
    std::vector<Entry> &cards() { return m_cards; }
    const std::vector<Entry> &cards() const { return m_cards; }
    /// How a card that has just come begins.
    static Entry newcomer(ShelfCard *card);
    /// From now on these are there; whoever was and is not among them leaves.
    void replace(std::vector<Entry> cards);

    /// The card goes there with the next `start`. One that is new comes in at that height.
    void aim(Entry &entry, const Place &target);
    /// Those that leave go to the side, from where they are.
    void aimLeaving();
    /// All set out for where they were aimed at; at once when not animated.
    void start(bool isAnimated);
    /// Whoever is under way is there now.
    void hurry();
    /// Puts each card where it is now, after the window has changed.
    void placeAll();
    void place(Entry &entry, const Place &place);

    bool isEmpty() const { return m_cards.empty(); }
    bool hasSeveral() const { return m_cards.size() + m_leaving.size() > 1; }
    /// The highest place of a card that is seen or will be.
    double top() const;
    /// Cards of which something is seen.
    std::vector<const ShelfCard *> seen() const;
    /// With those that leave, for the end.
    void deleteCards();

    /// Puts the card's widget there.
    std::function<void(ShelfCard &, const Place &)> onPlaced;
    /// All cards have been moved a step.
    std::function<void()> onMoved;
    /// All are where they belong, and those that left are gone.
    std::function<void()> onSettled;

private:
    void moveOn(double progress);
    void settle();

    std::vector<Entry> m_cards;
    std::vector<Entry> m_leaving;
    QVariantAnimation m_animation;
};

} // namespace vantrell
