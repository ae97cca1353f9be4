// Says byte by byte what a selector has to write into its record. Offsets are those of the host's interface,
// counted here anew: a wrong offset in the plug-in's own declarations shows as a byte in the wrong place.
//
//     EXPECT_TRUE(wroteExactly(answer, {number32(52, 200, "priority"), number32(72, 1,
//     "avoidAudioConform")}));
#pragma once

#include <gtest/gtest.h>

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>
#include <vector>

#include "simhost/guarded_record.h"

/// One field: its bytes after the call.
struct Field {
    std::size_t offset;
    std::string bytes;
    const char* name;
};

namespace field_detail {

inline Field number(std::size_t offset, std::uint64_t value, std::size_t bytes, const char* name) {
    Field field{offset, std::string(bytes, '\0'), name};
    for (std::size_t i = 0; i < bytes; ++i) {
        field.bytes[i] = static_cast<char>(static_cast<unsigned char>(value >> (8 * i)));
    }
    return field;
}

}  // namespace field_detail

inline Field number8(std::size_t offset, std::uint8_t value, const char* name) {
    return field_detail::number(offset, value, 1, name);
}
inline Field number16(std::size_t offset, std::uint16_t value, const char* name) {
    return field_detail::number(offset, value, 2, name);
}
inline Field number32(std::size_t offset, std::uint32_t value, const char* name) {
    return field_detail::number(offset, value, 4, name);
}
inline Field number64(std::size_t offset, std::uint64_t value, const char* name) {
    return field_detail::number(offset, value, 8, name);
}
inline Field float32(std::size_t offset, float value, const char* name) {
    return number32(offset, std::bit_cast<std::uint32_t>(value), name);
}
inline Field pointer(std::size_t offset, const void* value, const char* name) {
    return number64(offset, reinterpret_cast<std::uintptr_t>(value), name);
}
/// The bytes as they stand, terminators included: text(300, {"avi\0\0", 5}, "PlatformExtension").
inline Field text(std::size_t offset, std::string_view bytes, const char* name) {
    return {offset, std::string(bytes), name};
}

/// Every byte of the record is that of `fields`, or, outside them, what it was before the call.
template <class Record>
::testing::AssertionResult wroteExactly(const simhost::Answer<Record>& answer,
                                        const std::vector<Field>& fields) {
    std::string before(sizeof(Record), '\0');
    std::string after(sizeof(Record), '\0');
    std::memcpy(before.data(), &answer.before, before.size());
    std::memcpy(after.data(), &answer.record, after.size());
    std::vector<const char*> owner(sizeof(Record), "not to be written");
    for (const Field& field : fields) {
        if (field.offset + field.bytes.size() > before.size()) {
            return ::testing::AssertionFailure() << field.name << " lies outside the record";
        }
        for (std::size_t i = 0; i < field.bytes.size(); ++i) {
            before[field.offset + i] = field.bytes[i];
            owner[field.offset + i] = field.name;
        }
    }
    std::string differences;
    for (std::size_t i = 0; i < before.size(); ++i) {
        if (before[i] != after[i]) {
            differences += "\n  offset " + std::to_string(i) + " (" + owner[i] + "): expected " +
                           std::to_string(static_cast<unsigned char>(before[i])) + ", found " +
                           std::to_string(static_cast<unsigned char>(after[i]));
        }
    }
    if (differences.empty()) {
        return ::testing::AssertionSuccess();
    }
    return ::testing::AssertionFailure() << "the record differs at" << differences;
}
