// The host's function tables, seen from the bytes: each table is filled with the numbers 1, 2, 3, ... as
// addresses, and a function pointer must then hold the number of its slot plus one. Nothing is called through
// those numbers.

#include <gtest/gtest.h>

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "host/entry_points.h"
#include "host/std_parms.h"
#include "host/suites.h"

namespace {

using namespace host;

// Builds a table from raw slots as a host would lay it out in memory.
template <typename Table>
Table numberedTable() {
    std::array<std::uint64_t, sizeof(Table) / 8> slots{};
    for (std::size_t i = 0; i < slots.size(); ++i) {
        slots[i] = i + 1;
    }
    return std::bit_cast<Table>(slots);
}

template <typename Pointer>
int slotOf(Pointer pointer) {
    return static_cast<int>(std::bit_cast<std::uint64_t>(pointer)) - 1;
}

TEST(FunctionTables, SlotCounts) {
    EXPECT_EQ(sizeof(SPBasicSuite) / 8, 7u);
    EXPECT_EQ(sizeof(MemoryFunctions) / 8, 12u);
    EXPECT_EQ(sizeof(UtilityFunctions) / 8, 9u);
    EXPECT_EQ(sizeof(ErrorSuite) / 8, 1u);
    EXPECT_EQ(sizeof(PPixCreatorSuite) / 8, 2u);
    EXPECT_EQ(sizeof(PPixCacheSuite) / 8, 14u);
    EXPECT_EQ(sizeof(PPixSuite) / 8, 9u);
    EXPECT_EQ(sizeof(TimeSuite) / 8, 3u);
    EXPECT_EQ(sizeof(ImageProcessingSuite) / 8, 7u);
    EXPECT_EQ(sizeof(AudioSuite) / 8, 8u);
}

TEST(FunctionTables, BasicSuite) {
    const auto suite = numberedTable<SPBasicSuite>();
    EXPECT_EQ(slotOf(suite.AcquireSuite), 0);
    EXPECT_EQ(slotOf(suite.ReleaseSuite), 1);
    EXPECT_EQ(slotOf(suite.Undefined), 6);
}

TEST(FunctionTables, MemoryFunctions) {
    const auto table = numberedTable<MemoryFunctions>();
    EXPECT_EQ(slotOf(table.newPtr), 0);
    EXPECT_EQ(slotOf(table.setPtrSize), 1);
    EXPECT_EQ(slotOf(table.getPtrSize), 2);
    EXPECT_EQ(slotOf(table.disposePtr), 3);
    EXPECT_EQ(slotOf(table.newHandle), 4);
    EXPECT_EQ(slotOf(table.setHandleSize), 5);
    EXPECT_EQ(slotOf(table.getHandleSize), 6);
    EXPECT_EQ(slotOf(table.disposeHandle), 7);
    EXPECT_EQ(slotOf(table.newPtrClear), 8);
    EXPECT_EQ(slotOf(table.newHandleClear), 9);
    EXPECT_EQ(slotOf(table.lockHandle), 10);
    EXPECT_EQ(slotOf(table.unlockHandle), 11);
}

TEST(FunctionTables, UtilityFunctions) {
    EXPECT_EQ(slotOf(numberedTable<UtilityFunctions>().getSPBasicSuite), 7);
}

TEST(FunctionTables, ErrorAndTimeSuites) {
    EXPECT_EQ(slotOf(numberedTable<ErrorSuite>().SetEventStringUnicode), 0);
    EXPECT_EQ(slotOf(numberedTable<TimeSuite>().GetTicksPerSecond), 0);
}

TEST(FunctionTables, PPixSuites) {
    EXPECT_EQ(slotOf(numberedTable<PPixCreatorSuite>().CreatePPix), 0);
    const auto suite = numberedTable<PPixSuite>();
    EXPECT_EQ(slotOf(suite.Dispose), 0);
    EXPECT_EQ(slotOf(suite.GetPixels), 1);
    EXPECT_EQ(slotOf(suite.GetRowBytes), 3);
}

TEST(FunctionTables, ImageProcessingSuite) {
    const auto suite = numberedTable<ImageProcessingSuite>();
    EXPECT_EQ(slotOf(suite.FormatIsCompressed), 0);
    EXPECT_EQ(slotOf(suite.FormatHasAlpha), 1);
    EXPECT_EQ(slotOf(suite.FormatIsOriginTopLeft), 2);
}

TEST(FunctionTables, AudioSuiteConvertsFromBytesInTheUpperHalf) {
    const auto suite = numberedTable<AudioSuite>();
    EXPECT_EQ(slotOf(suite.ConvertAndInterleaveTo8BitInteger), 0);
    EXPECT_EQ(slotOf(suite.UninterleaveAndConvertFrom8BitInteger), 4);
    EXPECT_EQ(slotOf(suite.UninterleaveAndConvertFrom16BitInteger), 5);
    EXPECT_EQ(slotOf(suite.UninterleaveAndConvertFrom24BitInteger), 6);
    EXPECT_EQ(slotOf(suite.UninterleaveAndConvertFrom32BitInteger), 7);
}

TEST(FunctionTables, SuiteNamesAndVersions) {
    EXPECT_STREQ(kErrorSuiteName, "Premiere Error Suite");
    EXPECT_EQ(kErrorSuiteVersion, 3);
    EXPECT_STREQ(kPPixCreatorSuiteName, "Premiere PPix Creator Suite");
    EXPECT_EQ(kPPixCreatorSuiteVersion, 1);
    EXPECT_STREQ(kPPixCacheSuiteName, "Premiere PPix Cache Suite");
    EXPECT_EQ(kPPixCacheSuiteVersion, 6);
    EXPECT_STREQ(kPPixSuiteName, "Premiere PPix Suite");
    EXPECT_EQ(kPPixSuiteVersion, 1);
    EXPECT_STREQ(kTimeSuiteName, "Premiere Time Suite");
    EXPECT_EQ(kTimeSuiteVersion, 1);
    EXPECT_STREQ(kImageProcessingSuiteName, "Premiere Image Processing Suite");
    EXPECT_EQ(kImageProcessingSuiteVersion, 2);
    EXPECT_STREQ(kAudioSuiteName, "Premiere Audio Suite");
    EXPECT_EQ(kAudioSuiteVersion, 1);
}

TEST(FunctionTables, EventTypesAndBufferAccess) {
    EXPECT_EQ(kEventTypeInformational, 1u);
    EXPECT_EQ(kEventTypeWarning, 2u);
    EXPECT_EQ(kEventTypeError, 3u);
    EXPECT_EQ(kBufferAccessReadOnly, 0);
    EXPECT_EQ(kBufferAccessWriteOnly, 1);
    EXPECT_EQ(kBufferAccessReadWrite, 2);
}

SPBasicSuite g_basicSuite{};
SPBasicSuite* giveBasicSuite() {
    return &g_basicSuite;
}

// Stores an address at a byte offset of a raw record.
template <std::size_t N, typename T>
void putAddress(std::array<unsigned char, N>& record, std::size_t offset, T address) {
    static_assert(sizeof address == 8);
    std::memcpy(record.data() + offset, &address, sizeof address);
}

TEST(FunctionTables, BasicSuiteIsReachedFromRawStandardParameters) {
    // Standard parameters + 12, piSuites + 28, utility table + 56; everything else is poison.
    std::array<unsigned char, 72> utilities{};
    utilities.fill(0xA5);
    putAddress(utilities, 56, &giveBasicSuite);
    std::array<unsigned char, 44> suites{};
    suites.fill(0xA5);
    putAddress(suites, 28, utilities.data());
    std::array<unsigned char, 20> raw{};
    raw.fill(0xA5);
    putAddress(raw, 12, suites.data());

    imStdParms parms;
    std::memcpy(&parms, raw.data(), sizeof parms);
    piSuites tables;
    std::memcpy(&tables, parms.piSuites, sizeof tables);
    UtilityFunctions functions;
    std::memcpy(&functions, tables.utilFuncs, sizeof functions);
    EXPECT_EQ(functions.getSPBasicSuite(), &g_basicSuite);
}

}  // namespace
