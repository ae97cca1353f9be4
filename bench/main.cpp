// orvantis_bench: the native benchmarks. Clips come from the folder that ORVANTIS_BENCH_FILES names, written
// by make_bench_files; bench.sh does both.
#include <benchmark/benchmark.h>

#include "bench/allocation_count.h"
#include "bench/peer.h"
#include "bench/series.h"
#include "tests/support/environment.h"

int main(int argc, char** argv) {
    // The codec's work is not ours: it checks its frames and writes no pixel.
    orvantis::test::setEnvironment("ORVANTIS_STANDIN_DECODE", "null");
    orvantis::bench::addOpeningBenchmarks();
    orvantis::bench::addFrameBenchmarks();
    orvantis::bench::addAudioBenchmarks();
    orvantis::bench::addLogBenchmarks();
    orvantis::bench::addFirstOpeningBenchmarks();  // last: it changes the allocator for good
    benchmark::AddCustomContext("peer", orvantis::bench::peerName());
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 2;
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
