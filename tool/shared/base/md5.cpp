#include "tool/shared/base/md5.h"

#include <algorithm>
#include <bit>
#include <cstring>

namespace simhost::tool {
namespace {

// floor(2^32 × |sin(i + 1)|), as the RFC lists them.
constexpr std::array<std::uint32_t, 64> kSines = {
    0xD76AA478, 0xE8C7B756, 0x242070DB, 0xC1BDCEEE, 0xF57C0FAF, 0x4787C62A, 0xA8304613, 0xFD469501,
    0x698098D8, 0x8B44F7AF, 0xFFFF5BB1, 0x895CD7BE, 0x6B901122, 0xFD987193, 0xA679438E, 0x49B40821,
    0xF61E2562, 0xC040B340, 0x265E5A51, 0xE9B6C7AA, 0xD62F105D, 0x02441453, 0xD8A1E681, 0xE7D3FBC8,
    0x21E1CDE6, 0xC33707D6, 0xF4D50D87, 0x455A14ED, 0xA9E3E905, 0xFCEFA3F8, 0x676F02D9, 0x8D2A4C8A,
    0xFFFA3942, 0x8771F681, 0x6D9D6122, 0xFDE5380C, 0xA4BEEA44, 0x4BDECFA9, 0xF6BB4B60, 0xBEBFBC70,
    0x289B7EC6, 0xEAA127FA, 0xD4EF3085, 0x04881D05, 0xD9D4D039, 0xE6DB99E5, 0x1FA27CF8, 0xC4AC5665,
    0xF4292244, 0x432AFF97, 0xAB9423A7, 0xFC93A039, 0x655B59C3, 0x8F0CCC92, 0xFFEFF47D, 0x85845DD1,
    0x6FA87E4F, 0xFE2CE6E0, 0xA3014314, 0x4E0811A1, 0xF7537E82, 0xBD3AF235, 0x2AD7D2BB, 0xEB86D391};
constexpr std::array<std::array<int, 4>, 4> kTurns = {
    {{7, 12, 17, 22}, {5, 9, 14, 20}, {4, 11, 16, 23}, {6, 10, 15, 21}}};

}  // namespace

void Md5::addBlock(const std::uint8_t* block) noexcept {
    std::array<std::uint32_t, 16> words{};
    for (std::size_t i = 0; i < words.size(); ++i) {
        for (std::size_t byte = 0; byte < 4; ++byte) {
            words[i] |= std::uint32_t{block[4 * i + byte]} << (8 * byte);
        }
    }
    std::uint32_t a = m_state[0];
    std::uint32_t b = m_state[1];
    std::uint32_t c = m_state[2];
    std::uint32_t d = m_state[3];
    const auto step = [&](std::size_t i, std::uint32_t mixed, std::size_t word) {
        const std::uint32_t sum = a + mixed + kSines[i] + words[word & 15];
        a = d;
        d = c;
        c = b;
        b += std::rotl(sum, kTurns[i / 16][i % 4]);
    };
    std::size_t i = 0;
    for (; i < 16; ++i) {
        step(i, (b & c) | (~b & d), i);
    }
    for (; i < 32; ++i) {
        step(i, (d & b) | (~d & c), 5 * i + 1);
    }
    for (; i < 48; ++i) {
        step(i, b ^ c ^ d, 3 * i + 5);
    }
    for (; i < 64; ++i) {
        step(i, c ^ (b | ~d), 7 * i);
    }
    m_state[0] += a;
    m_state[1] += b;
    m_state[2] += c;
    m_state[3] += d;
}

void Md5::add(std::span<const std::uint8_t> bytes) noexcept {
    std::size_t begun = m_bytes % m_block.size();
    m_bytes += bytes.size();
    while (!bytes.empty()) {
        if (begun == 0 && bytes.size() >= m_block.size()) {
            addBlock(bytes.data());
            bytes = bytes.subspan(m_block.size());
            continue;
        }
        const std::size_t taken = std::min(bytes.size(), m_block.size() - begun);
        std::memcpy(m_block.data() + begun, bytes.data(), taken);
        bytes = bytes.subspan(taken);
        begun += taken;
        if (begun == m_block.size()) {
            addBlock(m_block.data());
            begun = 0;
        }
    }
}

Md5Digest Md5::finish() noexcept {
    const std::uint64_t bits = m_bytes * 8;
    static constexpr std::array<std::uint8_t, 64> kPadding = {0x80};
    // A one, and noughts up to the length at a block's end.
    const std::size_t begun = m_bytes % m_block.size();
    add({kPadding.data(), begun < 56 ? 56 - begun : 120 - begun});
    std::array<std::uint8_t, 8> length{};
    for (std::size_t i = 0; i < length.size(); ++i) {
        length[i] = static_cast<std::uint8_t>(bits >> (8 * i));
    }
    add(length);
    Md5Digest out{};
    for (std::size_t i = 0; i < out.size(); ++i) {
        out[i] = static_cast<std::uint8_t>(m_state[i / 4] >> (8 * (i % 4)));
    }
    *this = Md5();
    return out;
}

Md5Digest md5(std::span<const std::uint8_t> bytes) noexcept {
    Md5 hash;
    hash.add(bytes);
    return hash.finish();
}

std::string hexText(const Md5Digest& digest) {
    constexpr const char* kDigits = "0123456789abcdef";
    std::string out;
    for (const std::uint8_t byte : digest) {
        out += kDigits[byte >> 4];
        out += kDigits[byte & 15];
    }
    return out;
}

}  // namespace simhost::tool
