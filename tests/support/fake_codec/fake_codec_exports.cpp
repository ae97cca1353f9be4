// The eleven functions that the plug-in imports, handed to the fake codec of the running test.
#include <gtest/gtest.h>

#include "tests/support/fake_codec/fake_codec.h"

namespace {

constexpr std::int32_t kNoCodec = -1001;

fakecodec::FakeCodec* codec(const char* caller) {
    fakecodec::FakeCodec* const current = fakecodec::FakeCodec::current();
    if (current == nullptr) {
        ADD_FAILURE() << caller << " outside the life of a fake codec";
    }
    return current;
}

}  // namespace

extern "C" {

std::int32_t orvantis_library_init(void) {
    auto* const fake = codec("orvantis_library_init");
    return fake != nullptr ? fake->libraryInit() : kNoCodec;
}

std::int32_t orvantis_library_close(void) {
    auto* const fake = codec("orvantis_library_close");
    return fake != nullptr ? fake->libraryClose() : kNoCodec;
}

std::int32_t orvantis_open(std::uint32_t* handle) {
    auto* const fake = codec("orvantis_open");
    return fake != nullptr ? fake->open(handle) : kNoCodec;
}

std::int32_t orvantis_close(std::uint32_t handle) {
    auto* const fake = codec("orvantis_close");
    return fake != nullptr ? fake->close(handle) : kNoCodec;
}

std::int32_t orvantis_decompress_query(std::uint32_t handle, const void* format, std::uint64_t format_bytes,
                                       const OrvantisFrameFormat* output, OrvantisFrameFormat* result) {
    auto* const fake = codec("orvantis_decompress_query");
    return fake != nullptr ? fake->decompressQuery(handle, format, format_bytes, output, result) : kNoCodec;
}

std::int32_t orvantis_decompress_begin(std::uint32_t handle, const void* format, std::uint64_t format_bytes,
                                       const OrvantisFrameFormat* output, OrvantisFrameFormat* produced) {
    auto* const fake = codec("orvantis_decompress_begin");
    return fake != nullptr ? fake->decompressBegin(handle, format, format_bytes, output, produced) : kNoCodec;
}

std::int32_t orvantis_decompress(std::uint32_t handle, const void* frame, std::uint64_t frame_bytes,
                                 const OrvantisOutputBuffer* out) {
    auto* const fake = codec("orvantis_decompress");
    return fake != nullptr ? fake->decompress(handle, frame, frame_bytes, out) : kNoCodec;
}

std::int32_t orvantis_decompress_end(std::uint32_t handle) {
    auto* const fake = codec("orvantis_decompress_end");
    return fake != nullptr ? fake->decompressEnd(handle) : kNoCodec;
}

const char* orvantis_get_string(std::uint32_t kind, std::uint32_t code) {
    auto* const fake = codec("orvantis_get_string");
    return fake != nullptr ? fake->getString(kind, code) : nullptr;
}

std::int32_t orvantis_get_param(std::uint32_t handle, std::uint32_t parameter, std::uint32_t* value,
                                std::uint64_t value_bytes) {
    auto* const fake = codec("orvantis_get_param");
    return fake != nullptr ? fake->getParam(handle, parameter, value, value_bytes) : kNoCodec;
}

std::int32_t orvantis_compress_query(void) {
    auto* const fake = codec("orvantis_compress_query");
    return fake != nullptr ? fake->compressQuery() : kNoCodec;
}

}  // extern "C"
