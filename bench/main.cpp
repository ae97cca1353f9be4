// orvantis_bench [--first]: the native benchmarks. Clips come from the folder that ORVANTIS_BENCH_FILES
// names, written by make_bench_files; bench.sh does both. --first measures the first opening of clips, which
// needs a process whose allocator has no memory to spare.
#include <benchmark/benchmark.h>

#include <cstring>

#include "bench/allocation_count.h"
#include "bench/peer.h"
#include "bench/series.h"
#include "tests/support/environment.h"

int main(int argc, char** argv) {
    // The codec's work is not ours: it checks its frames and writes no pixel.
    orvantis::test::setEnvironment("ORVANTIS_STANDIN_DECODE", "null");
    if (argc > 1 && std::strcmp(argv[1], "--first") == 0) {
        orvantis::bench::useFreshMemory();
        orvantis::bench::addFirstOpeningBenchmarks();
        argv[1] = argv[0];
        ++argv;
        --argc;
    } else {
        orvantis::bench::addOpeningBenchmarks();
        orvantis::bench::addFrameBenchmarks();
        orvantis::bench::addAsyncBenchmarks();
        orvantis::bench::addAudioBenchmarks();
        orvantis::bench::addCallBenchmarks();
        orvantis::bench::addListBenchmarks();
        orvantis::bench::addLogBenchmarks();
    }
    benchmark::AddCustomContext("peer", orvantis::bench::peerName());
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) {
        return 2;
    }
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
