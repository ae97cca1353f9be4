// The contract of the eleven functions: order of calls, arguments, fault injection, trace, threads.

#include "standin/library.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <thread>

#include "standin/gate.h"
#include "tests/testbed/standin/reference_decoder.h"
#include "tests/testbed/standin/standin_test_support.h"

namespace orvantis::standin::test {
namespace {

constexpr std::int32_t codeOf(Error error) {
    return static_cast<std::int32_t>(error);
}

class LibraryTest : public testing::Test {
 protected:
    std::int32_t query(const std::vector<std::uint8_t>& format, const OrvantisFrameFormat* output,
                       OrvantisFrameFormat* result) {
        return lib().decompressQuery(m_open.handle, format.data(), format.size(), output, result);
    }
    std::int32_t begin(const OrvantisFrameFormat& output) {
        return lib().decompressBegin(m_open.handle, m_format.data(), m_format.size(), &output, &m_produced);
    }
    std::int32_t decompress(const OrvantisOutputBuffer& out) {
        return lib().decompress(m_open.handle, m_payload.data(), m_payload.size(), &out);
    }
    Library& lib() { return m_open.library; }
    // Settings take effect at the next library_init.
    void set(const std::string& name, const std::string& value) {
        m_open.environment[name] = value;
        EXPECT_EQ(lib().libraryInit(), 0);
        ++m_extraInits;
    }
    ~LibraryTest() override {
        for (; m_extraInits > 0; --m_extraInits) {
            EXPECT_EQ(lib().libraryClose(), 0);
        }
    }

