// async: plays a clip through the asynchronous importer, compares each frame with the synchronous one, and
// measures both: how fast each is, and how much of the reading and decoding is hidden behind the host's own
// work.
#include <CLI/CLI.hpp>
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <memory>
#include <nlohmann/json.hpp>
#include <string>
#include <unordered_map>
#include <vector>

#include "simhost/async_clip.h"
#include "simhost/session.h"
#include "tool/async/async_timing.h"
#include "tool/commands.h"
#include "tool/shared/base/json_text.h"
#include "tool/shared/base/number_text.h"
#include "tool/shared/base/output_file.h"
#include "tool/shared/base/process_usage.h"
#include "tool/shared/base/progress.h"
#include "tool/shared/base/tool_error.h"
#include "tool/shared/media/frame_range.h"
#include "tool/shared/media/media_facts.h"
#include "tool/shared/media/pixel_format_choice.h"
#include "tool/shared/media/play_order.h"
#include "tool/shared/run/clip_errors.h"
#include "tool/shared/run/hosted_run.h"
#include "tool/shared/run/result_names.h"

namespace simhost::tool {
namespace {

struct AsyncOptions {
    std::string file;
    std::uint32_t ahead = 4;
    std::string pattern = "sequential";
    std::string range = "all";
    std::string format;
    std::uint32_t seed = 1;
    std::uint32_t workMicros = 0;
    std::uint32_t decodeMicros = 0;
    std::string output;
};

using Clock = std::chrono::steady_clock;

double secondsSince(Clock::time_point start) {
    return std::chrono::duration<double>(Clock::now() - start).count();
}

// What a host does with a frame it has got: keeps its processor busy.
void spend(std::chrono::microseconds time) {
    const auto end = Clock::now() + time;
    while (Clock::now() < end) {
    }
}

struct Player {
    HostedRun& hosted;
    const Clip& clip;
    std::vector<std::uint32_t> order;
    host::imFrameFormat wanted[1];
    std::chrono::microseconds work;
    std::unordered_map<std::uint32_t, std::uint64_t> hashes;
    std::vector<std::uint32_t> differing;

    static std::uint64_t hashOf(const Frame& frame) {
        std::uint64_t hash = hashBytes(nullptr, 0);
        for (std::int32_t y = 0; y < frame.height(); ++y) {
            const auto row = frame.pictureRow(y);
            hash = hashBytes(row.data(), row.size(), hash);
        }
        return hash;
    }

    [[noreturn]] static void refused(const char* way, std::uint32_t index, std::int32_t result) {
        throw ToolError(kFailed, std::string(way) + " frame " + std::to_string(index) + ": result " +
                                     std::to_string(result));
    }

    void compare(std::uint32_t index, const Frame& frame) {
        const std::uint64_t hash = hashOf(frame);
        const auto [known, isNew] = hashes.try_emplace(index, hash);
        if (!isNew && known->second != hash) {
            differing.push_back(index);
        }
    }

    /// Reads the frames once without measuring, so that neither way of playing finds the file in the system's
    /// cache and the other does not.
    void warmUp() {
        for (const std::uint32_t index : order) {
            takeFrame(index);
        }
    }

    FrameAnswer takeFrame(std::uint32_t index) {
        FrameAnswer answer = clip.getSourceVideo(clip.frameTime(index), wanted);
        if (!answer.frame) {
            throw ToolError(kFailed,
                            "synchronous frame " + std::to_string(index) + ": " + resultText(answer.result));
        }
        return answer;
    }

    PlayTiming playSynchronously() {
        Progress progress(hosted.progress(), "synchronous ", order.size());
        PlayTiming out;
        out.frames = order.size();
        const auto start = Clock::now();
        for (const std::uint32_t index : order) {
            const auto asked = Clock::now();
            const FrameAnswer answer = takeFrame(index);
            out.waiting += secondsSince(asked);
            compare(index, *answer.frame);
            spend(work);
            progress.advance();
        }
        out.total = secondsSince(start);
        return out;
    }

