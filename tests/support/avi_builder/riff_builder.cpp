#include "tests/support/avi_builder/riff_builder.h"

#include <stdexcept>
#include <utility>

namespace orvantis::test {

namespace {

// Little-endian, whatever the machine is.
template <typename T>
void putWord(std::uint8_t* place, T value) {
    for (std::size_t i = 0; i < sizeof(T); ++i) {
        place[i] = static_cast<std::uint8_t>(value >> (8 * i));
    }
}

template <typename T>
void appendWord(Bytes& bytes, T value) {
    bytes.resize(bytes.size() + sizeof(T));
    putWord(bytes.data() + bytes.size() - sizeof(T), value);
}

}  // namespace

std::uint32_t codeOf(std::string_view fourLetters) {
    if (fourLetters.size() != 4) {
        throw std::invalid_argument("a four-character code has four characters");
    }
    std::uint32_t word = 0;
    for (std::size_t i = 4; i-- > 0;) {
        word = word << 8 | static_cast<std::uint8_t>(fourLetters[i]);
    }
    return word;
}

RiffBuilder& RiffBuilder::begin(std::string_view id) {
    m_open.push_back(position());
    return code(id).u32(0);
}

RiffBuilder& RiffBuilder::beginList(std::string_view id, std::string_view type) {
    return begin(id).code(type);
}

RiffBuilder& RiffBuilder::end() {
    return endWithSize(static_cast<std::uint32_t>(position() - m_open.back() - 8));
}

RiffBuilder& RiffBuilder::endWithSize(std::uint32_t claimedSize) {
    const std::uint64_t header = m_open.back();
    m_open.pop_back();
    patch32(header + 4, claimedSize);
    if ((position() - header) % 2 != 0) {
        u8(0);
    }
    return *this;
}

RiffBuilder& RiffBuilder::chunk(std::string_view id, std::span<const std::uint8_t> data) {
    return begin(id).bytes(data).end();
}

RiffBuilder& RiffBuilder::u8(std::uint8_t value) {
    m_bytes.push_back(value);
    return *this;
}

RiffBuilder& RiffBuilder::u16(std::uint16_t value) {
    appendWord(m_bytes, value);
    return *this;
}

RiffBuilder& RiffBuilder::u32(std::uint32_t value) {
    appendWord(m_bytes, value);
    return *this;
}

RiffBuilder& RiffBuilder::u64(std::uint64_t value) {
    appendWord(m_bytes, value);
    return *this;
}

RiffBuilder& RiffBuilder::bytes(std::span<const std::uint8_t> data) {
    m_bytes.insert(m_bytes.end(), data.begin(), data.end());
    return *this;
}

RiffBuilder& RiffBuilder::fill(std::size_t count, std::uint8_t value) {
    m_bytes.insert(m_bytes.end(), count, value);
    return *this;
}

RiffBuilder& RiffBuilder::patch32(std::uint64_t at, std::uint32_t value) {
    if (at < m_origin || at + sizeof(value) > position()) {
        throw std::out_of_range("patch outside the bytes written");
    }
    putWord(m_bytes.data() + (at - m_origin), value);
    return *this;
}

RiffBuilder& RiffBuilder::patch64(std::uint64_t at, std::uint64_t value) {
    patch32(at, static_cast<std::uint32_t>(value));
    return patch32(at + 4, static_cast<std::uint32_t>(value >> 32));
}

Bytes RiffBuilder::take() {
    while (!m_open.empty()) {
        end();
    }
    return std::exchange(m_bytes, {});
}

}  // namespace orvantis::test
