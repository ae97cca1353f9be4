#include "audio/sample_arithmetic.h"

#include "tests/proofs/proof.h"

namespace proofs {
namespace {

using namespace orvantis;  // NOLINT(google-build-using-namespace): the arithmetic that the statements are
                           // about

struct EndPosition {
    template <class A>
    static void state(A& a) {
        const auto start = a.template input<typename A::I64>("start");
        const auto size = a.template input<typename A::U32>("size");
        const auto end = A::wide(endPosition<A>(start, size));
        const auto exact = A::wide(start) + A::wide(size);
        const auto round = A::wideConstant(std::uint64_t{1} << 63) + A::wideConstant(std::uint64_t{1} << 63);
        a.claim("start + size, 2^64 less where that leaves 64 bits", end == exact || end == exact - round);
    }
};

struct FirstByteOf {
    template <class A>
    static void state(A& a) {
        const auto position = a.template input<typename A::I64>("position");
        const auto align = a.template input<typename A::U32>("blockAlign");
        const auto exact = A::wide(position) * A::wide(align);
        a.claim("the exact product, around 64 bits",
                firstByteOf<A>(position, align) == static_cast<typename A::U64>(exact));
    }
};

struct BytesOfFrames {
    template <class A>
    static void state(A& a) {
        const auto align = a.template input<typename A::U32>("blockAlign");
        const auto size = a.template input<typename A::U32>("size");
        a.assume(align <= typename A::U32{128});  // 32 channels of 32 bits
        const auto bytes = A::wide(bytesOfFrames<A>(size, align));
        const auto exactBytes = A::wide(size) * A::wide(align);
        a.claim("bytes of a request below 4 GiB",
                bytes == exactBytes || exactBytes >= A::wideConstant(std::uint64_t{1} << 32));
    }
};

struct FramesInBuffer {
    template <class A>
    static void state(A& a) {
        using U32 = typename A::U32;
        const auto bytes = a.template input<U32>("bytes");
        const auto size = a.template input<U32>("size");
        const auto align = a.template input<U32>("blockAlign");
        const U32 frames = framesInBuffer<A>(bytes, size, align);
        if constexpr (A::kNeedsLaws) {
            A::choose(
                align != U32{0},
                [&] {
                    const U32 held = bytes / align;
                    A::monotony(A::wide(frames), A::wide(held), A::wide(align));
                    return held;
                },
                [&] { return frames; });
            A::monotony(A::wide(frames), A::wideConstant(0), A::wide(align));
        }
        a.claim("the frames lie in the buffer", A::wide(frames) * A::wide(align) <= A::wide(bytes));
        a.claim("no more than the host has room for", frames <= size);
        a.claim("all that fit, or all that are wanted",
                align == U32{0} || frames == size ||
                    A::wide(bytes) < A::wide(frames) * A::wide(align) + A::wide(align));
    }
};

}  // namespace

std::vector<Statement> sampleStatements() {
    return {
        {"endPosition",
         "start + size, around 64 bits; no signed overflow",
         false,
         {PROOF(EndPosition, kBits)}},
        {"firstByteOf", "the exact product, around 64 bits", false, {PROOF(FirstByteOf, kBits)}},
        {"bytesOfFrames", "the exact product below 4 GiB", false, {PROOF(BytesOfFrames, kBits)}},
        {"framesInBuffer",
         "as many sample frames as the buffer holds, and none beyond",
         false,
         {PROOF(FramesInBuffer, kWhole), WITHOUT(FramesInBuffer, kBits, kSampleFrameHasSize),
          WITHOUT(FramesInBuffer, kBits, kFramesInBuffer)}},
    };
}

}  // namespace proofs
