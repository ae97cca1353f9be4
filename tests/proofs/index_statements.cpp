#include "avi/index_arithmetic.h"

#include "tests/proofs/proof.h"

namespace proofs {
namespace {

using namespace orvantis;  // NOLINT(google-build-using-namespace): the arithmetic that the statements are
                           // about

struct EntriesInData {
    template <class A>
    static void state(A& a) {
        using U32 = typename A::U32;
        const auto size = a.template input<U32>("dataSize");
        const auto claimed = a.template input<U32>("claimed");
        const auto longs = a.template input<U32>("longsPerEntry");
        a.assume(longs <= U32{0xFFFF});  // 16 bits of the file
        a.assume(hasIndexHeader<A>(size));
        const U32 entrySize = U32{4} * longs;
        const U32 count = entriesInData<A>(size, claimed, entrySize);
        const auto used = A::wide(count) * A::wide(entrySize);
        if constexpr (A::kNeedsLaws) {
            A::choose(
                entrySize != U32{0},
                [&] {
                    const U32 held = (size - U32{kIndexHeaderSize}) / entrySize;
                    A::monotony(A::wide(count), A::wide(held), A::wide(entrySize));
                    return held;
                },
                [&] { return count; });
            A::monotony(A::wide(count), A::wideConstant(0xFFFFFFFF), A::wide(entrySize));
        }
        a.claim("the entries lie behind the header, in the data",
                used + A::wideConstant(kIndexHeaderSize) <= A::wide(size));
        a.claim("no more than are claimed", count <= claimed);
        a.claim("all that fit, or all that are claimed",
                count == claimed ||
                    A::wide(size) < used + A::wide(entrySize) + A::wideConstant(kIndexHeaderSize));
        a.claim("their bytes in 32 bits", A::wide(count * entrySize) == used);
    }
};

// The entries of a super index are copied into a list that was made as long as their count.
struct PiecesOfASuperIndex {
    template <class A>
    static void state(A& a) {
        using U32 = typename A::U32;
        const auto count = a.template input<U32>("count");
        const auto pieces = a.template input<U32>("piecesBefore");
        const auto bytes = a.template input<U32>("bytes");
        a.assume(count <= U32{0x0FFFFFFE});  // as many as 32 bits of data hold
        a.assume(pieces <= U32{65'600});     // as many as 32 bits of data are
        const U32 used = count * U32{16};
        const U32 done = pieces * U32{65'504};  // whole entries of 16 bytes, 64 KiB less a header
        a.assume(A::wide(done) == A::wide(pieces) * A::wideConstant(65'504));
        a.assume(bytes <= U32{65'504});
        const U32 here = usedInPiece<A>(bytes, used, done);
        a.claim("a copy takes no more than the piece has", here <= bytes);
        a.claim(
            "a copy ends within the list",
            here == U32{0} || A::wide(done / U32{16}) * A::wideConstant(16) + A::wide(here) <= A::wide(used));
        a.claim("a copy begins at its entry", A::wide(done / U32{16}) * A::wideConstant(16) == A::wide(done));
    }
};

struct SizeWithoutHeader {
    template <class A>
    static void state(A& a) {
        using U32 = typename A::U32;
        const auto size = a.template input<U32>("size");
        const U32 data = sizeWithoutHeader<A>(size);
        a.claim("the size less 8, or nothing",
                A::wide(data) + A::wideConstant(8) == A::wide(size) || (size < U32{8} && data == U32{0}));
    }
};

struct IndexBudget {
    template <class A>
    static void state(A& a) {
        using U64 = typename A::U64;
        const auto fileSize = a.template input<U64>("fileSize");
        const auto spare = a.template input<U64>("spare");
        a.assume(fileSize <= U64{0x7FFFFFFFFFFFFFFF});
        a.assume(spare <= U64{std::uint64_t{1} << 62});
        const U64 budget = indexByteBudget<A>(fileSize, spare);
        a.claim("twice the file, up to 2^62, and the spare bytes",
                A::wide(budget) == A::wideConstant(2) * A::wide(fileSize) + A::wide(spare) ||
                    (A::wide(fileSize) >= A::wideConstant(std::uint64_t{1} << 62) &&
                     A::wide(budget) == A::wideConstant(std::uint64_t{1} << 63) + A::wide(spare)));
        const auto left = a.template input<U64>("bytesLeft");
        const auto size = a.template input<typename A::U32>("size");
        a.assume(left <= budget);
        a.assume(isInBudget<A>(size, left));
        a.claim("what is read comes off the budget, which never wraps",
                A::wide(left - static_cast<U64>(size)) == A::wide(left) - A::wide(size));
    }
};

struct LegacyPosition {
    template <class A>
    static void state(A& a) {
        using U32 = typename A::U32;
        const auto code = a.template input<U32>("code");
        const U32 position = legacyPosition<A>(code);
        a.claim("a place in the table of 101 lists", position <= U32{kLegacyPositions});
        const U32 tens = code & U32{0xFF};
        const U32 ones = code >> 8 & U32{0xFF};
        const auto digits = tens >= U32{'0'} && tens <= U32{'9'} && ones >= U32{'0'} && ones <= U32{'9'};
        a.claim("below 100 just for two digits", digits == (position < U32{kLegacyPositions}));
    }
};

}  // namespace

std::vector<Statement> indexStatements() {
    return {
        {"entriesInData",
         "the entries in use lie in the index data, and are as many as fit or are claimed",
         false,
         {PROOF(EntriesInData, kWhole), WITHOUT(EntriesInData, kBits, kIndexHeaderInData),
          WITHOUT(EntriesInData, kBits, kIndexEntryHasSize),
          WITHOUT(EntriesInData, kBits, kIndexEntriesInData)}},
        {"usedInPiece",
         "no piece of a super index is copied beyond the list made for it",
         false,
         {PROOF(PiecesOfASuperIndex, kWhole), WITHOUT(PiecesOfASuperIndex, kWhole, kIndexUsedAhead),
          WITHOUT(PiecesOfASuperIndex, kWhole, kIndexPieceInUse)}},
        {"sizeWithoutHeader",
         "max(0, size - 8)",
         false,
         {PROOF(SizeWithoutHeader, kBits), WITHOUT(SizeWithoutHeader, kBits, kRoomForChunkHeader)}},
        {"indexByteBudget",
         "made and used up without a wrap, for every size that a file can have",
         false,
         {PROOF(IndexBudget, kBits), WITHOUT(IndexBudget, kBits, kIndexBudgetFits),
          WITHOUT(IndexBudget, kBits, kIndexBudget)}},
        {"legacyPosition",
         "a place in the table of lists for any four characters",
         false,
         {PROOF(LegacyPosition, kBits), WITHOUT(LegacyPosition, kBits, kStreamDigits)}},
    };
}

}  // namespace proofs
