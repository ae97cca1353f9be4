// A record in memory of exactly the size that a generation of the host gives it, with guard bytes round it.
// Used for every record that the simulated host passes to a plug-in.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <type_traits>
#include <vector>

namespace simhost {

class GuardedBytes {
 public:
    static constexpr std::uint8_t kGuardByte = 0xE7;
    static constexpr std::size_t kGuardBytes = 64;

    explicit GuardedBytes(std::size_t size, std::uint8_t fill = 0)
        : m_size(size), m_memory(size + 2 * kGuardBytes, kGuardByte) {
        std::fill_n(data(), size, fill);
    }
    std::uint8_t* data() noexcept { return m_memory.data() + kGuardBytes; }
    const std::uint8_t* data() const noexcept { return m_memory.data() + kGuardBytes; }
    std::size_t size() const noexcept { return m_size; }
    /// Where the first byte before or behind was written; empty when none was.
    std::string damage() const {
        const auto size = static_cast<std::ptrdiff_t>(m_size);
        const auto guard = static_cast<std::ptrdiff_t>(kGuardBytes);
        for (std::ptrdiff_t at = -guard; at < size + guard; ++at) {
            if ((at < 0 || at >= size) && data()[at] != kGuardByte) {
                return "offset " + std::to_string(at) + " of " + std::to_string(m_size) +
                       " bytes was written";
            }
        }
        return {};
    }

 private:
    std::size_t m_size;
    std::vector<std::uint8_t> m_memory;
};

template <class Record>
class GuardedRecord {
    static_assert(std::is_trivially_copyable_v<Record>);

 public:
    /// `bytes` may be less than the record's full size: the host's older generations end earlier.
    explicit GuardedRecord(const Record& initial, std::size_t bytes = sizeof(Record))
        : m_initial(initial), m_bytes(std::min(bytes, sizeof(Record))) {
        std::memcpy(m_bytes.data(), &initial, m_bytes.size());
    }
    void* address() noexcept { return m_bytes.data(); }
    std::size_t size() const noexcept { return m_bytes.size(); }
    std::string damage() const { return m_bytes.damage(); }
    /// The record as it stands; bytes that this generation has not are those of `initial`.
    Record value() const noexcept {
        Record out = m_initial;
        std::memcpy(&out, m_bytes.data(), m_bytes.size());
        return out;
    }

 private:
    Record m_initial;
    GuardedBytes m_bytes;
};

/// A record of which every byte is `fill`.
template <class Record>
Record filledRecord(std::uint8_t fill) noexcept {
    Record out;
    std::memset(static_cast<void*>(&out), fill, sizeof(Record));
    return out;
}

/// A packed field by value, for functions that take references: expectEqual(byValue(record.imageWidth), 5).
template <class Value>
constexpr Value byValue(Value value) noexcept {
    return value;
}

/// What a selector did: its result and the record before and after.
template <class Record>
struct Answer {
    std::int32_t result = 0;
    Record before{};
    Record record{};

    /// Offsets of the bytes that changed.
    std::vector<std::size_t> changedBytes() const {
        std::array<std::uint8_t, sizeof(Record)> a;
        std::array<std::uint8_t, sizeof(Record)> b;
        std::memcpy(a.data(), &before, a.size());
        std::memcpy(b.data(), &record, b.size());
        std::vector<std::size_t> out;
        for (std::size_t i = 0; i < a.size(); ++i) {
            if (a[i] != b[i]) {
                out.push_back(i);
            }
        }
        return out;
    }
};

}  // namespace simhost
