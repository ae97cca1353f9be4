#include "avi/chunk_arithmetic.h"

#include "tests/proofs/proof.h"

namespace proofs {
namespace {

using namespace orvantis;  // NOLINT(google-build-using-namespace): the arithmetic that the statements are
                           // about

struct NarrowOffset {
    template <class A>
    static void state(A& a) {
        using U64 = typename A::U64;
        const auto base = a.template input<U64>("base");
        const auto offset = a.template input<U64>("offset");
        a.assume(isNarrow<A>(offset, base));
        a.claim("the offset comes back", wideOffset<A>(narrowOffset<A>(offset, base), base) == offset);
    }
};

// A block of chunks that gets a new base: the lowest offset of them.
struct NewBase {
    template <class A>
    static void state(A& a) {
        using U64 = typename A::U64;
        const auto lowest = a.template input<U64>("lowest");
        const auto highest = a.template input<U64>("highest");
        const auto offset = a.template input<U64>("offset");
        a.assume(lowest <= offset);
        a.assume(offset <= highest);
        a.assume(isNarrow<A>(highest, lowest));
        a.claim("every offset between comes back",
                wideOffset<A>(narrowOffset<A>(offset, lowest), lowest) == offset);
    }
};

struct MarkedSize {
    template <class A>
    static void state(A& a) {
        using U32 = typename A::U32;
        const auto size = a.template input<U32>("size");
        const auto key = a.template input<U32>("keyFrame") != U32{0};
        a.assume(leavesRoomForMark<A>(size));
        const U32 stored = markedSize<A>(size, key);
        a.claim("the size comes back", (stored & ~U32{kDeltaFrameBit}) == size);
        a.claim("the mark comes back", ((stored & U32{kDeltaFrameBit}) == U32{0}) == key);
    }
};

// By induction over the chunks of a list: the start of each is the sum of the sizes ahead of it.
struct StartsOfChunks {
    template <class A>
    static void state(A& a) {
        using U64 = typename A::U64;
        const auto atBlock = a.template input<U64>("chunksAtBlock");
        const auto inBlock = a.template input<U64>("chunksInBlock");
        const auto start = a.template input<U64>("start");
        const auto size = a.template input<typename A::U32>("size");
        a.assume(atBlock <= U64{kMaxChunkNumber});
        a.assume(mayOpenBlock<A>(atBlock, U64{64}));
        a.assume(inBlock < U64{64});
        const auto count = A::wide(atBlock) + A::wide(inBlock);
        const auto largest = A::wideConstant(0xFFFFFFFF);
        a.assume(A::wide(start) <= count * largest);
        a.claim("chunks are numbered in 32 bits",
                count + A::wideConstant(1) <= A::wideConstant(kMaxChunkNumber));
        const U64 next = start + static_cast<U64>(size);
        a.claim("the next start does not wrap", A::wide(next) == A::wide(start) + A::wide(size));
        a.claim("and is no more than all sizes can be",
                A::wide(next) <= (count + A::wideConstant(1)) * largest);
    }
};

struct HasByte {
    template <class A>
    static void state(A& a) {
        using U64 = typename A::U64;
        const auto position = a.template input<U64>("bytePos");
        const auto start = a.template input<U64>("start");
        const auto size = a.template input<typename A::U32>("size");
        a.assume(start <= position);
        const auto has = hasByte<A>(position, start, size);
        a.claim("true just when start <= position < start + size",
                has == (A::wide(position) < A::wide(start) + A::wide(size)));
        a.claim("else the next chunk starts at or ahead of the position",
                has || start + static_cast<U64>(size) <= position);
    }
};

struct ClaimOfAChunk {
    template <class A>
    static void state(A& a) {
        using U64 = typename A::U64;
        const auto offset = a.template input<U64>("offset");
        const auto size = a.template input<typename A::U32>("size");
        const auto fileSize = a.template input<U64>("fileSize");
        a.assume(size != typename A::U32{0});  // an empty chunk is not read
        const auto refused = bytesBehind<A>(offset, fileSize) < static_cast<U64>(size);
        a.claim("refused just when the chunk does not lie in the file",
                refused == (A::wide(fileSize) < A::wide(offset) + A::wide(size)));
    }
};

struct PartOfAChunk {
    template <class A>
    static void state(A& a) {
        using U64 = typename A::U64;
        const auto size = a.template input<typename A::U32>("size");
        const auto offset = a.template input<U64>("offset");
        const auto wanted = a.template input<typename A::U32>("sizeBytes");
        const auto done = a.template input<U64>("done");
        const auto got = a.template input<U64>("got");
        a.assume(offset <= static_cast<U64>(size));
        a.assume(done <= static_cast<U64>(wanted));
        const U64 part = partOfChunk<A>(size, offset, static_cast<U64>(wanted) - done);
        a.claim("the part ends within the chunk", A::wide(offset) + A::wide(part) <= A::wide(size));
        a.assume(got <= part);
        a.claim("no more arrives than the buffer has room for",
                A::wide(done) + A::wide(got) <= A::wide(wanted));
    }
};

}  // namespace

std::vector<Statement> chunkStatements() {
    return {
        {"narrowOffset",
         "an offset kept in 32 bits comes back whole",
         false,
         {PROOF(NarrowOffset, kBits), WITHOUT(NarrowOffset, kBits, kNarrowOffset)}},
        {"narrowOffset of a new base",
         "and so do all that lie between two that fit",
         false,
         {PROOF(NewBase, kBits), WITHOUT(NewBase, kBits, kNarrowOffset)}},
        {"markedSize",
         "size and mark of a delta frame come back",
         false,
         {PROOF(MarkedSize, kBits), WITHOUT(MarkedSize, kBits, kNarrowSize)}},
        {"mayOpenBlock",
         "numbers of chunks fit 32 bits, sums of their sizes 64",
         false,
         {PROOF(StartsOfChunks, kWhole), WITHOUT(StartsOfChunks, kWhole, kChunkNumbers)}},
        {"hasByte", "start <= position < start + size", false, {PROOF(HasByte, kBits)}},
        {"bytesBehind",
         "a chunk is refused just when it does not lie in the file",
         false,
         {PROOF(ClaimOfAChunk, kBits), WITHOUT(ClaimOfAChunk, kBits, kClaimStartsInFile)}},
        {"partOfChunk",
         "reads of sound end within chunk and buffer",
         false,
         {PROOF(PartOfAChunk, kBits), WITHOUT(PartOfAChunk, kBits, kAudioPart)}},
    };
}

}  // namespace proofs
