#include "avi/problems.h"

#include <algorithm>
#include <exception>
#include <utility>

#include "avi/error_text.h"

namespace orvantis {

void Problems::add(ProblemPlace place, std::string_view line) noexcept {
    const std::size_t begin = m_text.size();
    try {
        if (m_runs.empty() || m_runs.back().place != place) {
            m_runs.push_back({place, begin, begin});
        }
    } catch (const std::exception&) {
        return;  // out of memory
    }
    appendBounded(m_text, line);
    m_runs.back().end = m_text.size();
}

bool Problems::hasRoom() const noexcept {
    return hasRoomFor(m_text, 1);
}

void Problems::clear() noexcept {
    m_text.clear();
    m_runs.clear();
}

void Problems::putInOrder() noexcept {
    const auto earlier = [](const Run& a, const Run& b) { return a.place < b.place; };
    if (std::is_sorted(m_runs.begin(), m_runs.end(), earlier)) {
        return;
    }
    try {
        std::string ordered;
        ordered.reserve(m_text.size());
        std::stable_sort(m_runs.begin(), m_runs.end(), earlier);
        for (Run& run : m_runs) {
            const std::size_t begin = ordered.size();
            ordered.append(m_text, run.begin, run.end - run.begin);
            run.begin = begin;
            run.end = ordered.size();
        }
        m_text = std::move(ordered);
    } catch (const std::exception&) {
        return;  // out of memory: told in the order in which they were met
    }
}

}  // namespace orvantis
