#include "standin/library.h"

#include <chrono>
#include <cstdio>
#include <exception>
#include <limits>
#include <new>
#include <span>
#include <string>
#include <utility>

#include "standin/output_layouts.h"
#include "standin/stream_format.h"

namespace orvantis::standin {
namespace {

// Handles start high enough not to be mistaken for a count or an index.
constexpr std::uint32_t kFirstHandle = 0x00010001;

constexpr std::uint64_t kMaxByteCount = std::numeric_limits<std::uint32_t>::max();

std::int32_t code(Error error) {
    return static_cast<std::int32_t>(error);
}

bool isUsable(const void* bytes, std::uint64_t count) {
    return bytes != nullptr && count <= kMaxByteCount;
}

Error readFormat(const void* format, std::uint64_t formatBytes, StreamFormat& stream) {
    return parseStreamFormat(
        {static_cast<const std::uint8_t*>(format), static_cast<std::size_t>(formatBytes)}, stream);
}

Error query(const void* format, std::uint64_t formatBytes, const OrvantisFrameFormat* output,
            OrvantisFrameFormat* result) {
    if (!isUsable(format, formatBytes) || result == nullptr) {
        return Error::kInvalidArgument;
    }
    StreamFormat stream;
    if (const Error error = readFormat(format, formatBytes, stream); error != Error::kNone) {
        return error;
    }
    if (output != nullptr) {
        return checkOutput(stream, *output, *result);
    }
    // Without an output format the receiving record carries the two fixed words.
    if (result->word3 != kOrvantisFrameFormatWord3 || result->word4 != kOrvantisFrameFormatWord4) {
        return Error::kInvalidFrameFormat;
    }
    *result = describe(stream);
    return Error::kNone;
}

Error begin(std::unique_ptr<Conversion>& conversion, const void* format, std::uint64_t formatBytes,
            const OrvantisFrameFormat* output, OrvantisFrameFormat* produced) {
    if (!isUsable(format, formatBytes) || output == nullptr || produced == nullptr) {
        return Error::kInvalidArgument;
    }
    if (conversion != nullptr) {
        return Error::kDecompressionBegun;
    }
    StreamFormat stream;
    if (const Error error = readFormat(format, formatBytes, stream); error != Error::kNone) {
        return error;
    }
    OrvantisFrameFormat result{};
    if (const Error error = checkOutput(stream, *output, result); error != Error::kNone) {
        return error;
    }
    conversion = std::make_unique<Conversion>(stream, result);
    *produced = result;
    return Error::kNone;
}

Error answerParam(std::uint32_t parameter, std::uint32_t* value, std::uint64_t valueBytes) {
    if (value == nullptr || valueBytes != sizeof(*value)) {
        return Error::kInvalidArgument;
    }
    if (parameter != kOrvantisParamCanFlip && parameter != kOrvantisParamSupportsRange0_32768) {
        return Error::kUnknownParameter;
    }
    if (typeName(*value) == nullptr) {
        return Error::kUnknownType;
    }
    const bool yes = parameter == kOrvantisParamCanFlip ? canFlip(*value) : supportsRange0To32768(*value);
    *value = yes ? 1 : 0;
    return Error::kNone;
}

const char* findString(std::uint32_t kind, std::uint32_t stringCode) {
    switch (kind) {
        case kOrvantisStringTypeName: {
            const char* name = typeName(stringCode);
            return name == nullptr ? "unknown" : name;
        }
        case kOrvantisStringErrorText:
            return errorText(static_cast<std::int32_t>(stringCode));
        case kOrvantisStringColorSpaceName:
            return stringCode == kOrvantisColorSpaceRec601   ? "Rec.601"
                   : stringCode == kOrvantisColorSpaceRec709 ? "Rec.709"
                                                             : "unknown";
        default:
            return "";
    }
}

// A decoder keeps a processor busy; so does this.
void spend(std::chrono::microseconds time) {
    const auto end = std::chrono::steady_clock::now() + time;
    while (std::chrono::steady_clock::now() < end) {
    }
}

}  // namespace

// The right to use one session, from the moment a call finds it until the call ends.
class Library::Claim {
 public:
    Claim(Library& library, std::uint32_t handle) : m_library(library) {
        const std::lock_guard lock(library.m_mutex);
        if (library.m_initialised == 0) {
            m_error = Error::kNotInitialised;
            return;
        }
        const auto found = library.m_sessions.find(handle);
        if (found == library.m_sessions.end()) {
            m_error = Error::kInvalidHandle;
        } else if (found->second.inUse) {
            m_error = Error::kHandleInUse;
        } else {
            m_session = &found->second;
            m_session->inUse = true;
        }
    }
    ~Claim() {
        if (m_session != nullptr) {
            const std::lock_guard lock(m_library.m_mutex);
            m_session->inUse = false;
        }
    }
    Claim(const Claim&) = delete;
    Claim& operator=(const Claim&) = delete;

    Error error() const { return m_error; }
    Session& session() const { return *m_session; }

