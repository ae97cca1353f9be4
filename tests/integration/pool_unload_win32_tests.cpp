// The plug-in is unloaded while a thread of its pool has not left it. The system holds the module as long as
// it was told to; without that the thread returns into memory that is gone, now and then.

// clang-format off
#include <windows.h>
// clang-format on

#include <gtest/gtest.h>

#include <atomic>

#include "host/result_codes.h"
#include "simhost/async_clip.h"
#include "simhost/clip.h"
#include "simhost/host.h"
#include "simhost/importer.h"
#include "simhost/plugin.h"
#include "tests/integration/plugin_clips.h"
#include "tests/integration/plugin_path.h"
#include "tests/support/temp_folder.h"
#include "tool/shared/base/import_patch_win32.h"

namespace {

PTP_WORK_CALLBACK g_runNext = nullptr;
HANDLE g_unloaded = nullptr;
std::atomic<int> g_inside = 0;
std::atomic<bool> g_wasThere = true;

bool isThere(const void* address) {
    MEMORY_BASIC_INFORMATION memory{};
    return VirtualQuery(address, &memory, sizeof memory) != 0 && memory.State == MEM_COMMIT;
}

// The plug-in's callback with its last instructions drawn out until the host has unloaded it.
void CALLBACK runNextAndStay(PTP_CALLBACK_INSTANCE instance, void* context, PTP_WORK work) {
    ++g_inside;
    g_runNext(instance, context, work);
    (void)WaitForSingleObject(g_unloaded, 60'000);
    if (!isThere(reinterpret_cast<const void*>(g_runNext))) {
        g_wasThere = false;
    }
    --g_inside;
}

PTP_WORK WINAPI createWork(PTP_WORK_CALLBACK callback, PVOID context, PTP_CALLBACK_ENVIRON environment) {
    g_runNext = callback;
    return CreateThreadpoolWork(&runNextAndStay, context, environment);
}

TEST(PoolUnload, TheModuleStaysUntilTheLastThreadOfThePoolHasLeftIt) {
    g_unloaded = CreateEventW(nullptr, TRUE, FALSE, nullptr);
    const orvantis::test::TempFolder folder;
    const auto bytes = clips::builder().build();
    orvantis::test::writeFile(folder / "clip.avi", std::string(bytes.begin(), bytes.end()));
    simhost::Host host;
    simhost::Plugin plugin(pluginPath(), codecFolder());
    // Never undone: the table that it would write to goes with the module.
    static_cast<void>(new simhost::tool::ImportPatch(reinterpret_cast<const void*>(plugin.entry()),
                                                     "CreateThreadpoolWork",
                                                     reinterpret_cast<const void*>(&createWork)));
    const simhost::Importer importer(host, plugin);
    ASSERT_EQ(importer.init().result, host::imNoErr);
    {
        simhost::Clip clip(importer, orvantis::test::utf8Path(folder / "clip.avi"));
        ASSERT_EQ(clip.getInfo(0).result, host::imNoErr);
        const simhost::PixelFormats formats = clip.pixelFormats();
        ASSERT_FALSE(formats.formats.empty());
        const host::imFrameFormat wanted[] = {{0, 0, formats.formats.front()}};
        simhost::AsyncClip async(clip);
        EXPECT_TRUE(async.getFrame(0, wanted).frame);
    }
    ASSERT_EQ(importer.shutdown(), host::imNoErr);
    ASSERT_NE(g_runNext, nullptr);
    ASSERT_GT(g_inside, 0) << "no thread is left in the pool";
    ASSERT_TRUE(isThere(reinterpret_cast<const void*>(g_runNext)));

    plugin.unload();
    ASSERT_NE(SetEvent(g_unloaded), FALSE);
    while (g_inside > 0) {
        (void)SwitchToThread();
    }
    EXPECT_TRUE(g_wasThere) << "the module was unloaded under a thread of its pool";
}

}  // namespace
