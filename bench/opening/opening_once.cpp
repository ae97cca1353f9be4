// opening_once ours MODULE CLIP: the first opening of a clip by the plug-in in a new process.
// opening_once keep MODULE CLIP COUNT: so many openings of a clip, all of which stay open.
// opening_once read CLIP PIECE: plain reads of the index bytes alone, whose places stand in CLIP.index as
// lines of offset and size. They go into memory of their total size, or with PIECE through one buffer of that
// size. Prints seconds (for keep: of all openings).
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <exception>
#include <fstream>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "fileio/win_file.h"
#include "simhost/plugin.h"
#include "tool/bench/bench_clip.h"
#include "tool/bench/bench_workloads.h"

namespace {

using simhost::tool::BenchClip;
using simhost::tool::benchClock;
using simhost::tool::BenchImporter;

double openOnce(const std::string& module, const std::string& clip) {
    const simhost::Plugin plugin(module);
    const BenchImporter importer(plugin.entry());
    return simhost::tool::timeOpening(importer, clip);
}

#ifdef __linux__
// Resident memory, bytes.
double residentBytes() {
    std::ifstream file("/proc/self/statm");
    double all = 0;
    double resident = 0;
    file >> all >> resident;
    constexpr double kPage = 4096;
    return resident * kPage;
}
#else
double residentBytes() {
    return 0;
}
#endif

void keepOpen(const std::string& module, const std::string& clip, int count) {
    const simhost::Plugin plugin(module);
    const BenchImporter importer(plugin.entry());
    std::vector<std::unique_ptr<BenchClip>> clips;
    const double before = residentBytes();
    const double start = benchClock();
    for (int i = 0; i < count; ++i) {
        clips.push_back(std::make_unique<BenchClip>(importer, clip));
        clips.back()->describe();
    }
    const double seconds = benchClock() - start;
    std::printf("%.9f %.0f\n", seconds, residentBytes() - before);
}

struct Place {
    std::uint64_t offset;
    std::uint64_t size;
};

double readPlainly(const std::string& clip, std::uint64_t piece) {
    std::vector<Place> places;
    std::ifstream list(clip + ".index");
    for (Place place{}; list >> place.offset >> place.size;) {
        places.push_back(place);
    }
    std::uint64_t total = 0;
    for (const Place& place : places) {
        total += place.size;
    }
    if (total == 0) {
        throw std::runtime_error("no places in " + clip + ".index");
    }

    const double start = benchClock();
    fileio::WinFile file;
    if (!file.open(clip.c_str(), fileio::kOpenRead | fileio::kOpenShareRead)) {
        throw std::runtime_error("cannot open " + clip);
    }
    const auto bytes = std::make_unique_for_overwrite<std::byte[]>(piece == 0 ? total : piece);
    std::byte* destination = bytes.get();
    for (const Place& place : places) {
        file.seekTo(static_cast<std::int64_t>(place.offset));
        for (std::uint64_t done = 0; done < place.size;) {
            const std::uint64_t count = piece == 0 ? place.size : std::min(place.size - done, piece);
            file.readExact(destination, count);
            done += count;
            if (piece == 0) {
                destination += count;
            }
        }
    }
    return benchClock() - start;
}

}  // namespace

int main(int argc, char** argv) {
    const std::vector<std::string> arguments(argv + 1, argv + argc);
    try {
        if (arguments.size() == 3 && arguments[0] == "ours") {
            std::printf("%.9f\n", openOnce(arguments[1], arguments[2]));
        } else if (arguments.size() == 4 && arguments[0] == "keep") {
            keepOpen(arguments[1], arguments[2], std::stoi(arguments[3]));
        } else if (arguments.size() == 3 && arguments[0] == "read") {
            std::printf("%.9f\n", readPlainly(arguments[1], std::stoull(arguments[2])));
        } else {
            (void)std::fprintf(stderr, "usage: opening_once ours|keep|read ...\n");
            return 2;
        }
    } catch (const std::exception& error) {
        (void)std::fprintf(stderr, "opening_once: %s\n", error.what());
        return 1;
    }
    return 0;
}
