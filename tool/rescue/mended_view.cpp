#include "tool/rescue/mended_view.h"

#include <algorithm>
#include <cstddef>
#include <stdexcept>

namespace simhost::tool {
namespace {

// The part of `bytes`, which belong at `from`, that lies in `target`, which begins at `at`.
void overlay(std::span<const std::uint8_t> bytes, std::uint64_t from, std::span<std::uint8_t> target,
             std::uint64_t at) {
    const std::uint64_t begin = std::max(from, at);
    const std::uint64_t end = std::min(from + bytes.size(), at + target.size());
    if (begin < end) {
        const auto part =
            bytes.subspan(static_cast<std::size_t>(begin - from), static_cast<std::size_t>(end - begin));
        std::copy(part.begin(), part.end(), target.begin() + static_cast<std::ptrdiff_t>(begin - at));
    }
}

[[noreturn]] void refuse() {
    throw std::logic_error("a mended view is only read");
}

}  // namespace

std::size_t MendedView::read(std::uint64_t at, std::span<std::uint8_t> bytes) {
    if (at >= size()) {
        return 0;
    }
    const auto out =
        bytes.first(static_cast<std::size_t>(std::min<std::uint64_t>(bytes.size(), size() - at)));
    const std::size_t own = m_clip.read(at, out);
    std::fill(out.begin() + static_cast<std::ptrdiff_t>(own), out.end(), std::uint8_t{0});
    const auto& patches = m_mending.patches;
    auto patch = std::partition_point(patches.begin(), patches.end(),
                                      [at](const Patch& p) { return p.at + p.bytes.size() <= at; });
    for (; patch != patches.end() && patch->at < at + out.size(); ++patch) {
        overlay(patch->bytes, patch->at, out, at);
    }
    overlay(m_mending.append, m_mending.appendAt, out, at);
    return out.size();
}

Extent MendedView::dataFrom(std::uint64_t at) {
    if (at >= size()) {
        return {size(), size()};
    }
    if (at >= m_mending.appendAt) {
        return {at, size()};
    }
    Extent data = m_clip.dataFrom(at);
    const auto& patches = m_mending.patches;
    const auto patch = std::partition_point(patches.begin(), patches.end(),
                                            [at](const Patch& p) { return p.at + p.bytes.size() <= at; });
    // Bytes written into a hole are data.
    if (patch != patches.end() && patch->at < data.begin) {
        data = {std::max(patch->at, at), patch->at + patch->bytes.size()};
    }
    if (data.bytes() == 0 || data.begin >= m_mending.appendAt) {
        data = {m_mending.appendAt, size()};
    }
    return {data.begin, std::min(data.end, size())};
}

void MendedView::write(std::uint64_t, std::span<const std::uint8_t>) {
    refuse();
}

void MendedView::resize(std::uint64_t) {
    refuse();
}

void MendedView::flush() {
    refuse();
}

void MendedView::allowHoles() {
    refuse();
}

}  // namespace simhost::tool
