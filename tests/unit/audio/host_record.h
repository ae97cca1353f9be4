// Host records as tests want them: at an odd address, as packed records may lie, and filled with a pattern,
// so that a byte written too many is seen.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <new>
#include <vector>

namespace orvantis::audio_test {

inline constexpr std::uint8_t kPattern = 0xA5;

template <class Record>
class HostRecord {
 public:
    HostRecord() {
        m_storage.fill(std::byte{kPattern});
        m_record = reinterpret_cast<Record*>(m_storage.data() + 1);
    }
    HostRecord(const HostRecord&) = delete;
    HostRecord& operator=(const HostRecord&) = delete;

    Record& operator*() { return *m_record; }
    Record* operator->() { return m_record; }
    std::vector<std::uint8_t> bytes() const {
        std::vector<std::uint8_t> copy(sizeof(Record));
        std::memcpy(copy.data(), m_storage.data() + 1, copy.size());
        return copy;
    }

 private:
    alignas(8) std::array<std::byte, sizeof(Record) + 1> m_storage;
    Record* m_record;
};

/// Writes `value` over the bytes of an expected record from `offset` on.
template <class Value>
void put(std::vector<std::uint8_t>& record, std::size_t offset, Value value) {
    std::memcpy(record.data() + offset, &value, sizeof value);
}

}  // namespace orvantis::audio_test
