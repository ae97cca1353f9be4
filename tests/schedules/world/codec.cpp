#include "tests/schedules/world/codec.h"

#include <array>
#include <cstring>

#include "tests/schedules/scheduler/races.h"
#include "tests/schedules/world/clip.h"
#include "video/orvantis_common64.h"
#include "video/orvantis_type_codes.h"

namespace {

constexpr std::uint32_t kMostSessions = 32;
constexpr std::int32_t kFailed = 7;

struct Session {
    bool begun = false;
};
/// Each session is a block of memory of its own, so that one which takes the number of a closed one is
/// another.
std::array<Session*, kMostSessions> g_sessions;

/// The call is the only one on the session, or the schedule ends.
Session* sessionOf(std::uint32_t handle) {
    if (handle == 0 || handle > kMostSessions || g_sessions[handle - 1] == nullptr) {
        return nullptr;
    }
    Session* const session = g_sessions[handle - 1];
    schedules::races::access(session, sizeof *session, true, __builtin_return_address(0));
    return session;
}

}  // namespace

namespace schedules::world {

int codecSessions() noexcept {
    int count = 0;
    for (const Session* const session : g_sessions) {
        count += session != nullptr ? 1 : 0;
    }
    return count;
}

void beginCodec() noexcept {
    g_sessions = {};
}

}  // namespace schedules::world

extern "C" {

std::int32_t orvantis_library_init(void) {
    return 0;
}

std::int32_t orvantis_library_close(void) {
    return 0;
}

std::int32_t orvantis_open(std::uint32_t* handle) {
    for (std::uint32_t i = 0; i < kMostSessions; ++i) {
        if (g_sessions[i] != nullptr) {
            continue;
        }
        g_sessions[i] = new Session;
        *handle = i + 1;
        return 0;
    }
    return kFailed;
}

std::int32_t orvantis_close(std::uint32_t handle) {
    const Session* const session = sessionOf(handle);
    if (session == nullptr) {
        return kFailed;
    }
    delete session;
    g_sessions[handle - 1] = nullptr;
    return 0;
}

std::int32_t orvantis_decompress_query(std::uint32_t /*handle*/, const void* /*format*/,
                                       std::uint64_t /*format_bytes*/, const OrvantisFrameFormat* output,
                                       OrvantisFrameFormat* result) {
    if (output != nullptr) {
        return output->type == orvantis::kOrvantisOutBgra ? 0 : kFailed;
    }
    result->width = schedules::world::kWidth;
    result->height = schedules::world::kHeight;
    result->type = orvantis::kOrvantisCodedRgb8;
    result->colorSpace = orvantis::kOrvantisColorSpaceRec709;
    result->range = orvantis::kOrvantisRangeFull;
    return 0;
}

std::int32_t orvantis_decompress_begin(std::uint32_t handle, const void* /*format*/,
                                       std::uint64_t /*format_bytes*/, const OrvantisFrameFormat* output,
                                       OrvantisFrameFormat* produced) {
    Session* const session = sessionOf(handle);
    if (session == nullptr || session->begun) {
        return kFailed;
    }
    session->begun = true;
    *produced = *output;
    return 0;
}

std::int32_t orvantis_decompress(std::uint32_t handle, const void* frame, std::uint64_t frame_bytes,
                                 const OrvantisOutputBuffer* out) {
    const Session* const session = sessionOf(handle);
    if (session == nullptr || !session->begun || frame_bytes != schedules::world::kChunkBytes) {
        return kFailed;
    }
    schedules::races::access(frame, frame_bytes, false, __builtin_return_address(0));
    *static_cast<char*>(out->pixels) = *static_cast<const char*>(frame);
    return 0;
}

std::int32_t orvantis_decompress_end(std::uint32_t handle) {
    Session* const session = sessionOf(handle);
    if (session == nullptr || !session->begun) {
        return kFailed;
    }
    session->begun = false;
    return 0;
}

const char* orvantis_get_string(std::uint32_t /*kind*/, std::uint32_t /*code*/) {
    return "text";
}

std::int32_t orvantis_get_param(std::uint32_t /*handle*/, std::uint32_t /*parameter*/, std::uint32_t* value,
                                std::uint64_t /*value_bytes*/) {
    *value = 1;
    return 0;
}

std::int32_t orvantis_compress_query(void) {
    return kFailed;
}

}  // extern "C"
