// What every fuzz target shares: the entry that the fuzzer (or replay_main.cpp) calls, checks that stay in
// every build, and a reader for inputs that are a few numbers.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <span>
#include <type_traits>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);  // NOLINT(readability-*)

namespace fuzz {

[[noreturn]] inline void fail(const char* what, const char* file, int line) {
    std::fprintf(stderr, "%s:%d: violated: %s\n", file, line, what);
    std::abort();
}

/// Takes numbers off the front of an input; an input that has ended gives zeros.
class Numbers {
 public:
    Numbers(const std::uint8_t* data, std::size_t size) : m_rest(data, size) {}

    template <class Number>
    Number take() {
        static_assert(std::is_integral_v<Number>);
        Number number = 0;
        const std::size_t count = m_rest.size() < sizeof(number) ? m_rest.size() : sizeof(number);
        if (count != 0) {
            std::memcpy(&number, m_rest.data(), count);
        }
        m_rest = m_rest.subspan(count);
        return number;
    }
    std::span<const std::uint8_t> takeBytes(std::size_t count) {
        const auto bytes = m_rest.first(count < m_rest.size() ? count : m_rest.size());
        m_rest = m_rest.subspan(bytes.size());
        return bytes;
    }
    std::span<const std::uint8_t> rest() const { return m_rest; }

 private:
    std::span<const std::uint8_t> m_rest;
};

}  // namespace fuzz

/// Ends the process, which the fuzzer takes for a find.
#define FUZZ_CHECK(condition)                           \
    do {                                                \
        if (!(condition))                               \
            fuzz::fail(#condition, __FILE__, __LINE__); \
    } while (false)
