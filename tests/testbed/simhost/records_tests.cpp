#include <gtest/gtest.h>

#include <cstring>
#include <stdexcept>

#include "fake_plugin.h"
#include "host/four_char_codes.h"
#include "host/selectors.h"
#include "simhost/importer.h"

namespace simhost {
namespace {

class Records : public ::testing::Test {
 protected:
    Host sim;
    test::FakePlugin fake;
    Importer importer{sim, fake.plugin};
};

TEST_F(Records, AreZeroUnlessAFillIsChosen) {
    fake.on[host::imInit] = [](auto*, void*, void*) { return host::imNoErr; };
    const auto zero = importer.init();
    EXPECT_TRUE(zero.changedBytes().empty());
    EXPECT_EQ(byValue(zero.record.priority), 0);
    importer.setRecordFill(0xA5);
    EXPECT_EQ(byValue(importer.init().record.priority), static_cast<std::int32_t>(0xA5A5A5A5));
}

TEST_F(Records, ChangedBytesAreToldByOffset) {
    importer.setRecordFill(0xA5);
    fake.on[host::imInit] = [](auto*, void* record, void*) {
        static_cast<host::imImportInfoRec*>(record)->priority = 200;
        return host::imNoErr;
    };
    EXPECT_EQ(importer.init().changedBytes(), (std::vector<std::size_t>{52, 53, 54, 55}));
}

TEST_F(Records, WritesBeforeAndBehindARecordAreViolations) {
    fake.on[host::imGetIndFormat] = [](auto*, void*, void* record) {
        static_cast<unsigned char*>(record)[764] = 0;
        return host::imNoErr;
    };
    (void)importer.getIndFormat(0);
    fake.on[host::imGetIndFormat] = [](auto*, void*, void* record) {
        static_cast<unsigned char*>(record)[-1] = 0;
        return host::imNoErr;
    };
    (void)importer.getIndFormat(0);
    EXPECT_EQ(texts(sim.violations()),
              (std::vector<std::string>{
                  "records.bounds: imGetIndFormat, imIndFormatRec: offset 764 of 764 bytes was written",
                  "records.bounds: imGetIndFormat, imIndFormatRec: offset -1 of 764 bytes was written"}));
}

TEST_F(Records, NumbersArePassedZeroExtended) {
    std::uint64_t seen = 0;
    fake.on[host::imGetIndFormat] = [&seen](auto*, void* index, void*) {
        seen = reinterpret_cast<std::uintptr_t>(index);
        return host::imBadFormatIndex;
    };
    EXPECT_EQ(importer.getIndFormat(0xFFFFFFFF).result, 301);
    EXPECT_EQ(seen, 0xFFFFFFFFu);
}

TEST_F(Records, SubTypeNamesAreCountedByTheBlockSizeAndTheBlockIsFreed) {
    fake.on[host::imGetSubTypeNames] = [](const host::imStdParms* parms, void* type, void* place) {
        EXPECT_EQ(reinterpret_cast<std::uintptr_t>(type), host::kFileTypeAviv);
        const host::piSuites* tables = parms->piSuites;
        const host::MemoryFunctions* memory = tables->memFuncs;
        auto* rows = static_cast<host::imSubTypeDescriptionRec*>(memory->newPtr(2 * 516));
        std::memset(static_cast<void*>(rows), 0, 2 * 516);
        rows[0].subType = 0x4F385241;
        rows[0].subTypeName[0] = u'A';
        rows[1].subType = 0x4F385247;
        std::memset(static_cast<void*>(rows[1].subTypeName), 0x42, 512);  // no terminator
        *static_cast<void**>(place) = rows;
        return host::imNoErr;
    };
    const SubTypeNames names = importer.getSubTypeNames(host::kFileTypeAviv);
    EXPECT_TRUE(names.delivered);
    EXPECT_EQ(names.blockBytes, 1032u);
    ASSERT_EQ(names.names.size(), 2u);
    EXPECT_EQ(names.names[0].code, 0x4F385241u);
    EXPECT_EQ(names.names[0].nameUtf8, "A");
    EXPECT_EQ(names.names[1].name.size(), 256u);
    EXPECT_TRUE(sim.isClean()) << sim.report();
}

TEST_F(Records, SubTypeBlocksOfOddSizeOrForeignMemoryAreViolations) {
    fake.on[host::imGetSubTypeNames] = [](const host::imStdParms* parms, void*, void* place) {
        const host::piSuites* tables = parms->piSuites;
        const host::MemoryFunctions* memory = tables->memFuncs;
        *static_cast<void**>(place) = memory->newPtr(517);
        return host::imNoErr;
    };
    EXPECT_EQ(importer.getSubTypeNames(0).names.size(), 1u);
    static int foreign = 0;
    fake.on[host::imGetSubTypeNames] = [](auto*, void*, void* place) {
        *static_cast<void**>(place) = &foreign;
        return host::imNoErr;
    };
    EXPECT_FALSE(importer.getSubTypeNames(0).delivered);
    EXPECT_EQ(
        texts(sim.violations()),
        (std::vector<std::string>{
            "records.subtype-rows: imGetSubTypeNames, imSubTypeDescriptionRec: 517 bytes in rows of 516",
            "memory.handed-over: imGetSubTypeNames: an address that is no live block"}));
    EXPECT_TRUE(sim.balance().isBalanced());
}

TEST_F(Records, UnhandledSelectorsGiveTheEntrysResult) {
    EXPECT_EQ(importer.call(2, nullptr, nullptr), host::imUnsupported);
    EXPECT_EQ(importer.shutdown(), host::imUnsupported);
}

TEST(PluginLoading, AMissingFileIsNamedInTheError) {
    try {
        const Plugin plugin("no-such-folder/\xC3\xA9.prm");
        FAIL() << "loaded";
    } catch (const std::runtime_error& error) {
        EXPECT_NE(std::string(error.what()).find("cannot load 'no-such-folder/\xC3\xA9.prm': "),
                  std::string::npos)
            << error.what();
    }
}

TEST(PluginLoading, ALinkedEntryStaysAfterUnload) {
    test::FakePlugin fake;
    fake.plugin.unload();
    EXPECT_NE(fake.plugin.entry(), nullptr);
}

}  // namespace
}  // namespace simhost
