// An importer that crashes, to be thrown away after the test: its first call writes where nothing is, some
// calls deep, the middle one through a pointer. It is linked and released as the plug-in is, so that what
// finds the line here finds it there.
#include <cstddef>
#include <cstdint>

namespace crash {

// Too much for registers, so that every function here has a frame.
struct Frame {
    volatile std::uint8_t bytes[512];
};

[[gnu::noinline]] std::ptrdiff_t writeSample(volatile std::uint8_t* where, std::ptrdiff_t count) {
    Frame frame{};
    frame.bytes[static_cast<std::size_t>(count)] = 1;
    *where = frame.bytes[0];  // the crash
    return count + frame.bytes[1];
}

[[gnu::noinline]] std::ptrdiff_t fillFrame(volatile std::uint8_t* where, std::ptrdiff_t count) {
    Frame frame{};
    frame.bytes[2] = static_cast<std::uint8_t>(count);
    return writeSample(where, count + 1) + frame.bytes[2];  // calls the crash
}

std::ptrdiff_t (*volatile importFrame)(volatile std::uint8_t*, std::ptrdiff_t) = fillFrame;

}  // namespace crash

extern "C" __declspec(dllexport) std::int32_t xImportEntry(std::int32_t selector, void*, void*, void*) {
    const std::ptrdiff_t read = crash::importFrame(nullptr, selector);  // calls what calls it
    return static_cast<std::int32_t>(read + selector);
}
