// Writes RIFF bytes for tests: chunks and lists of any depth, with true sizes or with lies. Knows nothing of
// AVI; see avi_builder.h for whole files. Little-endian, as the format demands.
//
//     RiffBuilder riff;
//     riff.beginList("RIFF", "AVI ")
//         .beginList("LIST", "hdrl")
//         .chunk("avih", mainHeaderBytes)
//         .end()
//         .begin("idx1").u32(1).u32(2).endWithSize(0xFFFFFFFF)  // claims more than it has
//         .end();
//     std::vector<std::uint8_t> file = riff.take();
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>
#include <vector>

namespace orvantis::test {

using Bytes = std::vector<std::uint8_t>;

/// The 32-bit word of a four-letter code, first letter in the lowest byte.
std::uint32_t codeOf(std::string_view fourLetters);

class RiffBuilder {
 public:
    /// `origin` is the file position of the first byte written: for files that are put together from several
    /// pieces.
    explicit RiffBuilder(std::uint64_t origin = 0) : m_origin(origin) {}

    /// Opens a chunk; what follows up to its end() is its data.
    RiffBuilder& begin(std::string_view id);
    /// Opens a list ("LIST") or form ("RIFF") of this type.
    RiffBuilder& beginList(std::string_view id, std::string_view type);
    /// Closes the innermost open chunk or list: writes its true size and, if that is odd, a pad byte.
    RiffBuilder& end();
    /// Closes it with this size in its header, whatever it holds. Pads after its true size.
    RiffBuilder& endWithSize(std::uint32_t claimedSize);

    /// A whole chunk.
    RiffBuilder& chunk(std::string_view id, std::span<const std::uint8_t> data);

    RiffBuilder& u8(std::uint8_t value);
    RiffBuilder& u16(std::uint16_t value);
    RiffBuilder& u32(std::uint32_t value);
    RiffBuilder& u64(std::uint64_t value);
    RiffBuilder& code(std::string_view fourLetters) { return u32(codeOf(fourLetters)); }
    RiffBuilder& bytes(std::span<const std::uint8_t> data);
    RiffBuilder& fill(std::size_t count, std::uint8_t value = 0);

    /// File position of the next byte.
    std::uint64_t position() const noexcept { return m_origin + m_bytes.size(); }
    /// Overwrites bytes that were written before; `at` is a file position.
    RiffBuilder& patch32(std::uint64_t at, std::uint32_t value);
    RiffBuilder& patch64(std::uint64_t at, std::uint64_t value);

    /// The bytes so far.
    const Bytes& data() const noexcept { return m_bytes; }
    /// Closes what is open and hands the bytes over; the builder is empty afterwards.
    Bytes take();

 private:
    std::uint64_t m_origin;
    Bytes m_bytes;
    std::vector<std::uint64_t> m_open;  // file positions of the headers of open chunks
};

}  // namespace orvantis::test
