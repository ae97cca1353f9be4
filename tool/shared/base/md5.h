// MD5 (RFC 1321), the hash of ffmpeg's frame lists. It tells accidents from sameness and is no protection
// against forgery. Own code because no library that the supported compilers share has it. Not thread-safe.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>

namespace simhost::tool {

using Md5Digest = std::array<std::uint8_t, 16>;

class Md5 {
 public:
    void add(std::span<const std::uint8_t> bytes) noexcept;
    /// Of all bytes added. Begins anew.
    Md5Digest finish() noexcept;

 private:
    void addBlock(const std::uint8_t* block) noexcept;

    static constexpr std::array<std::uint32_t, 4> kStart = {0x67452301, 0xEFCDAB89, 0x98BADCFE, 0x10325476};

    std::array<std::uint32_t, 4> m_state = kStart;
    std::array<std::uint8_t, 64> m_block{};  // begun
    std::uint64_t m_bytes = 0;
};

Md5Digest md5(std::span<const std::uint8_t> bytes) noexcept;
/// 32 lower-case digits.
std::string hexText(const Md5Digest& digest);

}  // namespace simhost::tool
