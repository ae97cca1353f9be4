// make_bench_files FOLDER: writes the clips of the benchmarks, and beside each where its index lies.
#include <cstdio>
#include <exception>
#include <fstream>
#include <string>

#include "bench/bench_files.h"

int main(int argc, char** argv) {
    if (argc != 2) {
        (void)std::fprintf(stderr, "usage: make_bench_files FOLDER\n");
        return 2;
    }
    try {
        for (const orvantis::bench::BenchFile& file : orvantis::bench::benchFiles()) {
            const std::string path = std::string(argv[1]) + "/" + file.name;
            std::ofstream places(path + ".index");
            for (const auto& place : orvantis::bench::writeSparseAvi(path, file.plan)) {
                places << place.offset << ' ' << place.size << '\n';
            }
        }
    } catch (const std::exception& error) {
        (void)std::fprintf(stderr, "make_bench_files: %s\n", error.what());
        return 1;
    }
    return 0;
}
