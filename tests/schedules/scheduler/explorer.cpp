#include "tests/schedules/scheduler/explorer.h"

#include <algorithm>
#include <cstdlib>
#include <ctime>

namespace schedules {

namespace {

constexpr std::size_t kMostChoices = 1 << 16;

double processorSeconds() {
    return static_cast<double>(std::clock()) / CLOCKS_PER_SEC;
}

}  // namespace

Explorer& explorer() noexcept {
    static Explorer instance;
    return instance;
}

void Explorer::begin() noexcept {
    m_position = 0;
    m_used = 0;
    m_decision = 0;
    Account& to = account();
    to.deviationCount = 0;
    for (const Choice& choice : m_path) {
        if (choice.option != 0 && to.deviationCount < Account::kMostDeviations) {
            to.deviations[to.deviationCount++] = {choice.decision, choice.option};
        }
    }
    to.preemptions = usedInPath();
}

unsigned Explorer::usedInPath() const noexcept {
    return static_cast<unsigned>(std::ranges::count_if(
        m_path, [](const Choice& choice) { return choice.preemptive && choice.option != 0; }));
}

bool Explorer::next() noexcept {
    while (!m_path.empty() && m_path.back().option + 1 == m_path.back().count) {
        m_path.pop_back();
    }
    if (m_path.empty()) {
        return false;
    }
    ++m_path.back().option;
    return true;
}

bool Explorer::explore(const std::function<void()>& schedule, unsigned preemptions, std::uint64_t stopAt) {
    m_path.reserve(kMostChoices);
    const double started = processorSeconds();
    Account& to = account();
    for (m_budget = 0; m_budget <= preemptions; ++m_budget) {
        m_path.clear();
        do {
            begin();
            // Those with fewer preemptions had their number in an earlier round; here they lead to others.
            const bool counts = to.preemptions == m_budget;
            if (counts && ++to.number == stopAt) {
                return true;
            }
            m_restart = false;
            schedule();
            ++to.runs;
            // Looked at now and then: it costs a system call.
            if (to.runs % 1024 == 0) {
                to.seconds = processorSeconds() - started;
            }
            if (counts) {
                ++to.schedules[m_budget];
            }
            if (m_restart) {
                break;
            }
        } while (next());
        if (m_restart) {
            ++to.restarts;
            to.number = 0;
            to.done = 0;
            std::fill(std::begin(to.schedules), std::end(to.schedules), 0);
            m_budget = ~0U;  // the loop goes on with 0
        } else {
            to.done = m_budget + 1;
        }
    }
    to.seconds = processorSeconds() - started;
    return false;
}

void Explorer::replay(const std::function<void()>& schedule, const std::vector<Deviation>& deviations) {
    m_replayed = &deviations;
    m_path.clear();
    begin();
    Account& to = account();
    for (const Deviation& deviation : deviations) {
        to.deviations[to.deviationCount++] = deviation;
    }
    schedule();
    m_replayed = nullptr;
}

unsigned Explorer::choose(unsigned count, bool preemptive) noexcept {
    ++m_decision;
    if (m_replayed != nullptr) {
        for (const Deviation& deviation : *m_replayed) {
            if (deviation.decision == m_decision) {
                return std::min(deviation.option, count - 1);
            }
        }
        return 0;
    }
    if (count == 1 || (preemptive && m_used == m_budget)) {
        return 0;
    }
    if (m_position == m_path.size()) {
        if (m_path.size() == kMostChoices) {
            std::abort();
        }
        m_path.push_back({m_decision, 0, static_cast<std::uint8_t>(count), preemptive});
    }
    const Choice& choice = m_path[m_position++];
    if (preemptive && choice.option != 0) {
        ++m_used;
    }
    return choice.option;
}

}  // namespace schedules
