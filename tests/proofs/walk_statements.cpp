#include "avi/walk_arithmetic.h"

#include "tests/proofs/proof.h"

namespace proofs {
namespace {

using namespace orvantis;  // NOLINT(google-build-using-namespace): the arithmetic that the statements are
                           // about

// File sizes are signed 64-bit numbers in every system.
template <class A>
typename A::U64 largestFile() {
    return typename A::U64{0x7FFFFFFFFFFFFFFF};
}

struct PaddedLength {
    template <class A>
    static void state(A& a) {
        const auto size = a.template input<typename A::U32>("size");
        const auto padded = A::wide(paddedLength<A>(size));
        const auto exact = A::wide(size) + A::wideConstant(8);
        const auto one = A::wideConstant(1);
        const auto round = A::wideConstant(std::uint64_t{1} << 32);
        a.claim("even", (paddedLength<A>(size) & typename A::U32{1}) == typename A::U32{0});
        a.claim("8 + size or one more, less 2^32 where that wraps",
                padded == exact || padded == exact + one || padded == exact - round ||
                    padded == exact + one - round);
        a.claim("it wraps for the last nine sizes only",
                size >= typename A::U32{0xFFFFFFF7} || padded >= exact);
    }
};

struct StepOfAWalk {
    template <class A>
    static void state(A& a) {
        using U64 = typename A::U64;
        const auto fileSize = a.template input<U64>("fileSize");
        const auto position = a.template input<U64>("position");
        const auto bytes = a.template input<U64>("bytes");
        const auto consumed = a.template input<U64>("consumed");
        const auto size = a.template input<typename A::U32>("size");
        a.assume(fileSize <= largestFile<A>());
        a.assume(bytes <= fileSize);
        a.assume(consumed < bytes);
        a.assume(isInFile<A>(position, U64{8}, fileSize));  // the header was read
        const auto padded = paddedLength<A>(size);
        a.assume(walkMovesOn<A>(padded));
        const U64 step = static_cast<U64>(padded);
        a.claim("the walk gets on", position + step > position);
        a.claim("as much is consumed, without a wrap",
                consumed + step > consumed && A::wide(consumed + step) == A::wide(consumed) + A::wide(step));
        a.claim("the position does not wrap", A::wide(position + step) == A::wide(position) + A::wide(step));
    }
};

struct RestOfLevel {
    template <class A>
    static void state(A& a) {
        using U64 = typename A::U64;
        const auto bytes = a.template input<U64>("bytes");
        const auto consumed = a.template input<U64>("consumed");
        const auto rest = A::wide(restOfLevel<A>(bytes, consumed));
        const auto exact = A::wide(bytes) - A::wide(consumed);
        a.claim("what is left, and nothing behind the end",
                rest == exact || (exact < A::wideConstant(0) && rest == A::wideConstant(0)));
    }
};

struct DataOfAList {
    template <class A>
    static void state(A& a) {
        using U64 = typename A::U64;
        const auto size = a.template input<typename A::U32>("size");
        const auto offset = a.template input<U64>("offset");
        a.assume(offset <= largestFile<A>());
        const auto data = listDataSize<A>(size);
        a.claim("no more than the list's own size", data <= size);
        a.claim("the size without the type, if it has one",
                A::wide(data) + A::wideConstant(4) == A::wide(size) ||
                    (size < typename A::U32{4} && data == typename A::U32{0}));
        const U64 end = offset + U64{12} + static_cast<U64>(data);
        a.claim("the end of the data does not wrap",
                A::wide(end) == A::wide(offset) + A::wideConstant(12) + A::wide(data));
    }
};

struct IsInFile {
    template <class A>
    static void state(A& a) {
        using U64 = typename A::U64;
        const auto position = a.template input<U64>("position");
        const auto count = a.template input<U64>("count");
        const auto fileSize = a.template input<U64>("fileSize");
        a.claim("true just when position + count <= size",
                isInFile<A>(position, count, fileSize) ==
                    (A::wide(position) + A::wide(count) <= A::wide(fileSize)));
    }
};

struct IsInWindow {
    template <class A>
    static void state(A& a) {
        using U64 = typename A::U64;
        const auto at = a.template input<U64>("at");
        const auto length = a.template input<U64>("length");
        const auto position = a.template input<U64>("position");
        const auto count = a.template input<U64>("count");
        a.claim("true just when the bytes lie between the window's ends",
                isInWindow<A>(at, length, position, count) ==
                    (at >= position && A::wide(at) + A::wide(length) <= A::wide(position) + A::wide(count)));
    }
};

struct MostChunks {
    template <class A>
    static void state(A& a) {
        using U64 = typename A::U64;
        const auto fileSize = a.template input<U64>("fileSize");
        const auto most = a.template input<U64>("most");
        const auto chunks = mostChunks<A>(fileSize, most);
        a.claim("never more than the limit", chunks <= most);
        a.claim(
            "else room for each header of the file",
            chunks == most || A::wide(chunks) * A::wideConstant(8) + A::wideConstant(7) >= A::wide(fileSize));
    }
};

}  // namespace

std::vector<Statement> walkStatements() {
    return {
        {"paddedLength",
         "header and data up to an even length, or 2^32 less",
         false,
         {PROOF(PaddedLength, kBits)}},
        {"walkMovesOn",
         "behind a header in the file, every step gets on, and neither position nor count wraps",
         false,
         {PROOF(StepOfAWalk, kBits), WITHOUT(StepOfAWalk, kBits, kWalkMovesOn),
          WITHOUT(StepOfAWalk, kBits, kStartInFile)}},
        {"restOfLevel",
         "max(0, bytes - consumed)",
         false,
         {PROOF(RestOfLevel, kBits), WITHOUT(RestOfLevel, kBits, kRestOfLevel)}},
        {"listDataSize",
         "max(0, size - 4); the data's end does not wrap",
         false,
         {PROOF(DataOfAList, kBits), WITHOUT(DataOfAList, kBits, kRoomForListType)}},
        {"isInFile",
         "position + count <= size, for any three numbers",
         false,
         {PROOF(IsInFile, kBits), WITHOUT(IsInFile, kBits, kStartInFile),
          WITHOUT(IsInFile, kBits, kEndInFile)}},
        {"isInWindow",
         "the bytes lie in the window, for any four numbers that do not wrap",
         false,
         {PROOF(IsInWindow, kWhole), WITHOUT(IsInWindow, kWhole, kWindowStart),
          WITHOUT(IsInWindow, kWhole, kWindowSkip), WITHOUT(IsInWindow, kWhole, kWindowEnd)}},
        {"mostChunks",
         "at most the limit, else a chunk for each header",
         false,
         {PROOF(MostChunks, kBits), WITHOUT(MostChunks, kBits, kMostChunks)}},
    };
}

}  // namespace proofs
