#include "tests/support/fake_codec/fake_codec.h"

#include <gtest/gtest.h>

#include <atomic>

namespace fakecodec {

namespace {

std::atomic<FakeCodec*> currentCodec{nullptr};

constexpr std::array kNames{
    "orvantis_library_init", "orvantis_library_close",    "orvantis_open",
    "orvantis_close",        "orvantis_decompress_query", "orvantis_decompress_begin",
    "orvantis_decompress",   "orvantis_decompress_end",   "orvantis_get_string",
    "orvantis_get_param",    "orvantis_compress_query",
};
static_assert(kNames.size() == kFunctionCount,
              "CONTRIBUTING.md, \"How do I add ...\", a function of the codec library");

constexpr std::int32_t kBadCall = -1000;  // answered to a caller that broke the contract

std::size_t at(Function function) {
    return static_cast<std::size_t>(function);
}

}  // namespace

const char* nameOf(Function function) {
    return kNames[at(function)];
}

FakeCodec* FakeCodec::current() {
    return currentCodec.load();
}

FakeCodec::FakeCodec() {
    EXPECT_EQ(currentCodec.exchange(this), nullptr) << "a second fake codec";
}

FakeCodec::~FakeCodec() {
    EXPECT_TRUE(m_sessions.empty()) << m_sessions.size() << " codec sessions were left open";
    currentCodec.store(nullptr);
}

void FakeCodec::failCall(Function function, int call, std::int32_t result) {
    const std::lock_guard lock(m_mutex);
    m_failCalls[{function, call}] = result;
}

void FakeCodec::failAll(Function function, std::int32_t result) {
    const std::lock_guard lock(m_mutex);
    m_failAll[function] = result;
}

void FakeCodec::stopFailing() {
    const std::lock_guard lock(m_mutex);
    m_failCalls.clear();
    m_failAll.clear();
}

void FakeCodec::setString(std::uint32_t kind, std::uint32_t code, std::string text) {
    const std::lock_guard lock(m_mutex);
    m_strings[{kind, code}] = std::move(text);
}

void FakeCodec::setNullString(std::uint32_t kind, std::uint32_t code) {
    const std::lock_guard lock(m_mutex);
    m_strings[{kind, code}] = std::nullopt;
}

std::vector<Call> FakeCodec::calls() const {
    const std::lock_guard lock(m_mutex);
    std::vector<Call> result;
    for (const Call& call : m_calls) {
        if (call.function != Function::kGetString) {
            result.push_back(call);
        }
    }
    return result;
}

std::vector<std::string> FakeCodec::callNames() const {
    std::vector<std::string> names;
    for (const Call& call : calls()) {
        names.emplace_back(nameOf(call.function));
    }
    return names;
}

std::vector<Call> FakeCodec::callsOf(Function function) const {
    const std::lock_guard lock(m_mutex);
    std::vector<Call> result;
    for (const Call& call : m_calls) {
        if (call.function == function) {
            result.push_back(call);
        }
    }
    return result;
}

int FakeCodec::count(Function function) const {
    const std::lock_guard lock(m_mutex);
    return m_counts[at(function)];
}

int FakeCodec::openSessions() const {
    const std::lock_guard lock(m_mutex);
    return static_cast<int>(m_sessions.size());
}

void FakeCodec::forgetCalls() {
    const std::lock_guard lock(m_mutex);
    m_calls.clear();
    m_counts.fill(0);
}

void FakeCodec::setRecording(bool on) {
    const std::lock_guard lock(m_mutex);
    m_recording = on;
}

// Counts the call and looks up what the test wants of it. Called first, once per call.
std::optional<std::int32_t> FakeCodec::plannedResult(Function function) {
    const int number = ++m_counts[at(function)];
    if (const auto planned = m_failCalls.find({function, number}); planned != m_failCalls.end()) {
        return planned->second;
    }
    if (const auto planned = m_failAll.find(function); planned != m_failAll.end()) {
        return planned->second;
    }
    return std::nullopt;
}

std::int32_t FakeCodec::finish(Call call, std::int32_t result) {
    call.result = result;
    if (m_recording) {
        m_calls.push_back(call);
    }
    return result;
}

FakeCodec::Session* FakeCodec::sessionOf(std::uint32_t handle, const char* caller) {
    const auto session = m_sessions.find(handle);
    if (session != m_sessions.end()) {
        return &session->second;
    }
    ADD_FAILURE() << caller << " on handle " << handle << ", which is not open";
    return nullptr;
}

// The words that every record carries into the library.
void FakeCodec::checkInput(const char* caller, const OrvantisFrameFormat& format) {
    EXPECT_EQ(format.width, 0U) << caller;
    EXPECT_EQ(format.height, 0U) << caller;
    EXPECT_EQ(format.word3, 254U) << caller;
    EXPECT_EQ(format.word4, 1U) << caller;
    EXPECT_EQ(format.word9, 0U) << caller;
}

OrvantisFrameFormat FakeCodec::producedBy(const OrvantisFrameFormat& output) const {
    OrvantisFrameFormat produced = output;
    produced.width = coded.width;
    produced.height = coded.height;
    return produced;
}

std::int32_t FakeCodec::libraryInit() {
    const std::lock_guard lock(m_mutex);
    const Call call{.function = Function::kLibraryInit};
    if (const auto planned = plannedResult(call.function)) {
        return finish(call, *planned);
    }
    ++m_libraryUses;
    return finish(call, 0);
}

std::int32_t FakeCodec::libraryClose() {
    const std::lock_guard lock(m_mutex);
    const Call call{.function = Function::kLibraryClose};
    if (const auto planned = plannedResult(call.function)) {
        return finish(call, *planned);
    }
    EXPECT_GT(m_libraryUses--, 0) << "orvantis_library_close without orvantis_library_init";
    return finish(call, 0);
}

std::int32_t FakeCodec::open(std::uint32_t* handle) {
    const std::lock_guard lock(m_mutex);
    Call call{.function = Function::kOpen};
    if (const auto planned = plannedResult(call.function)) {
        return finish(call, *planned);
    }
    EXPECT_GT(m_libraryUses, 0) << "orvantis_open without orvantis_library_init";
    if (handle == nullptr) {
        ADD_FAILURE() << "orvantis_open without a place for the handle";
        return finish(call, kBadCall);
    }
    *handle = nextHandle;
    call.handle = nextHandle;
    if (nextHandle != 0) {
        m_sessions[nextHandle++] = {};
    }
    return finish(call, 0);
}

std::int32_t FakeCodec::close(std::uint32_t handle) {
    const std::lock_guard lock(m_mutex);
    const Call call{.function = Function::kClose, .handle = handle};
    const auto planned = plannedResult(call.function);
    if (sessionOf(handle, "orvantis_close") == nullptr) {
        return finish(call, kBadCall);
    }
    m_sessions.erase(handle);  // also when it answers a failure: nobody can close it again
    return finish(call, planned.value_or(0));
}

std::int32_t FakeCodec::decompressQuery(std::uint32_t handle, const void* format, std::uint64_t bytes,
                                        const OrvantisFrameFormat* output, OrvantisFrameFormat* result) {
    const std::lock_guard lock(m_mutex);
    Call call{.function = Function::kDecompressQuery, .handle = handle, .data = format, .bytes = bytes};
    if (output != nullptr) {
        call.output = *output;
    }
    if (result != nullptr) {
        call.answerOnEntry = *result;
    }
    const auto planned = plannedResult(call.function);
    if (sessionOf(handle, "orvantis_decompress_query") == nullptr) {
        return finish(call, kBadCall);
    }
    if (result == nullptr) {
        ADD_FAILURE() << "orvantis_decompress_query without a place for the answer";
        return finish(call, kBadCall);
    }
    checkInput("orvantis_decompress_query, answer", *result);
    if (output != nullptr) {
        checkInput("orvantis_decompress_query, output", *output);
    }
    if (planned) {
        return finish(call, *planned);
    }
    if (output == nullptr) {
        *result = coded;
        return finish(call, 0);
    }
    if (accepts && !accepts(*output)) {
        return finish(call, refusal);
    }
    *result = producedBy(*output);
    return finish(call, 0);
}

std::int32_t FakeCodec::decompressBegin(std::uint32_t handle, const void* format, std::uint64_t bytes,
                                        const OrvantisFrameFormat* output, OrvantisFrameFormat* produced) {
    const std::lock_guard lock(m_mutex);
    Call call{.function = Function::kDecompressBegin, .handle = handle, .data = format, .bytes = bytes};
    if (output != nullptr) {
        call.output = *output;
    }
    if (produced != nullptr) {
        call.answerOnEntry = *produced;
    }
    const auto planned = plannedResult(call.function);
    Session* const session = sessionOf(handle, "orvantis_decompress_begin");
    if (session == nullptr) {
        return finish(call, kBadCall);
    }
    if (output == nullptr || produced == nullptr) {
        ADD_FAILURE() << "orvantis_decompress_begin without its records";
        return finish(call, kBadCall);
    }
    checkInput("orvantis_decompress_begin, output", *output);
    checkInput("orvantis_decompress_begin, answer", *produced);
    if (planned) {
        return finish(call, *planned);
    }
    if (session->begun) {
        ADD_FAILURE() << "orvantis_decompress_begin while a decompression is running";
        return finish(call, kBadCall);
    }
    if (accepts && !accepts(*output)) {
        return finish(call, refusal);
    }
    session->begun = true;
    session->output = *output;
    *produced = producedBy(*output);
    return finish(call, 0);
}

std::int32_t FakeCodec::decompress(std::uint32_t handle, const void* frame, std::uint64_t bytes,
                                   const OrvantisOutputBuffer* out) {
    OrvantisFrameFormat output{};
    {
        const std::lock_guard lock(m_mutex);
        Call call{.function = Function::kDecompress, .handle = handle, .data = frame, .bytes = bytes};
        if (out != nullptr) {
            call.buffer = *out;
        }
        const auto planned = plannedResult(call.function);
        const Session* const session = sessionOf(handle, "orvantis_decompress");
        if (session == nullptr) {
            return finish(call, kBadCall);
        }
        if (out == nullptr || out->pixels == nullptr) {
            ADD_FAILURE() << "orvantis_decompress without pixels";
            return finish(call, kBadCall);
        }
        EXPECT_EQ(out->totalBytes, out->rowPitch * coded.height);
        if (!session->begun) {
            ADD_FAILURE() << "orvantis_decompress without orvantis_decompress_begin";
            return finish(call, kBadCall);
        }
        if (planned) {
            return finish(call, *planned);
        }
        output = session->output;
        finish(call, 0);
    }
    // Outside the lock: a test may hold several decodes here at once.
    if (onDecompress) {
        onDecompress({static_cast<const std::byte*>(frame), bytes}, *out, output);
    }
    return 0;
}

std::int32_t FakeCodec::decompressEnd(std::uint32_t handle) {
    const std::lock_guard lock(m_mutex);
    const Call call{.function = Function::kDecompressEnd, .handle = handle};
    const auto planned = plannedResult(call.function);
    Session* const session = sessionOf(handle, "orvantis_decompress_end");
    if (session == nullptr) {
        return finish(call, kBadCall);
    }
    EXPECT_TRUE(session->begun) << "orvantis_decompress_end without orvantis_decompress_begin";
    session->begun = false;  // also when it answers a failure, after which callers begin anew
    return finish(call, planned.value_or(0));
}

const char* FakeCodec::getString(std::uint32_t kind, std::uint32_t code) {
    const std::lock_guard lock(m_mutex);
    ++m_counts[at(Function::kGetString)];
    finish({.function = Function::kGetString, .number = kind, .code = code}, 0);
    auto text = m_strings.find({kind, code});
    if (text == m_strings.end()) {
        std::string made;
        switch (kind) {
            case orvantis::kOrvantisStringTypeName:
                made = "type" + std::to_string(code);
                break;
            case orvantis::kOrvantisStringErrorText:
                made = "error" + std::to_string(static_cast<std::int32_t>(code));
                break;
            case orvantis::kOrvantisStringColorSpaceName:
                made = "space" + std::to_string(code);
                break;
            default:
                ADD_FAILURE() << "orvantis_get_string of kind " << kind;
        }
        text = m_strings.emplace(std::pair{kind, code}, std::move(made)).first;
    }
    return text->second ? text->second->c_str() : nullptr;
}

std::int32_t FakeCodec::getParam(std::uint32_t handle, std::uint32_t parameter, std::uint32_t* value,
                                 std::uint64_t bytes) {
    const std::lock_guard lock(m_mutex);
    Call call{.function = Function::kGetParam, .handle = handle, .bytes = bytes, .number = parameter};
    const auto planned = plannedResult(call.function);
    if (sessionOf(handle, "orvantis_get_param") == nullptr) {
        return finish(call, kBadCall);
    }
    if (value == nullptr || bytes != 4) {
        ADD_FAILURE() << "orvantis_get_param with a value of " << bytes << " bytes at " << value;
        return finish(call, kBadCall);
    }
    call.code = *value;
    if (planned) {
        return finish(call, *planned);
    }
    if (param) {
        *value = param(parameter, *value);
    }
    return finish(call, 0);
}

std::int32_t FakeCodec::compressQuery() {
    const std::lock_guard lock(m_mutex);
    ADD_FAILURE() << "orvantis_compress_query has no caller in decoding";
    return finish({.function = Function::kCompressQuery}, kBadCall);
}

}  // namespace fakecodec
