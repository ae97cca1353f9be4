// Cuts clips at random places and rescues them with the tool, with ffmpeg and with mencoder; each result is
// held against what the uncut file's own index says is whole. Prints one line of counts for each, which
// measure.sh adds up.
//
//     rescue_measure scan CUTS CLIP...                 the search alone, in this process, for every clip
//     rescue_measure tools FIRST LAST FOLDER CLIP...   cuts FIRST to LAST - 1 of the series, with the
//     programs
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
#include <random>
#include <string>

#include "tests/rescue/cut_check.h"
#include "tool/rescue/storage.h"

namespace simhost::tool {
namespace {

namespace fs = std::filesystem;

TestBytes bytesOfFile(const fs::path& path) {
    std::ifstream in(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
}

int measureScan(std::uint64_t cuts, const std::vector<std::string>& clips) {
    std::uint64_t files = 0;
    std::uint64_t structural = 0;
    std::uint64_t random = 0;
    std::uint64_t wrong = 0;
    std::uint64_t chunks = 0;
    for (const std::string& clip : clips) {
        const auto file = systemDisk().openToRead(clip);
        const std::vector<ChunkFact> truth = indexedChunks(*file);
        if (truth.empty()) {
            std::fprintf(stderr, "%s has no index of its own\n", clip.c_str());
            continue;
        }
        ++files;
        const auto one = [&](std::uint64_t size) {
            const std::string answer = wrongInScan(*file, truth, size);
            chunks += wholeBefore(truth, size).size();
            wrong += answer.empty() ? 0U : 1U;
            if (!answer.empty()) {
                std::fprintf(stderr, "%s cut at %llu: %s\n", clip.c_str(),
                             static_cast<unsigned long long>(size), answer.c_str());
            }
        };
        for (const std::uint64_t size : structuralPoints(*file)) {
            ++structural;
            one(size);
        }
        std::mt19937_64 numbers(file->size());
        for (std::uint64_t i = 0; i < cuts; ++i) {
            ++random;
            one(numbers() % (file->size() + 1));
        }
    }
    std::printf("scan files %llu structural %llu random %llu chunks %llu wrong %llu\n",
                static_cast<unsigned long long>(files), static_cast<unsigned long long>(structural),
                static_cast<unsigned long long>(random), static_cast<unsigned long long>(chunks),
                static_cast<unsigned long long>(wrong));
    return wrong == 0 ? 0 : 1;
}

struct Counts {
    std::uint64_t cuts = 0;
    std::uint64_t exact = 0;     // every stream byte for byte
    std::uint64_t pictures = 0;  // the pictures
    std::uint64_t nothing = 0;   // no file, or none that can be read
    std::uint64_t whole = 0;     // frames that there were
    std::uint64_t lost = 0;      // of them, not in the result
    std::uint64_t damaged = 0;   // frames in the result that were not there whole
};

// The data of a stream; chunks of sound may be divided otherwise.
struct StreamBytes {
    std::vector<TestBytes> chunks;
    TestBytes all() const {
        TestBytes out;
        for (const TestBytes& chunk : chunks) {
            out.insert(out.end(), chunk.begin(), chunk.end());
        }
        return out;
    }
};

std::vector<StreamBytes> streamsOf(TestBytes& file, const std::vector<ChunkFact>& chunks,
                                   std::size_t streams) {
    std::vector<StreamBytes> out(streams);
    for (const ChunkFact& chunk : chunks) {
        if (chunk.stream >= streams || chunk.offset + chunk.size > file.size()) {
            continue;
        }
        const auto begin = file.begin() + static_cast<std::ptrdiff_t>(chunk.offset);
        out[chunk.stream].chunks.emplace_back(begin, begin + chunk.size);
    }
    return out;
}

void compare(const std::vector<StreamBytes>& wanted, const fs::path& result, std::size_t video,
             Counts& counts) {
    ++counts.cuts;
    counts.whole += wanted[video].chunks.size();
    TestBytes bytes = bytesOfFile(result);
    MemoryStorage file(bytes);
    const std::vector<ChunkFact> chunks = bytes.empty() ? std::vector<ChunkFact>() : indexedChunks(file);
    if (chunks.empty()) {
        ++counts.nothing;
        counts.lost += wanted[video].chunks.size();
        return;
    }
    const std::vector<StreamBytes> got = streamsOf(bytes, chunks, wanted.size());
    std::size_t same = 0;
    const auto& a = wanted[video].chunks;
    const auto& b = got[video].chunks;
    while (same < std::min(a.size(), b.size()) && a[same] == b[same]) {
        ++same;
    }
    counts.lost += a.size() - same;
    counts.damaged += b.size() - same;
    const bool pictures = a == b;
    bool exact = pictures;
    for (std::size_t s = 0; s < wanted.size(); ++s) {
        exact = exact && (s == video || wanted[s].all() == got[s].all());
    }
    counts.pictures += pictures ? 1U : 0U;
    counts.exact += exact ? 1U : 0U;
}

struct Clip {
    TestBytes bytes;
    std::vector<ChunkFact> truth;
    std::size_t streams = 0;
    std::size_t video = 0;
    std::uint64_t firstWhole = 0;  // size at which the first frame is whole
};

std::vector<Clip> loadClips(const std::vector<std::string>& paths) {
    constexpr std::uintmax_t kMostBytes = 4'000'000;  // the others would copy for hours
    std::vector<Clip> out;
    for (const std::string& path : paths) {
        if (fs::file_size(path) > kMostBytes) {
            continue;
        }
        Clip clip;
        clip.bytes = bytesOfFile(path);
        MemoryStorage file(clip.bytes);
        clip.truth = indexedChunks(file);
        const ClipScan scan = scanClip(file);
        clip.streams = scan.headers.streams.size();
        while (clip.video < clip.streams &&
               scan.headers.streams[clip.video].kind != ClipStream::Kind::kVideo) {
            ++clip.video;
        }
        const auto first =
            std::find_if(clip.truth.begin(), clip.truth.end(),
                         [&clip](const ChunkFact& chunk) { return chunk.stream == clip.video; });
        if (first == clip.truth.end()) {
            continue;
        }
        clip.firstWhole = first->offset + first->size;
        out.push_back(std::move(clip));
    }
    return out;
}

int measureTools(std::uint64_t first, std::uint64_t last, const fs::path& folder,
                 const std::vector<std::string>& paths) {
    std::vector<Clip> clips = loadClips(paths);
    fs::create_directories(folder);
    const fs::path cutPath = folder / "cut.avi";
    const fs::path resultPath = folder / "result.avi";
    const std::string in = "'" + cutPath.string() + "'";
    const std::string to = "'" + resultPath.string() + "'";
    const std::map<std::string, std::string> programs = {
        {"rescue", "'" ORVANTIS_BUILT_TOOL "' rescue " + in + " --out " + to},
        {"ffmpeg", "ffmpeg -nostdin -v quiet -y -i " + in + " -map 0 -c copy " + to},
        {"mencoder", "mencoder -really-quiet -forceidx " + in + " -oac copy -ovc copy -o " + to},
    };
    std::map<std::string, Counts> counts;
    std::uint64_t changed = 0;
    for (std::uint64_t i = first; i < last; ++i) {
        std::mt19937_64 numbers(i);
        Clip& clip = clips[numbers() % clips.size()];
        const std::uint64_t size = clip.firstWhole + numbers() % (clip.bytes.size() - clip.firstWhole + 1);
        const TestBytes cut(clip.bytes.begin(), clip.bytes.begin() + static_cast<std::ptrdiff_t>(size));
        std::ofstream(cutPath, std::ios::binary)
            .write(reinterpret_cast<const char*>(cut.data()), static_cast<std::streamsize>(size));
        const auto wanted = streamsOf(clip.bytes, wholeBefore(clip.truth, size), clip.streams);
        for (const auto& [name, command] : programs) {
            fs::remove(resultPath);
            (void)std::system(("timeout 60 " + command + " > /dev/null 2>&1 < /dev/null").c_str());
            compare(wanted, resultPath, clip.video, counts[name]);
            changed += name == "rescue" && bytesOfFile(cutPath) != cut ? 1U : 0U;
        }
    }
    for (const auto& [name, c] : counts) {
        std::printf("tool %s %llu %llu %llu %llu %llu %llu %llu %llu\n", name.c_str(),
                    static_cast<unsigned long long>(c.cuts), static_cast<unsigned long long>(c.exact),
                    static_cast<unsigned long long>(c.pictures), static_cast<unsigned long long>(c.nothing),
                    static_cast<unsigned long long>(c.whole), static_cast<unsigned long long>(c.lost),
                    static_cast<unsigned long long>(c.damaged),
                    static_cast<unsigned long long>(name == "rescue" ? changed : 0));
    }
    return 0;
}

}  // namespace
}  // namespace simhost::tool

int main(int argc, char** argv) {
    const std::vector<std::string> words(argv + 1, argv + argc);
    if (words.size() > 2 && words[0] == "scan") {
        return simhost::tool::measureScan(std::stoull(words[1]), {words.begin() + 2, words.end()});
    }
    if (words.size() > 4 && words[0] == "tools") {
        return simhost::tool::measureTools(std::stoull(words[1]), std::stoull(words[2]), words[3],
                                           {words.begin() + 4, words.end()});
    }
    std::fprintf(stderr, "usage: rescue_measure scan CUTS CLIP... | tools FIRST LAST FOLDER CLIP...\n");
    return 2;
}
