// Lists of codes with their names: lookup in both directions. A row is anything with a `code` and a `name`.
// Names are static strings; any thread.
#pragma once

#include <cstddef>
#include <cstdint>
#include <stdexcept>

namespace host {

struct NamedCode {
    std::int32_t code;
    const char* name;
};

/// What stands in the log for a code without a name.
inline constexpr const char* kUnknownName = "????";

/// The name of a code, compared as 32 bits without sign; null when the list has none.
template <class Row, std::size_t kCount>
constexpr const char* findName(const Row (&rows)[kCount], std::uint32_t code) noexcept {
    for (const Row& row : rows) {
        if (static_cast<std::uint32_t>(row.code) == code) {
            return row.name;
        }
    }
    return nullptr;
}

/// The same with kUnknownName for null.
template <class Row, std::size_t kCount>
constexpr const char* nameOrUnknown(const Row (&rows)[kCount], std::uint32_t code) noexcept {
    const char* const name = findName(rows, code);
    return name != nullptr ? name : kUnknownName;
}

/// Whether the two read the same. The compiler works it out for every constant below; the standard library's
/// comparison, which measures both texts first, takes it many times as long.
constexpr bool sameText(const char* one, const char* other) noexcept {
    while (*one != '\0' && *one == *other) {
        ++one;
        ++other;
    }
    return *one == *other;
}

/// The code of a name, for constants: a name that is not in the list does not compile there.
template <class Row, std::size_t kCount>
constexpr auto codeNamed(const Row (&rows)[kCount], const char* name) {
    for (const Row& row : rows) {
        if (sameText(row.name, name)) {
            return row.code;
        }
    }
    throw std::out_of_range("no such name");
}

}  // namespace host
