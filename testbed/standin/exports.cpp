// The eleven exported functions: each hands its arguments to the process's one library object, which says
// everything else. Any thread; nothing throws past them.

#include "standin/environment.h"
#include "standin/library.h"
#include "video/orvantis_common64.h"

namespace {

orvantis::standin::Library& library() {
    static orvantis::standin::Library instance(orvantis::standin::readEnvironment);
    return instance;
}

}  // namespace

extern "C" {

std::int32_t orvantis_library_init(void) {
    return library().libraryInit();
}

std::int32_t orvantis_library_close(void) {
    return library().libraryClose();
}

std::int32_t orvantis_open(std::uint32_t* handle) {
    return library().open(handle);
}

std::int32_t orvantis_close(std::uint32_t handle) {
    return library().close(handle);
}

std::int32_t orvantis_decompress_query(std::uint32_t handle, const void* format, std::uint64_t format_bytes,
                                       const OrvantisFrameFormat* output, OrvantisFrameFormat* result) {
    return library().decompressQuery(handle, format, format_bytes, output, result);
}

std::int32_t orvantis_decompress_begin(std::uint32_t handle, const void* format, std::uint64_t format_bytes,
                                       const OrvantisFrameFormat* output, OrvantisFrameFormat* produced) {
    return library().decompressBegin(handle, format, format_bytes, output, produced);
}

std::int32_t orvantis_decompress(std::uint32_t handle, const void* frame, std::uint64_t frame_bytes,
                                 const OrvantisOutputBuffer* out) {
    return library().decompress(handle, frame, frame_bytes, out);
}

std::int32_t orvantis_decompress_end(std::uint32_t handle) {
    return library().decompressEnd(handle);
}

const char* orvantis_get_string(std::uint32_t kind, std::uint32_t code) {
    return library().getString(kind, code);
}

std::int32_t orvantis_get_param(std::uint32_t handle, std::uint32_t parameter, std::uint32_t* value,
                                std::uint64_t value_bytes) {
    return library().getParam(handle, parameter, value, value_bytes);
}

std::int32_t orvantis_compress_query(void) {
    return library().compressQuery();
}

}  // extern "C"
