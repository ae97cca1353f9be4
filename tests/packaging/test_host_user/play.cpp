// play MODULE CLIP: the standard session of the simulated host, and what it noticed.
#include <cstdio>
#include <exception>

#include "simhost/host.h"
#include "simhost/plugin.h"
#include "simhost/session.h"

int main(int argc, char** argv) {
    if (argc != 3) {
        return 2;
    }
    try {
        simhost::Host host;
        const simhost::Plugin plugin(argv[1]);
        const simhost::Importer importer(host, plugin);
        simhost::SessionOptions options;
        options.pathUtf8 = argv[2];
        const simhost::SessionSummary summary = simhost::runSession(importer, options);
        std::printf("%u streams, %u frames, %u sample frames, %u differences\n%s", summary.streams,
                    static_cast<unsigned>(summary.frames), static_cast<unsigned>(summary.audioFrames),
                    static_cast<unsigned>(summary.asyncDifferences), host.report().c_str());
        return host.isClean() ? 0 : 1;
    } catch (const std::exception& error) {
        std::printf("%s\n", error.what());
        return 3;
    }
}
