// A host that ends while its threads are inside the plug-in: loads it, calls it from many threads without
// pause, and leaves the process in the middle of that. The log redirection of the test that started it
// applies.

#include <atomic>
#include <cstdlib>
#include <thread>

#include "simhost/host.h"
#include "simhost/importer.h"
#include "simhost/plugin.h"
#include "tests/integration/plugin_path.h"
#include "tests/support/log_redirection.h"

int main() {
    orvantis::test::LogRedirection::inherit();
    static simhost::Host host;
    // Never unloaded: the end of the process has to be the first that the plug-in hears.
    static simhost::Plugin& plugin = *new simhost::Plugin(pluginPath(), codecFolder());
    static const simhost::Importer importer(host, plugin);
    static std::atomic<int> calls = 0;
    constexpr int kThreads = 6;
    constexpr int kCalls = 60;
    for (int i = 0; i < kThreads; ++i) {
        std::thread([] {
            for (;;) {
                (void)importer.getSupports8();
                ++calls;
                calls.notify_one();
            }
        }).detach();
    }
    for (int seen = calls; seen < kCalls; seen = calls) {
        calls.wait(seen);
    }
    // No exit handler of this program runs, the threads go on until the system ends them.
    std::_Exit(7);
}
