// The library as an object: initialisation count, sessions, settings. exports.cpp makes the process's only
// one; unit tests make their own.
//
// Threads: everything may be called at any time from any thread. Calls on different handles run side by side;
// a second call on a handle that is inside a call is refused with Error::kHandleInUse. No lock is held while
// frames are decoded. Nothing throws. Decoding allocates nothing.

#pragma once

#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <unordered_map>

#include "standin/conversion.h"
#include "standin/environment.h"
#include "standin/error_codes.h"
#include "standin/functions.h"
#include "standin/settings.h"
#include "standin/trace.h"
#include "video/orvantis_common64.h"

namespace orvantis::standin {

inline constexpr std::size_t kMaxSessions = 4096;

class Library {
 public:
    explicit Library(EnvironmentReader environment);
    // Leaves a last line in the trace that shows what was not undone.
    ~Library();

    Library(const Library&) = delete;
    Library& operator=(const Library&) = delete;

    // The exported functions (video/orvantis_common64.h) one by one.
    std::int32_t libraryInit() noexcept;
    std::int32_t libraryClose() noexcept;
    std::int32_t open(std::uint32_t* handle) noexcept;
    std::int32_t close(std::uint32_t handle) noexcept;
    std::int32_t decompressQuery(std::uint32_t handle, const void* format, std::uint64_t formatBytes,
                                 const OrvantisFrameFormat* output, OrvantisFrameFormat* result) noexcept;
    std::int32_t decompressBegin(std::uint32_t handle, const void* format, std::uint64_t formatBytes,
                                 const OrvantisFrameFormat* output, OrvantisFrameFormat* produced) noexcept;
    std::int32_t decompress(std::uint32_t handle, const void* frame, std::uint64_t frameBytes,
                            const OrvantisOutputBuffer* out) noexcept;
    std::int32_t decompressEnd(std::uint32_t handle) noexcept;
    const char* getString(std::uint32_t kind, std::uint32_t code) noexcept;
    std::int32_t getParam(std::uint32_t handle, std::uint32_t parameter, std::uint32_t* value,
                          std::uint64_t valueBytes) noexcept;
    std::int32_t compressQuery() noexcept;

 private:
    struct Session {
        bool inUse = false;
        std::unique_ptr<Conversion> conversion;  // set between begin and end
    };

    // One call's view of the settings.
    struct Call {
        std::shared_ptr<const Settings> settings;
        std::optional<std::int32_t> injected;  // the code that this call has to fail with
    };

    class Claim;

    Call enter(Function function);
    template <class Work, class Arguments>
    std::int32_t run(Function function, Work work, Arguments arguments) noexcept;
    template <class Text>
    void trace(const Settings& settings, Text text) noexcept;

    Error openSession(std::uint32_t& handle);
    Error closeSession(std::uint32_t handle);
    Error closeLibrary();
    Error decode(const Call& call, const Session& session, const void* frame, std::uint64_t frameBytes,
                 const OrvantisOutputBuffer* out, std::int32_t& injected);

    EnvironmentReader m_environment;
    Trace m_trace;

    std::mutex m_settingsMutex;  // guards m_settings; held while the environment is read
    std::shared_ptr<const Settings> m_settings;

    std::mutex m_mutex;  // guards everything below, but not the conversion of a session in use
    std::uint64_t m_initialised = 0;
    std::uint32_t m_lastHandle;
    std::unordered_map<std::uint32_t, Session> m_sessions;  // nodes stay where they are
};

}  // namespace orvantis::standin
