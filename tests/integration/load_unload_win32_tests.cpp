// A host that loads and unloads the plug-in again and again: plug-in managers rescan, panels restart. Each
// load is a new one, with a C++ runtime of its own, and what that keeps is lost to the process for good.

// clang-format off
#include <windows.h>
#include <psapi.h>
// clang-format on

#include <gtest/gtest.h>

#include <cstdint>
#include <cstdio>

#include "host/result_codes.h"
#include "simhost/host.h"
#include "simhost/importer.h"
#include "simhost/plugin.h"
#include "simhost/shared_library.h"
#include "tests/integration/plugin_path.h"
#include "tests/support/log_redirection.h"
#include "tests/support/temp_folder.h"
#include "tests/support/thorough.h"
#include "tool/shared/base/process_usage.h"

namespace {

// In a long run more than the 1,088 thread-local slots of a process.
int cycles() {
    return orvantis::test::howMany(orvantis::test::howManyOfSample(100, 300), 1500);
}
// What a cycle may keep. The runtime's share is about 1 KiB, which cannot be given back (docs/soak.md); the
// rest is the system's loader.
constexpr double kMostBytesPerCycle = 4096.0;

std::uint64_t privateBytes() {
    PROCESS_MEMORY_COUNTERS memory{};
    return GetProcessMemoryInfo(GetCurrentProcess(), &memory, sizeof memory) ? memory.PagefileUsage : 0;
}

/// Slots that this process has taken up to the lowest free one.
std::uint32_t lowestFreeSlot() {
    const DWORD slot = TlsAlloc();
    if (slot != TLS_OUT_OF_INDEXES) {
        TlsFree(slot);
    }
    return slot;
}

class LoadUnload : public testing::Test {
 protected:
    LoadUnload() : m_log(m_profile.path()), m_codec(codecFolder() + "/orvantis_common64.dll") {
        // The key is there to be opened: one that is missing leaves nothing to be closed.
        m_log.setSwitch(0);
        // A host has these loaded anyway; their own loading is not what is measured.
        for (const char* library : {"shell32.dll", "shlwapi.dll", "user32.dll", "advapi32.dll"}) {
            EXPECT_NE(LoadLibraryA(library), nullptr) << library;
        }
    }

    void cycle(bool initialise) {
        simhost::Plugin plugin(pluginPath(), codecFolder());
        const simhost::Importer importer(m_host, plugin);
        if (!initialise) {
            return;
        }
        ASSERT_EQ(importer.init().result, host::imNoErr);
        ASSERT_EQ(importer.shutdown(), host::imNoErr);
        m_host.clearTrace();
    }

    /// Cycles, and what each keeps on average.
    void measure(bool initialise) {
        constexpr int kWarmUp = 50;
        for (int i = 0; i < kWarmUp; ++i) {
            ASSERT_NO_FATAL_FAILURE(cycle(initialise));
        }
        const std::uint32_t slotBefore = lowestFreeSlot();
        const std::uint64_t handlesBefore = simhost::tool::processUsage().handles;
        const std::uint64_t before = privateBytes();
        ASSERT_GT(before, 0U) << "the system does not tell";
        for (int i = 0; i < cycles(); ++i) {
            ASSERT_NO_FATAL_FAILURE(cycle(initialise)) << i;
        }
        const auto kept = static_cast<double>(static_cast<std::int64_t>(privateBytes() - before));
        std::printf("%d loads kept %.0f bytes each\n", cycles(), kept / cycles());
        RecordProperty("bytesPerLoad", static_cast<int>(kept / cycles()));
        EXPECT_LT(kept / cycles(), kMostBytesPerCycle);
        EXPECT_EQ(lowestFreeSlot(), slotBefore) << "thread-local slots stay taken";
        EXPECT_EQ(simhost::tool::processUsage().handles, handlesBefore) << "files, keys or events stay open";
        EXPECT_TRUE(m_host.isClean()) << m_host.report();
    }

 private:
    orvantis::test::TempFolder m_profile;
    orvantis::test::LogRedirection m_log;
    simhost::SharedLibrary m_codec;  // stays, so that only the plug-in comes and goes
    simhost::Host m_host;
};

TEST_F(LoadUnload, LeavesNothingThatAddsUp) {
    measure(false);
}

TEST_F(LoadUnload, LeavesNothingThatAddsUpAfterInitAndShutdown) {
    measure(true);
}

}  // namespace