    OpenLibrary m_open;
    int m_extraInits = 0;
    const TestType& m_type = testType("O8Y2");
    std::vector<std::uint8_t> m_format = formatData("O8Y2", 6, 4);
    std::vector<std::uint8_t> m_payload = randomPayload(m_type, 6, 4, 1);
    OrvantisFrameFormat m_produced{};
    OutputRows m_rows{12, 4, 16};
};

TEST(LibraryOrder, NothingButTextsWorksBeforeInit) {
    FakeEnvironment environment;
    Library library(environment.reader());
    std::uint32_t handle = 77;
    OrvantisFrameFormat result = request(0);
    const OrvantisFrameFormat output = request(2);
    const auto format = formatData("O8RG", 4, 2);
    std::uint32_t value = 2;
    const OrvantisOutputBuffer out{&value, 4, 4};
    const std::int32_t expected = codeOf(Error::kNotInitialised);
    EXPECT_EQ(library.open(&handle), expected);
    EXPECT_EQ(handle, 77U);
    EXPECT_EQ(library.close(1), expected);
    EXPECT_EQ(library.decompressQuery(1, format.data(), format.size(), nullptr, &result), expected);
    EXPECT_EQ(library.decompressBegin(1, format.data(), format.size(), &output, &result), expected);
    EXPECT_EQ(library.decompress(1, format.data(), format.size(), &out), expected);
    EXPECT_EQ(library.decompressEnd(1), expected);
    EXPECT_EQ(library.getParam(1, 7, &value, 4), expected);
    EXPECT_EQ(library.libraryClose(), expected);
    EXPECT_STREQ(library.getString(2, 1001), "library not initialised");
    EXPECT_EQ(library.compressQuery(), codeOf(Error::kNotSupported));
}

TEST(LibraryOrder, InitAndCloseAreCounted) {
    FakeEnvironment environment;
    Library library(environment.reader());
    std::uint32_t handle = 0;
    EXPECT_EQ(library.libraryInit(), 0);
    EXPECT_EQ(library.libraryInit(), 0);
    EXPECT_EQ(library.libraryClose(), 0);
    EXPECT_EQ(library.open(&handle), 0);
    // One initialisation is left and a session needs it.
    EXPECT_EQ(library.libraryClose(), codeOf(Error::kSessionsOpen));
    EXPECT_EQ(library.close(handle), 0);
    EXPECT_EQ(library.libraryClose(), 0);
    EXPECT_EQ(library.libraryClose(), codeOf(Error::kNotInitialised));
    EXPECT_EQ(library.open(&handle), codeOf(Error::kNotInitialised));
}

TEST(LibraryOrder, HandlesAreNeverZeroAndNotGivenTwice) {
    FakeEnvironment environment;
    Library library(environment.reader());
    ASSERT_EQ(library.libraryInit(), 0);
    std::uint32_t previous = 0;
    for (int i = 0; i < 1000; ++i) {
        std::uint32_t handle = 0;
        ASSERT_EQ(library.open(&handle), 0);
        ASSERT_GT(handle, previous);
        previous = handle;
        ASSERT_EQ(library.close(handle), 0);
        ASSERT_EQ(library.close(handle), codeOf(Error::kInvalidHandle));
    }
    EXPECT_EQ(library.libraryClose(), 0);
}

TEST(LibraryOrder, SessionsAreLimited) {
    FakeEnvironment environment;
    Library library(environment.reader());
    ASSERT_EQ(library.libraryInit(), 0);
    std::uint32_t handle = 0;
    for (std::size_t i = 0; i < 4096; ++i) {
        ASSERT_EQ(library.open(&handle), 0);
    }
    std::uint32_t refused = 5;
    EXPECT_EQ(library.open(&refused), codeOf(Error::kTooManySessions));
    EXPECT_EQ(refused, 5U);
    EXPECT_EQ(library.close(handle), 0);
    EXPECT_EQ(library.open(&refused), 0);
}

TEST_F(LibraryTest, WrongHandlesAreRefused) {
    const OrvantisFrameFormat output = request(4, 0, 1, 1);
    OrvantisFrameFormat result = request(0);
    std::uint32_t value = 2;
    for (const std::uint32_t handle : {0U, m_open.handle + 1, 0xFFFFFFFFU}) {
        const std::int32_t expected = codeOf(Error::kInvalidHandle);
        EXPECT_EQ(lib().close(handle), expected);
        EXPECT_EQ(lib().decompressQuery(handle, m_format.data(), m_format.size(), nullptr, &result),
                  expected);
        EXPECT_EQ(lib().decompressBegin(handle, m_format.data(), m_format.size(), &output, &result),
                  expected);
        EXPECT_EQ(lib().decompress(handle, m_payload.data(), m_payload.size(), &m_rows.buffer()), expected);
        EXPECT_EQ(lib().decompressEnd(handle), expected);
        EXPECT_EQ(lib().getParam(handle, 7, &value, 4), expected);
    }
}

TEST_F(LibraryTest, NullPointersAndImpossibleCountsAreInvalidArguments) {
    const std::int32_t expected = codeOf(Error::kInvalidArgument);
    const OrvantisFrameFormat output = request(4, 0, 1, 1);
    OrvantisFrameFormat result = request(0);
    const std::uint64_t tooMany = std::uint64_t{1} << 32 | 40;
    EXPECT_EQ(lib().open(nullptr), expected);
    EXPECT_EQ(lib().decompressQuery(m_open.handle, nullptr, 40, nullptr, &result), expected);
    EXPECT_EQ(lib().decompressQuery(m_open.handle, m_format.data(), tooMany, nullptr, &result), expected);
    EXPECT_EQ(lib().decompressQuery(m_open.handle, m_format.data(), 40, nullptr, nullptr), expected);
    EXPECT_EQ(lib().decompressQuery(m_open.handle, m_format.data(), 40, &output, nullptr), expected);
    EXPECT_EQ(lib().decompressBegin(m_open.handle, nullptr, 40, &output, &result), expected);
    EXPECT_EQ(lib().decompressBegin(m_open.handle, m_format.data(), tooMany, &output, &result), expected);
    EXPECT_EQ(lib().decompressBegin(m_open.handle, m_format.data(), 40, nullptr, &result), expected);
    EXPECT_EQ(lib().decompressBegin(m_open.handle, m_format.data(), 40, &output, nullptr), expected);
    ASSERT_EQ(begin(output), 0);
    EXPECT_EQ(lib().decompress(m_open.handle, nullptr, 48, &m_rows.buffer()), expected);
    EXPECT_EQ(lib().decompress(m_open.handle, m_payload.data(), tooMany, &m_rows.buffer()), expected);
    EXPECT_EQ(lib().decompress(m_open.handle, m_payload.data(), m_payload.size(), nullptr), expected);
    std::uint32_t value = 2;
    EXPECT_EQ(lib().getParam(m_open.handle, 7, nullptr, 4), expected);
    EXPECT_EQ(lib().getParam(m_open.handle, 7, &value, 8), expected);
    EXPECT_EQ(value, 2U);
}

TEST_F(LibraryTest, QueryWithoutOutputDescribesTheVideo) {
    OrvantisFrameFormat result{0, 0, 254, 1, 0, 0, 0, 0, 0};
    ASSERT_EQ(query(m_format, nullptr, &result), 0);
    EXPECT_EQ(result.width, 6U);
    EXPECT_EQ(result.height, 4U);
    EXPECT_EQ(result.type, 104U);
    EXPECT_EQ(result.colorSpace, 1U);
    EXPECT_EQ(result.range, 1U);
}

TEST_F(LibraryTest, QueryWithoutOutputDemandsTheFixedWords) {
    OrvantisFrameFormat result{0, 0, 0, 1, 0, 0, 0, 0, 0};
    EXPECT_EQ(query(m_format, nullptr, &result), codeOf(Error::kInvalidFrameFormat));
    result = {0, 0, 254, 0, 0, 0, 0, 0, 0};
    EXPECT_EQ(query(m_format, nullptr, &result), codeOf(Error::kInvalidFrameFormat));
    EXPECT_EQ(result.width, 0U);
}

TEST_F(LibraryTest, QueryWithOutputDemandsNothingOfTheReceivingRecord) {
    const OrvantisFrameFormat output = request(5, 1, 2, 1);
    OrvantisFrameFormat result{};
    ASSERT_EQ(query(m_format, &output, &result), 0);
    EXPECT_EQ(result.type, 5U);
    EXPECT_EQ(result.width, 6U);
    EXPECT_EQ(result.word3, 254U);
}

TEST_F(LibraryTest, QueryAndBeginPassOnWhatIsWrong) {
    OrvantisFrameFormat result = request(0);
    EXPECT_EQ(query(formatData("XVID", 6, 4), nullptr, &result), codeOf(Error::kUnknownCompression));
    const OrvantisFrameFormat tooWide{7, 0, 254, 1, 4, 0, 1, 1, 0};
    EXPECT_EQ(query(m_format, &tooWide, &result), codeOf(Error::kOutputSizeMismatch));
    EXPECT_EQ(begin(tooWide), codeOf(Error::kOutputSizeMismatch));
    EXPECT_EQ(begin(request(50, 0, 1, 1)), codeOf(Error::kOutputNotSupported));
    EXPECT_EQ(m_produced.width, 0U);
    // A begin that was refused has begun nothing.
    EXPECT_EQ(lib().decompressEnd(m_open.handle), codeOf(Error::kDecompressionNotBegun));
}

TEST_F(LibraryTest, BeginDecompressEnd) {
    EXPECT_EQ(decompress(m_rows.buffer()), codeOf(Error::kDecompressionNotBegun));
    EXPECT_EQ(lib().decompressEnd(m_open.handle), codeOf(Error::kDecompressionNotBegun));
    ASSERT_EQ(begin(request(4, 1, 1, 1)), 0);
    EXPECT_EQ(m_produced.width, 6U);
    EXPECT_EQ(m_produced.height, 4U);
    EXPECT_EQ(begin(request(4, 1, 1, 1)), codeOf(Error::kDecompressionBegun));
    for (int frame = 0; frame < 3; ++frame) {
        m_payload = randomPayload(m_type, 6, 4, 10U + static_cast<std::uint32_t>(frame));
        ASSERT_EQ(decompress(m_rows.buffer()), 0);
        for (std::uint32_t row = 0; row < 4; ++row) {
            EXPECT_EQ(firstDifference(referenceRow(m_type, m_payload, 6, 4, 3 - row, {4, false, false}),
                                      m_rows.row(row), 12),
                      "");
        }
    }
    EXPECT_EQ(m_rows.damagedBytes(), 0U);
    EXPECT_EQ(lib().decompressEnd(m_open.handle), 0);
    EXPECT_EQ(decompress(m_rows.buffer()), codeOf(Error::kDecompressionNotBegun));
    EXPECT_EQ(begin(request(5, 0, 2, 1)), 0);
    // The session goes with its handle, begun or not.
}

TEST_F(LibraryTest, RefusedFramesLeaveThePictureAlone) {
    ASSERT_EQ(begin(request(4, 0, 1, 1)), 0);
    m_payload.pop_back();
    EXPECT_EQ(decompress(m_rows.buffer()), codeOf(Error::kFrameTruncated));
    m_payload.push_back(0);
    OrvantisOutputBuffer wrong = m_rows.buffer();
    wrong.totalBytes += 1;
    EXPECT_EQ(decompress(wrong), codeOf(Error::kOutputBytesMismatch));
    wrong = m_rows.buffer();
    wrong.rowPitch = 11;
    EXPECT_EQ(decompress(wrong), codeOf(Error::kInvalidOutputBuffer));
    for (const std::uint8_t byte : m_rows.packed()) {
        ASSERT_EQ(byte, OutputRows::kPattern);
    }
}

TEST_F(LibraryTest, QueriesDoNotDisturbARunningDecompression) {
    ASSERT_EQ(begin(request(4, 0, 1, 1)), 0);
    OrvantisFrameFormat result = request(0);
    EXPECT_EQ(query(formatData("O8RG", 2, 2), nullptr, &result), 0);
    EXPECT_EQ(decompress(m_rows.buffer()), 0);
}

TEST_F(LibraryTest, TheFormatDataIsNotKept) {
    ASSERT_EQ(begin(request(4, 0, 1, 1)), 0);
    std::fill(m_format.begin(), m_format.end(), std::uint8_t{0});
    EXPECT_EQ(decompress(m_rows.buffer()), 0);
}

TEST_F(LibraryTest, Strings) {
    EXPECT_STREQ(lib().getString(1, 2), "BGRA32");
    EXPECT_STREQ(lib().getString(1, 104), "YUV422 8-bit");
    EXPECT_STREQ(lib().getString(1, 0), "unknown");
    EXPECT_STREQ(lib().getString(1, 116), "unknown");
    EXPECT_STREQ(lib().getString(2, 1017), "compressed frame truncated");
    EXPECT_STREQ(lib().getString(2, 0xFFFFFFFFU), "unknown error");
    EXPECT_STREQ(lib().getString(3, 1), "Rec.601");
    EXPECT_STREQ(lib().getString(3, 2), "Rec.709");
    EXPECT_STREQ(lib().getString(3, 3), "unknown");
    EXPECT_STREQ(lib().getString(0, 1), "");
    EXPECT_STREQ(lib().getString(4, 1), "");
}

TEST_F(LibraryTest, ParametersAnswerForEveryTypeAndRefuseTheRest) {
    for (std::uint32_t type = 1; type <= 61; ++type) {
        std::uint32_t flip = type;
        std::uint32_t range = type;
        ASSERT_EQ(lib().getParam(m_open.handle, 7, &flip, 4), 0);
        ASSERT_EQ(lib().getParam(m_open.handle, 9, &range, 4), 0);
        EXPECT_EQ(flip, static_cast<std::uint32_t>(std::ranges::count(deliverableLayouts(), type))) << type;
        EXPECT_EQ(range, type == 31 || type == 32 ? 1U : 0U) << type;
    }
    for (const std::uint32_t type : {0U, 62U, 116U}) {
        std::uint32_t value = type;
        EXPECT_EQ(lib().getParam(m_open.handle, 7, &value, 4), codeOf(Error::kUnknownType));
        EXPECT_EQ(value, type);
    }
    for (const std::uint32_t parameter : {0U, 6U, 8U, 10U}) {
        std::uint32_t value = 2;
        EXPECT_EQ(lib().getParam(m_open.handle, parameter, &value, 4), codeOf(Error::kUnknownParameter));
        EXPECT_EQ(value, 2U);
    }
}

TEST_F(LibraryTest, InjectedFaultsHitEachFunctionAndHaveNoOtherEffect) {
    set("ORVANTIS_STANDIN_FAIL",
        "open:1=11,close:1=12,decompress_query:1=13,decompress_begin:1=14,decompress:1=15,decompress_end:1="
        "16,"
        "get_string:1,get_param:1=17,compress_query:1=18,library_close:1=19");
    const OrvantisFrameFormat output = request(4, 0, 1, 1);
    OrvantisFrameFormat result{};
    std::uint32_t value = 2;
    std::uint32_t handle = 9;
    EXPECT_EQ(lib().libraryClose(), 19);
    EXPECT_EQ(lib().open(&handle), 11);
    EXPECT_EQ(handle, 9U);
    EXPECT_EQ(lib().close(m_open.handle), 12);
    EXPECT_EQ(query(m_format, &output, &result), 13);
    EXPECT_EQ(result.width, 0U);
    EXPECT_EQ(begin(output), 14);
    EXPECT_EQ(begin(output), 0);
    EXPECT_EQ(decompress(m_rows.buffer()), 15);
    EXPECT_EQ(m_rows.row(0)[0], OutputRows::kPattern);
    EXPECT_EQ(lib().decompressEnd(m_open.handle), 16);
    EXPECT_EQ(decompress(m_rows.buffer()), 0);
    EXPECT_EQ(lib().getString(1, 2), nullptr);
    EXPECT_STREQ(lib().getString(1, 2), "BGRA32");
    EXPECT_EQ(lib().getParam(m_open.handle, 7, &value, 4), 17);
    EXPECT_EQ(value, 2U);
    EXPECT_EQ(lib().compressQuery(), 18);
}

TEST(LibrarySettings, AnInjectedInitFailureDoesNotCountAsInitialised) {
    FakeEnvironment environment;
    environment["ORVANTIS_STANDIN_FAIL"] = "library_init:1=20";
    Library library(environment.reader());
    EXPECT_EQ(library.libraryInit(), 20);
    std::uint32_t handle = 0;
    EXPECT_EQ(library.open(&handle), codeOf(Error::kNotInitialised));
    EXPECT_EQ(library.libraryInit(), 0);
    EXPECT_EQ(library.libraryClose(), 0);
}

TEST(LibrarySettings, AreInForceBeforeTheFirstInit) {
    FakeEnvironment environment;
    environment["ORVANTIS_STANDIN_FAIL"] = "open:1=20";
    Library library(environment.reader());
    std::uint32_t handle = 0;
    EXPECT_EQ(library.open(&handle), 20);
}

TEST(LibrarySettings, MalformedOnesFailEveryInitUntilTheyAreRight) {
    FakeEnvironment environment;
    environment["ORVANTIS_STANDIN_FAIL"] = "opne:1";
    Library library(environment.reader());
    testing::internal::CaptureStderr();
    EXPECT_EQ(library.libraryInit(), codeOf(Error::kMalformedSettings));
    EXPECT_EQ(library.libraryInit(), codeOf(Error::kMalformedSettings));
    const std::string complaint =
        "orvantis_common64 stand-in: ORVANTIS_STANDIN_FAIL: 'opne:1' cannot be understood\n";
    EXPECT_EQ(testing::internal::GetCapturedStderr(), complaint + complaint);
    environment["ORVANTIS_STANDIN_FAIL"] = "open:1";
    EXPECT_EQ(library.libraryInit(), 0);
    EXPECT_EQ(library.libraryClose(), 0);
}

TEST_F(LibraryTest, NullDecodeChecksEverythingAndWritesNothing) {
    set("ORVANTIS_STANDIN_DECODE", "null");
    ASSERT_EQ(begin(request(4, 0, 1, 1)), 0);
    EXPECT_EQ(decompress(m_rows.buffer()), 0);
    for (const std::uint8_t byte : m_rows.packed()) {
        ASSERT_EQ(byte, OutputRows::kPattern);
    }
    m_payload.pop_back();
    EXPECT_EQ(decompress(m_rows.buffer()), codeOf(Error::kFrameTruncated));
}

TEST_F(LibraryTest, ADecodeTakesAtLeastTheDelay) {
    set("ORVANTIS_STANDIN_DELAY_US", "20000");
    ASSERT_EQ(begin(request(4, 0, 1, 1)), 0);
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(decompress(m_rows.buffer()), 0);
    EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(20));
}

TEST(LibraryTrace, ShowsOneClipsLife) {
    const TemporaryFile file;
    FakeEnvironment environment;
    environment["ORVANTIS_STANDIN_LOG"] = file.utf8Path();
    environment["ORVANTIS_STANDIN_FAIL"] = "decompress:2=1234";
    {
        Library library(environment.reader());
        const auto format = formatData("O8RG", 4, 2);
        const std::vector<std::uint8_t> payload(24);
        std::uint32_t handle = 0;
        std::uint32_t value = 31;
        const OrvantisFrameFormat output = request(2, 1);
        OrvantisFrameFormat result = request(0, 0, 0, 0);
        const OutputRows rows(16, 2, -16);
        library.libraryInit();
        library.open(&handle);
        library.decompressQuery(handle, format.data(), format.size(), nullptr, &result);
        library.decompressBegin(handle, format.data(), format.size(), &output, &result);
        library.decompress(handle, payload.data(), payload.size(), &rows.buffer());
        library.decompress(handle, payload.data(), payload.size(), &rows.buffer());
        library.decompressEnd(handle);
        library.getParam(handle, 9, &value, 4);
        library.getString(2, 1234);
        library.compressQuery();
        library.open(nullptr);
        library.close(handle);
        library.libraryClose();
    }
    const std::vector<std::string> expected = {
        "#1 T1 library_init() = 0",
        "#2 T1 open(-> 0x10001) = 0",
        "#3 T1 decompress_query(0x10001, {40 bytes}, null, -> {4,2,254,1,101,0,2,2,0}) = 0",
        "#4 T1 decompress_begin(0x10001, {40 bytes}, {0,0,254,1,2,1,2,2,0}, -> {4,2,254,1,2,1,2,2,0}) = 0",
        "#5 T1 decompress(0x10001, {24 bytes}, {pixels,pitch -16,total 4294967264}) = 0",
        "#6 T1 decompress(0x10001, {24 bytes}, {pixels,pitch -16,total 4294967264}) = 1234",
        "#7 T1 decompress_end(0x10001) = 0",
        "#8 T1 get_param(0x10001, 9, -> 1, 4) = 0",
        "#9 T1 get_string(2, 1234, -> \"unknown error\") = 0",
        "#10 T1 compress_query() = 1022",
        "#11 T1 open() = 1005",
        "#12 T1 close(0x10001) = 0",
        "#13 T1 library_close() = 0",
        "#14 T1 unload, library_init not undone: 0, sessions not closed: 0",
    };
    EXPECT_EQ(file.lines(), expected);
}

TEST(LibraryTrace, ShowsWhatWasNotUndone) {
    const TemporaryFile file;
    FakeEnvironment environment;
    environment["ORVANTIS_STANDIN_LOG"] = file.utf8Path();
    {
        Library library(environment.reader());
        std::uint32_t handle = 0;
        library.libraryInit();
        library.libraryInit();
        library.open(&handle);
    }
    ASSERT_EQ(file.lines().size(), 4U);
    EXPECT_EQ(file.lines().back(), "#4 T1 unload, library_init not undone: 2, sessions not closed: 1");
}

class GatedLibraryTest : public LibraryTest {
 protected:
    GatedLibraryTest() {
        Gate::remove(m_name);
        m_gate = std::make_unique<Gate>(m_name);
        set("ORVANTIS_STANDIN_GATE", m_name);
    }
    ~GatedLibraryTest() override { Gate::remove(m_name); }

