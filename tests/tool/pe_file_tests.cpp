// Windows libraries read from their bytes, among them broken ones.
#include "tool/shared/base/pe_file.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <initializer_list>
#include <string>
#include <string_view>
#include <vector>

#include "tests/tool/small_pe.h"

namespace simhost::tool {
namespace {

TEST(PeFiles, TellWhatAHostNeedsToKnow) {
    const auto pe = parsePe(smallPe());
    ASSERT_TRUE(pe.has_value());
    EXPECT_EQ(pe->machine, PeFile::kMachineX64);
    EXPECT_TRUE(pe->is64Bit);
    EXPECT_TRUE(pe->isLibrary);
    EXPECT_EQ(pe->exports, std::vector<std::string>{"xImportEntry"});
    EXPECT_EQ(pe->version, "1.2.3.4");
    EXPECT_EQ(pe->importerResource, (std::vector<std::uint8_t>{0, 0, 'A', 'V', 'R', 'O'}));
}

TEST(PeFiles, OtherProcessorsAreTold) {
    const auto pe = parsePe(smallPe({.machine = PeFile::kMachineX86}));
    ASSERT_TRUE(pe.has_value());
    EXPECT_EQ(pe->machine, PeFile::kMachineX86);
}

TEST(PeFiles, WithoutTheResourceThereIsNone) {
    const auto pe = parsePe(smallPe({.importerId = 1001}));
    ASSERT_TRUE(pe.has_value());
    EXPECT_TRUE(pe->importerResource.empty());
    EXPECT_EQ(pe->version, "1.2.3.4");
}

TEST(PeFiles, OtherFilesAreNone) {
    EXPECT_FALSE(parsePe({}).has_value());
    EXPECT_FALSE(parsePe(std::vector<std::uint8_t>(4096, 0)).has_value());
    EXPECT_FALSE(parsePe(std::vector<std::uint8_t>(4096, 0xFF)).has_value());
}

// A small file may name the same text thousands of times.
TEST(PeFiles, NamesTakeNoMoreThanTheFileIsLong) {
    constexpr std::size_t kRows = 2000;
    constexpr std::size_t kName = 500;
    constexpr std::size_t kExports = 0x400;  // where small_pe.h puts the table
    std::vector<std::uint8_t> bytes = smallPe({.exports = {std::string(kName, 'n')}});
    const std::size_t table = bytes.size();
    const auto put = [&](std::size_t at, std::size_t value) {
        for (std::size_t i = 0; i < 4; ++i) {
            bytes[at + i] = static_cast<std::uint8_t>(value >> (8 * i));
        }
    };
    bytes.resize(table + 4 * kRows);
    for (std::size_t i = 0; i < kRows; ++i) {
        put(table + 4 * i, kExports + 44);
    }
    put(kExports + 24, kRows);
    put(kExports + 32, table);
    const auto pe = parsePe(bytes);
    ASSERT_TRUE(pe.has_value());
    ASSERT_GT(pe->exports.size(), 1U);
    EXPECT_EQ(pe->exports.back(), std::string(kName, 'n'));
    EXPECT_LT(pe->exports.size() * kName, bytes.size() + kName);
}

// Wherever the file ends, and whatever one of its bytes becomes, nothing outside of it is read.
TEST(PeFiles, DamagedOnesAreReadWithinTheirBounds) {
    const std::vector<std::uint8_t> whole = smallPe();
    for (std::size_t size = 0; size < whole.size(); ++size) {
        const std::vector<std::uint8_t> cut(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(size));
        if (const auto pe = parsePe(cut)) {
            EXPECT_LE(pe->exports.size(), 1U) << size;
        }
    }
    std::size_t read = 0;
    for (std::size_t at = 0; at < whole.size(); ++at) {
        for (const std::uint8_t value : std::initializer_list<std::uint8_t>{0x00, 0x7F, 0x80, 0xFF}) {
            std::vector<std::uint8_t> bytes = whole;
            bytes[at] = value;
            read += parsePe(bytes).has_value() ? 1U : 0U;
        }
    }
    EXPECT_GT(read, whole.size()) << "most bytes do not decide whether the file is a library";
}

}  // namespace
}  // namespace simhost::tool
