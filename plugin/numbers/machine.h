// The arithmetic on numbers from files and from the host is written once, as small templates over a family of
// number types: here with the machine's own, in tests/proofs with the terms of a solver, which shows for all
// inputs what the comments say. A family names its types (U32, U64, I32, I64, Real, Bool) and these
// functions; with this one every function is what it would be without the family.
#pragma once

#include <cmath>
#include <cstdint>

namespace orvantis {

/// Each check that keeps an arithmetic in its bounds. The proofs take them back one at a time.
enum class Guard {
    kNone,
    // avi/walk_arithmetic.h
    kWalkMovesOn,
    kRestOfLevel,
    kRoomForListType,
    kStartInFile,
    kEndInFile,
    kMostChunks,
    kWindowStart,
    kWindowSkip,
    kWindowEnd,
    // avi/index_arithmetic.h
    kIndexHeaderInData,
    kIndexEntryHasSize,
    kIndexEntriesInData,
    kIndexUsedAhead,
    kIndexPieceInUse,
    kRoomForChunkHeader,
    kIndexBudget,
    kIndexBudgetFits,
    kStreamDigits,
    // avi/chunk_arithmetic.h
    kNarrowOffset,
    kNarrowSize,
    kChunkNumbers,
    kClaimStartsInFile,
    kAudioPart,
    // audio/sample_arithmetic.h
    kSampleFrameHasSize,
    kFramesInBuffer,
    // video/frame_time.h
    kQuotientFits,
    kRateHasNumerator,
    kFrameLastsATick,
    // video/rate_arithmetic.h
    kRateGiven,
    kScaleGiven,
    kDivisorNotZero,
    kDivisorPositive,
    kDurationFits,
    kLimitedTerm,
};

struct Machine {
    using Bool = bool;
    using U32 = std::uint32_t;
    using U64 = std::uint64_t;
    using I32 = std::int32_t;
    using I64 = std::int64_t;
    using Real = double;

    /// The condition, which the code relies on from here.
    template <Guard>
    static constexpr bool guarded(bool condition) noexcept {
        return condition;
    }
    /// Of the two only the one that is wanted is computed; both have one type.
    template <class Then, class Else>
    static constexpr auto choose(bool condition, Then then, Else otherwise) noexcept {
        return condition ? then() : otherwise();
    }
    /// The nearest double.
    template <class Integer>
    static double real(Integer value) noexcept {
        return static_cast<double>(value);
    }
    /// Towards zero; the value has to be one that 64 bits hold.
    static std::int64_t truncated(double value) noexcept { return static_cast<std::int64_t>(value); }
    /// To a whole number, halves away from zero.
    static double rounded(double value) noexcept { return std::round(value); }
    static double size(double value) noexcept { return std::fabs(value); }
};

}  // namespace orvantis
