#include <gtest/gtest.h>

#include <algorithm>

#include "host/selectors.h"
#include "simhost/host.h"

namespace simhost {
namespace {

const host::MemoryFunctions& memory(const Host& sim) {
    const host::piSuites* tables = sim.stdParms().piSuites;
    return *tables->memFuncs;
}

TEST(Memory, ABlockKnowsItsSizeAndStartsPoisoned) {
    Host sim;
    auto* block = static_cast<unsigned char*>(memory(sim).newPtr(8772));
    EXPECT_EQ(memory(sim).getPtrSize(block), 8772);
    EXPECT_TRUE(std::all_of(block, block + 8772, [](unsigned char b) { return b == 0xCB; }));
    EXPECT_EQ(sim.report(), "memory.returned: 1 memory blocks not freed, 8772 bytes\n");
    memory(sim).disposePtr(block);
    EXPECT_TRUE(sim.isClean());
}

TEST(Memory, AClearedBlockIsZero) {
    Host sim;
    auto* block = static_cast<unsigned char*>(memory(sim).newPtrClear(100));
    EXPECT_TRUE(std::all_of(block, block + 100, [](unsigned char b) { return b == 0; }));
    memory(sim).disposePtr(block);
}

TEST(Memory, AResizedBlockKeepsItsContent) {
    Host sim;
    void* block = memory(sim).newPtrClear(4);
    static_cast<unsigned char*>(block)[3] = 9;
    memory(sim).setPtrSize(&block, 10);
    EXPECT_EQ(memory(sim).getPtrSize(block), 10);
    EXPECT_EQ(static_cast<unsigned char*>(block)[3], 9);
    EXPECT_EQ(sim.balance().blocks, 1u);
    memory(sim).disposePtr(block);
    EXPECT_TRUE(sim.isClean());
}

TEST(Memory, WritingBehindABlockIsAViolation) {
    Host sim;
    auto* block = static_cast<unsigned char*>(memory(sim).newPtr(10));
    block[10] = 1;
    memory(sim).disposePtr(block);
    EXPECT_EQ(texts(sim.violations()),
              (std::vector<std::string>{"memory.bounds: disposePtr: bytes written outside a block of 10"}));
}

TEST(Memory, FreeingTwiceIsAViolation) {
    Host sim;
    void* block = memory(sim).newPtr(10);
    memory(sim).disposePtr(block);
    memory(sim).disposePtr(block);
    EXPECT_EQ(texts(sim.violations()), (std::vector<std::string>{"memory.live: disposePtr: no live block"}));
}

TEST(Memory, HandlesAreNoServiceOfThisHost) {
    Host sim;
    EXPECT_EQ(reinterpret_cast<void* (*)()>(reinterpret_cast<void*>(memory(sim).newHandle))(), nullptr);
    EXPECT_EQ(texts(sim.violations()), (std::vector<std::string>{"suites.offered: newHandle: called"}));
}

}  // namespace
}  // namespace simhost
