// A codec library inside the test program: it answers what a test tells it to, remembers every call with its
// arguments, and fails the running test when a caller breaks the library's contract (a closed handle, a
// decode without a begin, a wrong size, a session left open). One object at a time; the plug-in's code
// reaches it through the eleven functions. Safe from any thread. Decodes nothing by itself.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <mutex>
#include <optional>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include "video/orvantis_common64.h"
#include "video/orvantis_type_codes.h"

namespace fakecodec {

enum class Function : std::size_t {
    kLibraryInit,
    kLibraryClose,
    kOpen,
    kClose,
    kDecompressQuery,
    kDecompressBegin,
    kDecompress,
    kDecompressEnd,
    kGetString,
    kGetParam,
    kCompressQuery,
};
inline constexpr std::size_t kFunctionCount = 11;

/// The function's exported name.
const char* nameOf(Function function);

/// One call as it arrived, and what was answered. Fields that a function does not have stay 0.
struct Call {
    Function function{};
    std::int32_t result = 0;
    std::uint32_t handle = 0;
    const void* data = nullptr;  ///< format data or compressed frame
    std::uint64_t bytes = 0;
    std::optional<OrvantisFrameFormat> output = std::nullopt;  ///< the requested output; none: a null pointer
    OrvantisFrameFormat answerOnEntry{};  ///< the record for the answer, as the caller had filled it
    OrvantisOutputBuffer buffer{};
    std::uint32_t number = 0;  ///< string kind or parameter
    std::uint32_t code = 0;    ///< string code or value on input
};

class FakeCodec {
 public:
    FakeCodec();
    /// Fails the test when a session is still open.
    ~FakeCodec();
    FakeCodec(const FakeCodec&) = delete;
    FakeCodec& operator=(const FakeCodec&) = delete;

    // What it answers. To be set before the calls that it concerns.

    /// The coded video: the answer to a query without output.
    OrvantisFrameFormat coded{64, 48, 254, 1, orvantis::kOrvantisCodedRgba8, 0, 2, 2, 0};
    /// Whether an output is accepted, by query and by begin; accepts everything unless set.
    std::function<bool(const OrvantisFrameFormat& output)> accepts;
    /// What a refused query or begin answers.
    std::int32_t refusal = 7;
    /// Runs at each decode that succeeds, with the output that the session was begun with.
    std::function<void(std::span<const std::byte> frame, const OrvantisOutputBuffer& buffer,
                       const OrvantisFrameFormat& output)>
        onDecompress;
    /// Answer to get_param; the type unless set, so that every answer but that for type 0 means yes.
    std::function<std::uint32_t(std::uint32_t parameter, std::uint32_t type)> param;
    /// What Open hands out; counted up from there. 0 gives the handle that means "no session".
    std::uint32_t nextHandle = 0x5100;

    /// Call number `call` (from 1) of `function` answers `result` and does nothing else.
    void failCall(Function function, int call, std::int32_t result);
    /// Every further call of `function` answers `result` and does nothing else.
    void failAll(Function function, std::int32_t result);
    /// Takes back failCall and failAll.
    void stopFailing();
    /// The text for a kind and code. Without it: "type<code>", "error<code>", "space<code>".
    void setString(std::uint32_t kind, std::uint32_t code, std::string text);
    /// A null pointer in the place of that text.
    void setNullString(std::uint32_t kind, std::uint32_t code);

    // What happened.

    /// All calls in order, those of get_string left out, which only serve texts.
    std::vector<Call> calls() const;
    /// The names of calls(), for comparing whole sequences.
    std::vector<std::string> callNames() const;
    /// The calls of one function, get_string included.
    std::vector<Call> callsOf(Function function) const;
    int count(Function function) const;
    int openSessions() const;
    /// Forgets the recorded calls and counts; sessions and answers stay.
    void forgetCalls();
    /// Off: calls are still counted but not kept, so that the fake allocates nothing.
    void setRecording(bool on);

    // The library's functions, called by the exported ones.

    std::int32_t libraryInit();
    std::int32_t libraryClose();
    std::int32_t open(std::uint32_t* handle);
    std::int32_t close(std::uint32_t handle);
    std::int32_t decompressQuery(std::uint32_t handle, const void* format, std::uint64_t bytes,
                                 const OrvantisFrameFormat* output, OrvantisFrameFormat* result);
    std::int32_t decompressBegin(std::uint32_t handle, const void* format, std::uint64_t bytes,
                                 const OrvantisFrameFormat* output, OrvantisFrameFormat* produced);
    std::int32_t decompress(std::uint32_t handle, const void* frame, std::uint64_t bytes,
                            const OrvantisOutputBuffer* out);
    std::int32_t decompressEnd(std::uint32_t handle);
    const char* getString(std::uint32_t kind, std::uint32_t code);
    std::int32_t getParam(std::uint32_t handle, std::uint32_t parameter, std::uint32_t* value,
                          std::uint64_t bytes);
    std::int32_t compressQuery();

    /// The one object; null outside its life, when every function fails the test.
    static FakeCodec* current();

 private:
    struct Session {
        bool begun = false;
        OrvantisFrameFormat output{};
    };

    std::int32_t finish(Call call, std::int32_t result);
    std::optional<std::int32_t> plannedResult(Function function);
    Session* sessionOf(std::uint32_t handle, const char* caller);
    void checkInput(const char* caller, const OrvantisFrameFormat& format);
    OrvantisFrameFormat producedBy(const OrvantisFrameFormat& output) const;

    mutable std::mutex m_mutex;
    bool m_recording = true;
    std::vector<Call> m_calls;
    std::array<int, kFunctionCount> m_counts{};
    std::map<std::pair<Function, int>, std::int32_t> m_failCalls;
    std::map<Function, std::int32_t> m_failAll;
    std::map<std::pair<std::uint32_t, std::uint32_t>, std::optional<std::string>> m_strings;
    std::map<std::uint32_t, Session> m_sessions;
    int m_libraryUses = 0;
};

}  // namespace fakecodec
