// Gives libFuzzer the mutator that knows AVI files. Linked into the targets that take such files. With
// ORVANTIS_FUZZ_BYTES_ONLY in the environment the fuzzer's own does everything, to be compared with.
#include <cstddef>
#include <cstdint>
#include <cstdlib>

#include "tests/fuzz/avi_mutator.h"

// The names are the fuzzer's.
// NOLINTBEGIN(readability-*)
extern "C" std::size_t LLVMFuzzerMutate(std::uint8_t* data, std::size_t size, std::size_t maxSize);

extern "C" std::size_t LLVMFuzzerCustomMutator(std::uint8_t* data, std::size_t size, std::size_t maxSize,
                                               unsigned int seed);
extern "C" std::size_t LLVMFuzzerCustomCrossOver(const std::uint8_t* data1, std::size_t size1,
                                                 const std::uint8_t* data2, std::size_t size2,
                                                 std::uint8_t* out, std::size_t maxOutSize,
                                                 unsigned int seed);

std::size_t LLVMFuzzerCustomMutator(std::uint8_t* data, std::size_t size, std::size_t maxSize,
                                    unsigned int seed) {
    static const bool bytesOnly = std::getenv("ORVANTIS_FUZZ_BYTES_ONLY") != nullptr;
    if (bytesOnly) {
        return LLVMFuzzerMutate(data, size, maxSize);
    }
    return fuzz::mutateAvi(data, size, maxSize, seed, LLVMFuzzerMutate);
}

std::size_t LLVMFuzzerCustomCrossOver(const std::uint8_t* data1, std::size_t size1, const std::uint8_t* data2,
                                      std::size_t size2, std::uint8_t* out, std::size_t maxOutSize,
                                      unsigned int seed) {
    return fuzz::crossAvi(data1, size1, data2, size2, out, maxOutSize, seed);
}
// NOLINTEND(readability-*)
