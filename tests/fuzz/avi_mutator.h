// What the fuzz targets that take AVI files do to an input: they change its tree of chunks and repair or keep
// what no longer agrees with it, or hand it to the fuzzer's own mutator, which knows bytes only.
#pragma once

#include <cstddef>
#include <cstdint>

namespace fuzz {

/// Changes `size` bytes at `data`, which has room for `mostBytes`; returns the new size. The fuzzer's
/// LLVMFuzzerMutate, or a test's own.
using ByteMutator = std::size_t (*)(std::uint8_t* data, std::size_t size, std::size_t mostBytes);

/// The same by the rules of the format. The result is never longer than `mostBytes`, and depends on nothing
/// but the input, the seed and what `mutateBytes` does.
std::size_t mutateAvi(std::uint8_t* data, std::size_t size, std::size_t mostBytes, std::uint64_t seed,
                      ByteMutator mutateBytes);

/// Puts chunks of the second file into the first one, at `out`; returns its size, 0 when nothing of at most
/// `mostBytes` came about.
std::size_t crossAvi(const std::uint8_t* first, std::size_t firstSize, const std::uint8_t* second,
                     std::size_t secondSize, std::uint8_t* out, std::size_t mostBytes, std::uint64_t seed);

}  // namespace fuzz