 private:
    Library& m_library;
    Session* m_session = nullptr;
    Error m_error = Error::kNone;
};

Library::Library(EnvironmentReader environment)
    : m_environment(std::move(environment)), m_lastHandle(kFirstHandle - 1) {}

Library::~Library() {
    if (m_settings == nullptr) {
        return;
    }
    trace(*m_settings, [this] {
        return "unload, library_init not undone: " + std::to_string(m_initialised) +
               ", sessions not closed: " + std::to_string(m_sessions.size());
    });
}

// Takes the settings for one call. They are read at the first call and again at every library_init, because a
// test can change the environment only between the clips that it opens.
Library::Call Library::enter(Function function) {
    std::shared_ptr<const Settings> settings;
    {
        const std::lock_guard lock(m_settingsMutex);
        if (m_settings == nullptr) {
            m_settings = defaultSettings();
            try {
                m_settings = readSettings(m_environment, m_settings);
            } catch (const std::exception&) {
                // library_init reads them again and is the one to complain.
            }
        }
        if (function == Function::kLibraryInit) {
            m_settings = readSettings(m_environment, m_settings);
        }
        settings = m_settings;
    }
    const std::optional<std::int32_t> injected = settings->faults->next(function);
    return {std::move(settings), injected};
}

template <class Text>
void Library::trace(const Settings& settings, Text text) noexcept {
    if (settings.texts.log.empty()) {
        return;
    }
    try {
        m_trace.append(settings.texts.log, text());
    } catch (const std::exception& exception) {
        static_cast<void>(
            std::fprintf(stderr, "orvantis_common64 stand-in: trace line lost: %s\n", exception.what()));
    }
}

// The frame round every call: settings, injected fault, no exception past the C border, trace line.
template <class Work, class Arguments>
std::int32_t Library::run(Function function, Work work, Arguments arguments) noexcept {
    Call call;
    try {
        call = enter(function);
    } catch (const std::exception& exception) {
        static_cast<void>(std::fprintf(stderr, "orvantis_common64 stand-in: %s\n", exception.what()));
        return code(Error::kMalformedSettings);
    }
    std::int32_t result = call.injected.value_or(0);
    // A decode that is to fail still passes the gate, so that tests can fail it while others wait.
    if (!call.injected || function == Function::kDecompress) {
        try {
            result = work(call);
        } catch (const std::bad_alloc&) {
            result = code(Error::kOutOfMemory);
        } catch (...) {
            result = code(Error::kInternal);
        }
    }
    trace(*call.settings, [&] {
        return std::string(functionName(function)) + "(" + arguments() + ") = " + std::to_string(result);
    });
    return result;
}

std::int32_t Library::libraryInit() noexcept {
    return run(
        Function::kLibraryInit,
        [this](const Call&) {
            const std::lock_guard lock(m_mutex);
            ++m_initialised;
            return code(Error::kNone);
        },
        [] { return std::string(); });
}

Error Library::closeLibrary() {
    const std::lock_guard lock(m_mutex);
    if (m_initialised == 0) {
        return Error::kNotInitialised;
    }
    if (m_initialised == 1 && !m_sessions.empty()) {
        return Error::kSessionsOpen;
    }
    --m_initialised;
    return Error::kNone;
}

std::int32_t Library::libraryClose() noexcept {
    return run(
        Function::kLibraryClose, [this](const Call&) { return code(closeLibrary()); },
        [] { return std::string(); });
}

Error Library::openSession(std::uint32_t& handle) {
    const std::lock_guard lock(m_mutex);
    if (m_initialised == 0) {
        return Error::kNotInitialised;
    }
    if (m_sessions.size() >= kMaxSessions) {
        return Error::kTooManySessions;
    }
    std::uint32_t next = m_lastHandle;
    do {
        ++next;  // past the last number it goes on at 0, which is no handle
    } while (next == 0 || m_sessions.contains(next));
    m_sessions[next];
    m_lastHandle = next;
    handle = next;
    return Error::kNone;
}

std::int32_t Library::open(std::uint32_t* handle) noexcept {
    std::uint32_t opened = 0;
    return run(
        Function::kOpen,
        [&](const Call&) {
            if (handle == nullptr) {
                return code(Error::kInvalidArgument);
            }
            const Error error = openSession(opened);
            if (error == Error::kNone) {
                *handle = opened;
            }
            return code(error);
        },
        [&] { return opened == 0 ? std::string() : "-> " + traceHandle(opened); });
}

Error Library::closeSession(std::uint32_t handle) {
    const std::lock_guard lock(m_mutex);
    if (m_initialised == 0) {
        return Error::kNotInitialised;
    }
    const auto found = m_sessions.find(handle);
    if (found == m_sessions.end()) {
        return Error::kInvalidHandle;
    }
    if (found->second.inUse) {
        return Error::kHandleInUse;
    }
    m_sessions.erase(found);
    return Error::kNone;
}

std::int32_t Library::close(std::uint32_t handle) noexcept {
    return run(
        Function::kClose, [&](const Call&) { return code(closeSession(handle)); },
        [&] { return traceHandle(handle); });
}

std::int32_t Library::decompressQuery(std::uint32_t handle, const void* format, std::uint64_t formatBytes,
                                      const OrvantisFrameFormat* output,
                                      OrvantisFrameFormat* result) noexcept {
    return run(
        Function::kDecompressQuery,
        [&](const Call&) {
            const Claim claim(*this, handle);
            return code(claim.error() != Error::kNone ? claim.error()
                                                      : query(format, formatBytes, output, result));
        },
        [&] {
            return traceHandle(handle) + ", " + traceBytes(format, formatBytes) + ", " + traceText(output) +
                   ", -> " + traceText(result);
        });
}

std::int32_t Library::decompressBegin(std::uint32_t handle, const void* format, std::uint64_t formatBytes,
                                      const OrvantisFrameFormat* output,
                                      OrvantisFrameFormat* produced) noexcept {
    return run(
        Function::kDecompressBegin,
        [&](const Call&) {
            const Claim claim(*this, handle);
            if (claim.error() != Error::kNone) {
                return code(claim.error());
            }
            return code(begin(claim.session().conversion, format, formatBytes, output, produced));
        },
        [&] {
            return traceHandle(handle) + ", " + traceBytes(format, formatBytes) + ", " + traceText(output) +
                   ", -> " + traceText(produced);
        });
}

Error Library::decode(const Call& call, const Session& session, const void* frame, std::uint64_t frameBytes,
                      const OrvantisOutputBuffer* out, std::int32_t& injected) {
    const Settings& settings = *call.settings;
    if (settings.gate != nullptr && !settings.gate->passThrough()) {
        return Error::kGateTimedOut;
    }
    if (call.injected) {
        injected = *call.injected;
        return Error::kInjectedFault;
    }
    if (!isUsable(frame, frameBytes) || out == nullptr) {
        return Error::kInvalidArgument;
    }
    if (session.conversion == nullptr) {
        return Error::kDecompressionNotBegun;
    }
    const Conversion& conversion = *session.conversion;
    if (const Error error = conversion.check(frameBytes, *out); error != Error::kNone) {
        return error;
    }
    if (settings.delay.count() != 0) {
        spend(settings.delay);
    }
    if (!settings.nullDecode) {
        conversion.convert(static_cast<const std::uint8_t*>(frame), *out);
    }
    return Error::kNone;
}

std::int32_t Library::decompress(std::uint32_t handle, const void* frame, std::uint64_t frameBytes,
                                 const OrvantisOutputBuffer* out) noexcept {
    return run(
        Function::kDecompress,
        [&](const Call& call) {
            const Claim claim(*this, handle);
            if (claim.error() != Error::kNone) {
                return call.injected.value_or(code(claim.error()));
            }
            std::int32_t injected = 0;
            const Error error = decode(call, claim.session(), frame, frameBytes, out, injected);
            return injected != 0 ? injected : code(error);
        },
        [&] { return traceHandle(handle) + ", " + traceBytes(frame, frameBytes) + ", " + traceText(out); });
}

std::int32_t Library::decompressEnd(std::uint32_t handle) noexcept {
    return run(
        Function::kDecompressEnd,
        [&](const Call&) {
            const Claim claim(*this, handle);
            if (claim.error() != Error::kNone) {
                return code(claim.error());
            }
            std::unique_ptr<Conversion>& conversion = claim.session().conversion;
            if (conversion == nullptr) {
                return code(Error::kDecompressionNotBegun);
            }
            conversion.reset();
            return code(Error::kNone);
        },
        [&] { return traceHandle(handle); });
}

const char* Library::getString(std::uint32_t kind, std::uint32_t stringCode) noexcept {
    const char* text = nullptr;
    const std::int32_t result = run(
        Function::kGetString,
        [&](const Call&) {
            text = findString(kind, stringCode);
            return code(Error::kNone);
        },
        [&] {
            return std::to_string(kind) + ", " + std::to_string(stringCode) + ", -> " +
                   (text == nullptr ? std::string("null") : "\"" + std::string(text) + "\"");
        });
    return result == 0 ? text : nullptr;
}

std::int32_t Library::getParam(std::uint32_t handle, std::uint32_t parameter, std::uint32_t* value,
                               std::uint64_t valueBytes) noexcept {
    return run(
        Function::kGetParam,
        [&](const Call&) {
            const Claim claim(*this, handle);
            return code(claim.error() != Error::kNone ? claim.error()
                                                      : answerParam(parameter, value, valueBytes));
        },
        [&] {
            return traceHandle(handle) + ", " + std::to_string(parameter) + ", " +
                   (value == nullptr ? std::string("null") : "-> " + std::to_string(*value)) + ", " +
                   std::to_string(valueBytes);
        });
}

std::int32_t Library::compressQuery() noexcept {
    return run(
        Function::kCompressQuery, [](const Call&) { return code(Error::kNotSupported); },
        [] { return std::string(); });
}

}  // namespace orvantis::standin
