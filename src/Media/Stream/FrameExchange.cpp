// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Media/Stream/FrameExchange.h"

#include "Support/HostTime.h"

#include <algorithm>
#include <chrono>
#include <utility>

namespace vantrell {

FrameExchange::Slot *FrameExchange::freeSlot() {
    // The latest picture needs nothing brought up to date.
    if (m_latest && !m_latest->isBusy)
        return m_latest;
    const auto free = std::ranges::find_if(m_slots, [](const auto &slot) { return !slot->isBusy; });
    if (free != m_slots.end())
        return free->get();
    if (int(m_slots.size()) == m_mostPictures)
        return nullptr;
    return m_slots.emplace_back(std::make_unique<Slot>(m_picture)).get();
}

FrameExchange::Slot *FrameExchange::acquire() {
    std::unique_lock lock(m_mutex);
    Slot *found = nullptr;
    m_changed.wait(lock, [&] {
        if (m_abandoned)
            return true;
        found = freeSlot();
        return found != nullptr;
    });
    if (m_abandoned)
        return nullptr;
    found->isBusy = true;
    return found;
}

FrameExchange::Slot *FrameExchange::tryAcquire() {
    const std::scoped_lock lock(m_mutex);
    Slot *const found = m_abandoned ? nullptr : freeSlot();
    if (found)
        found->isBusy = true;
    return found;
}

void FrameExchange::submit(Slot *slot, BlockMap changed, double hostTime) {
    for (const auto &other : m_slots) {
        if (other.get() != slot)
            other->stale.add(changed);
    }
    slot->stale.clear();
    m_latest = slot;
    {
        const std::scoped_lock lock(m_mutex);
        m_jobs.push_back({.slot = slot, .changed = std::move(changed), .hostTime = hostTime});
    }
    m_changed.notify_all();
}

void FrameExchange::giveBack(Slot *slot) {
    const std::scoped_lock lock(m_mutex);
    slot->isBusy = false;
}

void FrameExchange::close() {
    {
        const std::scoped_lock lock(m_mutex);
        m_closed = true;
    }
    m_changed.notify_all();
}

std::optional<FrameExchange::Job> FrameExchange::next() {
    std::unique_lock lock(m_mutex);
    m_changed.wait(lock, [this] { return !m_jobs.empty() || m_closed; });
    if (m_jobs.empty())
        return std::nullopt;
    Job job = std::move(m_jobs.front());
    m_jobs.pop_front();
    return job;
}

std::optional<FrameExchange::Job> FrameExchange::next(double deadline, const Job &before) {
    // The capture thread may be looking into the picture at this moment: a little later, then.
    constexpr double patience = 0.01;
    // Its time is when it was due: a change that was seen before now may be on its way.
    const double due = deadline;
    for (;; deadline = hostNow() + patience) {
        std::unique_lock lock(m_mutex);
        const std::chrono::duration<double> left(std::max(deadline - hostNow(), 0.0));
        if (m_changed.wait_for(lock, left, [this] { return !m_jobs.empty() || m_closed; }))
            break;
        if (!before.slot->isBusy) {
            before.slot->isBusy = true;
            return Job{before.slot, BlockMap(m_picture), due, true};
        }
    }
    return next();
}

void FrameExchange::done(const Job &job) {
    {
        const std::scoped_lock lock(m_mutex);
        job.slot->isBusy = false;
    }
    m_changed.notify_all();
}

void FrameExchange::abandon() {
    {
        const std::scoped_lock lock(m_mutex);
        m_abandoned = true;
        m_closed = true;
        m_jobs.clear();
    }
    m_changed.notify_all();
}

} // namespace vantrell