    PlayTiming playAsynchronously(const AsyncClip& async, std::uint32_t ahead) {
        Progress progress(hosted.progress(), "asynchronous", order.size());
        PlayTiming out;
        out.frames = order.size();
        const auto start = Clock::now();
        std::size_t announced = 0;
        for (std::size_t at = 0; at < order.size(); ++at) {
            const auto asked = Clock::now();
            for (; announced < order.size() && announced <= at + ahead; ++announced) {
                const std::int32_t result = async.initiate(clip.frameTime(order[announced]), wanted);
                if (result != host::aiNoError) {
                    refused("announced", order[announced], result);
                }
            }
            const FrameAnswer answer = async.getFrame(clip.frameTime(order[at]), wanted);
            out.waiting += secondsSince(asked);
            if (!answer.frame) {
                refused("asynchronous", order[at], answer.result);
            }
            compare(order[at], *answer.frame);
            spend(work);
            progress.advance();
        }
        out.total = secondsSince(start);
        return out;
    }
};

void print(std::FILE* text, const char* way, const PlayTiming& timing) {
    (void)std::fprintf(text,
                       "%s %8.1f frames/s; a frame: host's work %6.2f ms, waiting for the plug-in %6.2f ms\n",
                       way, timing.perSecond(), timing.perFrame(timing.work()) * 1000.0,
                       timing.perFrame(timing.waiting) * 1000.0);
}

nlohmann::ordered_json toJson(const PlayTiming& timing) {
    return {{"framesPerSecond", timing.perSecond()},
            {"workSeconds", timing.work()},
            {"waitingSeconds", timing.waiting}};
}

std::vector<std::string> wantedFormats(const AsyncOptions& options) {
    return options.format.empty() ? std::vector<std::string>{} : std::vector{options.format};
}

nlohmann::ordered_json toJson(const AsyncOptions& options, const Player& player,
                              const PlayTiming& synchronous, const PlayTiming& asynchronous,
                              const Overlap& overlap) {
    return {{"file", options.file},
            {"frames", player.order.size()},
            {"ahead", options.ahead},
            {"differing", player.differing.size()},
            {"synchronous", toJson(synchronous)},
            {"asynchronous", toJson(asynchronous)},
            {"asynchronousIsSlower", asynchronousIsSlower(synchronous, asynchronous)},
            {"hidden", overlap.hidden},
            {"possible", overlap.possible}};
}

void printAll(std::FILE* text, const AsyncOptions& options, const Player& player,
              const PlayTiming& synchronous, const PlayTiming& asynchronous, const Overlap& overlap) {
    (void)std::fprintf(text, "%s, %s, %u ahead, %s%s\n",
                       counted(player.order.size(), "frame", "frames").c_str(), options.pattern.c_str(),
                       options.ahead, pixelFormatName(player.wanted[0].inPixelFormat),
                       parsePlayPattern(options.pattern) == PlayPattern::kRandom
                           ? (", seed " + std::to_string(options.seed)).c_str()
                           : "");
    print(text, "synchronous: ", synchronous);
    print(text, "asynchronous:", asynchronous);
    (void)std::fprintf(
        text,
        "overlap: of %.2f ms for reading and decoding a frame %.0f %% are hidden; the host's own work is "
        "long enough for %.0f %%\n",
        synchronous.perFrame(synchronous.waiting) * 1000.0, overlap.hidden * 100.0, overlap.possible * 100.0);
    (void)std::fputs(slowerText(synchronous, asynchronous).c_str(), text);
    if (player.differing.empty()) {
        (void)std::fprintf(text, "all frames are identical\n");
    } else {
        (void)std::fprintf(text, "%s, the first is %u\n",
                           counted(player.differing.size(), "frame differs", "frames differ").c_str(),
                           player.differing.front());
    }
}

int runAsync(const GlobalOptions& global, const AsyncOptions& options) {
    const auto range = parseFrameRange(options.range);
    const auto pattern = parsePlayPattern(options.pattern);
    if (!range) {
        throw ToolError(kUsage, "'" + options.range + "' is no range of frames: FIRST[:LAST[:STEP]] or all");
    }
    if (!pattern) {
        throw ToolError(kUsage, "'" + options.pattern + "' is no pattern",
                        "the patterns are sequential, scrub, reverse, random");
    }
    requireClipFile(options.file);
    checkOutput(options.output);
    if (options.decodeMicros > 0) {
        setProcessEnvironment("ORVANTIS_STANDIN_DELAY_US", std::to_string(options.decodeMicros));
    }
    // The host's own cost would be taken for the plug-in's.
    HostOptions light;
    light.poisonFrames = false;
    light.keepTrace = false;
    light.recycleFrames = true;
    const auto work = [&](HostedRun& hosted) -> int {
        Answer<host::imFileInfoRec8> info;
        const auto clip = hosted.open(options.file, 0, info);
        const std::uint32_t count = frameCount(info.record);
        const auto frames = framesOf(*range, count);
        if (frames.empty()) {
            throw ToolError(kFailed, "the clip has " + counted(count, "frame", "frames") +
                                         ", counted from 0; '" + options.range + "' asks for others");
        }
        if (const std::string note = rangeNote(*range, count); !note.empty()) {
            (void)std::fprintf(stderr, "importer_host: %s\n", note.c_str());
        }
        const std::uint32_t format =
            chosenFormats(wantedFormats(options), clip->pixelFormats().formats).front();
        Player player{hosted,
                      *clip,
                      playOrder(*pattern, frames, options.seed),
                      {{0, 0, format}},
                      std::chrono::microseconds(options.workMicros),
                      {},
                      {}};
        AsyncClip async = clip->createAsync();
        if (!async.isOpen()) {
            throw ToolError(kFailed, "the plug-in answered imCreateAsyncImporter with " +
                                         resultText(async.creation().result));
        }
        player.warmUp();
        const PlayTiming synchronous = player.playSynchronously();
        const PlayTiming asynchronous = player.playAsynchronously(async, options.ahead);
        (void)async.flush();
        (void)async.close();

        const Overlap overlap = overlapOf(synchronous, asynchronous);
        std::FILE* const text = global.json && options.output.empty() ? stderr : stdout;
        printAll(text, options, player, synchronous, asynchronous, overlap);
        if (global.json) {
            writeAnswer(options.output,
                        jsonText(toJson(options, player, synchronous, asynchronous, overlap)));
        }
        return player.differing.empty() ? kSuccess : kBrokenRule;
    };
    return runHosted(global, work, light);
}

}  // namespace

Command addAsyncCommand(CLI::App& app) {
    auto options = std::make_shared<AsyncOptions>();
    CLI::App* parser = app.add_subcommand(
        "async", "Play a clip through the asynchronous importer and compare it with the synchronous one");
    parser->add_option("FILE", options->file, "AVI file")->required();
    parser->add_option("--ahead", options->ahead, "Frames announced ahead of the one that is collected")
        ->capture_default_str()
        ->check(CLI::Range(0, 1000));
    parser->add_option("--pattern", options->pattern, "sequential, scrub, reverse or random")
        ->capture_default_str();
    parser->add_option("--range", options->range, "Frames: FIRST[:LAST[:STEP]] with LAST included, or all")
        ->capture_default_str();
    parser->add_option("--format", options->format, "Pixel format (default: the first offered)");
    parser->add_option("--seed", options->seed, "Seed of the random pattern")->capture_default_str();
    parser
        ->add_option("--work-us", options->workMicros,
                     "Microseconds that the host is busy with each frame it has got")
        ->capture_default_str()
        ->check(CLI::Range(0, 10'000'000));
    parser
        ->add_option(
            "--decode-us", options->decodeMicros,
            "Microseconds that the stand-in codec library takes for a frame at least; the maker's library "
            "does not know this")
        ->capture_default_str()
        ->check(CLI::Range(0, 10'000'000));
    parser->add_option("--out", options->output, "File for the JSON object (default: the standard output)");
    return {parser, [options](const GlobalOptions& global) { return runAsync(global, *options); }};
}

}  // namespace simhost::tool
