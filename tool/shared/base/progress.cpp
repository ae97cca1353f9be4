#include "tool/shared/base/progress.h"

#include <algorithm>
#include <cstdio>
#include <utility>

#include "tool/shared/base/interruption.h"
#include "tool/shared/base/number_text.h"

namespace simhost::tool {
namespace {

constexpr std::uint64_t kBarWidth = 40;
constexpr std::size_t kLeftWidth = 24;

}  // namespace

Progress::Progress(bool enabled, std::string what, std::uint64_t total)
    : m_enabled(enabled), m_what(std::move(what)), m_total(std::max<std::uint64_t>(total, 1)) {
    if (m_enabled) {
        draw();
    }
}

Progress::~Progress() {
    if (m_enabled) {
        (void)std::fprintf(stderr, "\r%*s\r", static_cast<int>(kBarWidth + m_what.size() + 30 + kLeftWidth),
                           "");
    }
}

void Progress::advance(std::uint64_t count) {
    throwIfInterrupted();
    const bool ends = m_done < m_total && count >= m_total - m_done;
    m_done = std::min(m_done + count, m_total);
    if (m_enabled && (ends || std::chrono::steady_clock::now() >= m_nextDraw)) {
        m_nextDraw = std::chrono::steady_clock::now() + std::chrono::milliseconds(100);
        draw();
    }
}

void Progress::draw() const {
    const std::uint64_t filled = kBarWidth * m_done / m_total;
    std::string bar(kBarWidth, '.');
    std::fill_n(bar.begin(), filled, '#');
    (void)std::fprintf(
        stderr, "\r%s [%s] %llu/%llu%-15s", m_what.c_str(), bar.c_str(),
        static_cast<unsigned long long>(m_done), static_cast<unsigned long long>(m_total),
        timeLeftText(std::chrono::duration<double>(std::chrono::steady_clock::now() - m_started).count(),
                     m_done, m_total)
            .c_str());
    (void)std::fflush(stderr);
}

}  // namespace simhost::tool