    std::string m_name = uniqueName();
    std::unique_ptr<Gate> m_gate;
};

TEST_F(GatedLibraryTest, ASecondCallOnABusyHandleIsRefusedWhateverItIs) {
    ASSERT_EQ(begin(request(4, 0, 1, 1)), 0);
    std::int32_t first = -1;
    std::thread decoder([&] { first = decompress(m_rows.buffer()); });
    ASSERT_TRUE(m_gate->waitForArrival());
    const std::int32_t busy = codeOf(Error::kHandleInUse);
    OrvantisFrameFormat result = request(0);
    std::uint32_t value = 2;
    const OutputRows other(12, 4, 12);
    EXPECT_EQ(decompress(other.buffer()), busy);
    EXPECT_EQ(query(m_format, nullptr, &result), busy);
    EXPECT_EQ(begin(request(5, 0, 1, 1)), busy);
    EXPECT_EQ(lib().decompressEnd(m_open.handle), busy);
    EXPECT_EQ(lib().getParam(m_open.handle, 7, &value, 4), busy);
    EXPECT_EQ(lib().close(m_open.handle), busy);
    EXPECT_EQ(lib().libraryClose(), 0);  // another initialisation is left
    EXPECT_EQ(lib().libraryClose(), codeOf(Error::kSessionsOpen));
    EXPECT_EQ(lib().libraryInit(), 0);
    // Another session is free meanwhile.
    std::uint32_t second = 0;
    EXPECT_EQ(lib().open(&second), 0);
    EXPECT_EQ(lib().getParam(second, 7, &value, 4), 0);
    EXPECT_EQ(lib().close(second), 0);
    m_gate->release();
    decoder.join();
    EXPECT_EQ(first, 0);
    EXPECT_NE(m_rows.row(0)[0], OutputRows::kPattern);
    EXPECT_EQ(lib().decompressEnd(m_open.handle), 0);
}

TEST_F(GatedLibraryTest, AnInjectedFaultIsAnsweredBehindTheGate) {
    set("ORVANTIS_STANDIN_FAIL", "decompress:1=55");
    ASSERT_EQ(begin(request(4, 0, 1, 1)), 0);
    std::int32_t result = -1;
    std::thread decoder([&] { result = decompress(m_rows.buffer()); });
    ASSERT_TRUE(m_gate->waitForArrival());
    m_gate->release();
    decoder.join();
    EXPECT_EQ(result, 55);
}

TEST_F(GatedLibraryTest, TakingTheGateAwayFreesLaterCallsOnly) {
    ASSERT_EQ(begin(request(4, 0, 1, 1)), 0);
    std::int32_t first = -1;
    std::thread decoder([&] { first = decompress(m_rows.buffer()); });
    ASSERT_TRUE(m_gate->waitForArrival());
    set("ORVANTIS_STANDIN_GATE", "");
    std::uint32_t second = 0;
    ASSERT_EQ(lib().open(&second), 0);
    const OrvantisFrameFormat output = request(4, 0, 1, 1);
    const OutputRows rows(12, 4, 12);
    EXPECT_EQ(lib().decompressBegin(second, m_format.data(), m_format.size(), &output, &m_produced), 0);
    EXPECT_EQ(lib().decompress(second, m_payload.data(), m_payload.size(), &rows.buffer()), 0);
    EXPECT_EQ(lib().close(second), 0);
    m_gate->release();
    decoder.join();
    EXPECT_EQ(first, 0);
}

// Sessions of several threads side by side, settings read again meanwhile; what TSan is for.
TEST(LibraryThreads, SessionsAreIndependent) {
    const EnvironmentReader constant = [](const char* name) {
        return std::string(std::string(name) == "ORVANTIS_STANDIN_FAIL" ? "decompress:10" : "");
    };
    Library library(constant);
    std::atomic<int> failures = 0;
    std::atomic<int> wrong = 0;
    const auto work = [&](const char* tag, std::uint32_t layout) {
        const TestType& type = testType(tag);
        const auto format = formatData(tag, 9, 5);
        const OrvantisFrameFormat output = fittingRequest(layout);
        const std::size_t rowBytes = referenceRowBytes(layout, 9);
        for (std::uint32_t round = 0; round < 20; ++round) {
            std::uint32_t handle = 0;
            OrvantisFrameFormat produced{};
            wrong += library.libraryInit() != 0;
            wrong += library.open(&handle) != 0;
            wrong += library.decompressBegin(handle, format.data(), format.size(), &output, &produced) != 0;
            const auto payload = randomPayload(type, 9, 5, round);
            const OutputRows rows(rowBytes, 5, static_cast<std::int32_t>(rowBytes));
            if (library.decompress(handle, payload.data(), payload.size(), &rows.buffer()) != 0) {
                ++failures;
            } else {
                wrong += !firstDifference(referenceRow(type, payload, 9, 5, 4,
                                                       {layout, false, type.model == Model::kRgb}),
                                          rows.row(4), rowBytes)
                              .empty();
            }
            wrong += library.close(handle) != 0;
            wrong += library.libraryClose() != 0;
        }
    };
    std::thread first(work, "O8RA", 2);
    std::thread second(work, "O0Y2", 11);
    std::thread third(work, "O8Y0", 31);
    first.join();
    second.join();
    third.join();
    EXPECT_EQ(failures, 1);
    EXPECT_EQ(wrong, 0);
    EXPECT_EQ(library.libraryClose(), codeOf(Error::kNotInitialised));
}

}  // namespace
}  // namespace orvantis::standin::test
