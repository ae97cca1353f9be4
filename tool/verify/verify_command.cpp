// verify: decodes all of a clip through the plug-in and hashes it, writes the hashes or compares them with a
// list, and tells what is repeated, missing, undecodable or different.
#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <map>
#include <memory>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "tool/commands.h"
#include "tool/shared/base/failure.h"
#include "tool/shared/base/file_facts.h"
#include "tool/shared/base/interruption.h"
#include "tool/shared/base/json_text.h"
#include "tool/shared/base/number_text.h"
#include "tool/shared/base/output_file.h"
#include "tool/shared/base/tool_error.h"
#include "tool/shared/run/clip_errors.h"
#include "tool/shared/run/hosted_run.h"
#include "tool/verify/hash_run.h"
#include "tool/verify/verify_state.h"
#include "tool/verify/verify_text.h"

namespace simhost::tool {
namespace {

using Json = nlohmann::ordered_json;

struct VerifyOptions {
    std::vector<std::string> files;
    std::string list;  // file or folder
    bool beside = false;
    bool write = false;
    bool compare = false;
    std::uint32_t jobs = 0;
    std::string state;
};

constexpr const char* kListSuffix = ".framemd5";

// The list of each clip; empty without lists.
std::map<std::string, std::string> listPaths(const VerifyOptions& options,
                                             const std::vector<std::string>& clips) {
    std::map<std::string, std::string> out;
    std::map<std::string, std::string> taken;
    const bool folder =
        !options.list.empty() && (fileFacts(options.list).kind == FileKind::kFolder ||
                                  options.list.find_last_of("/\\") + 1 == options.list.size());
    if (!options.list.empty() && !folder && clips.size() > 1) {
        throw ToolError(kUsage, "'" + options.list + "' cannot take the hashes of several clips",
                        "name a folder with --framemd5, or use --beside");
    }
    for (const std::string& clip : clips) {
        const std::string name = pathToUtf8(pathFromUtf8(clip).filename()) + kListSuffix;
        const std::string path = options.beside ? clip + kListSuffix
                                 : folder       ? pathToUtf8(pathFromUtf8(options.list) / pathFromUtf8(name))
                                                : options.list;
        if (path.empty()) {
            continue;
        }
        const auto [other, fresh] = taken.emplace(path, clip);
        if (!fresh && other->second != clip) {
            throw ToolError(kUsage, "'" + other->second + "' and '" + clip + "' would share '" + path + "'",
                            "verify them apart, or use --beside");
        }
        out[clip] = path;
    }
    return out;
}

std::string readText(const std::string& path) {
    std::ifstream stream(pathFromUtf8(path), std::ios::binary);
    std::string text{std::istreambuf_iterator<char>(stream), {}};
    if (!stream.is_open() || stream.bad()) {
        throw ToolError(kFailed, "'" + path + "' cannot be read: " + whyUnreadable(path), "",
                        "unreadable-list");
    }
    return text;
}

HashUse useOf(const std::string& list, const VerifyOptions& options) {
    if (list.empty()) {
        return HashUse::kNone;
    }
    const bool there = fileFacts(list).kind != FileKind::kMissing;
    if (options.compare && !there) {
        throw ToolError(kFailed, "there is no list '" + list + "' to compare with",
                        "check the spelling, or write one with --write", "missing-list");
    }
    return options.write || !there ? HashUse::kWritten : HashUse::kCompared;
}

VerifyAnswer verifyClip(const HostedRun& hosted, const std::string& file, const std::string& list,
                        const VerifyOptions& options, VerifyState& state) {
    VerifyAnswer out;
    out.file = file;
    out.list = list;
    requireClipFile(file);
    out.use = useOf(list, options);
    std::optional<FrameMd5File> former;
    if (out.use == HashUse::kCompared) {
        former = parseFrameMd5(readText(list), list);
        protectInput(list);
    } else if (out.use == HashUse::kWritten) {
        checkOutput(list);
    }
    out.clip = describeClip(hosted, file);
    std::vector<std::int32_t> tracks;
    if (former) {
        tracks = matchStreams(*former, list, out.clip);
        takeBlocksOf(*former, tracks, out.clip);
    }
    out.resumed = state.resume(file, out.clip);
    try {
        hashClip(hosted, file, options.jobs, out.clip, [&](HashDone done) { state.keep(out.clip, done); });
    } catch (const ToolError&) {
        state.flush();
        throw;
    }
    state.flush();
    out.findings = judge(out.clip, former ? &*former : nullptr, tracks);
    if (out.use == HashUse::kWritten) {
        writeText(list, frameMd5Text(toFrameMd5(out.clip), std::string("importer_host ") + ORVANTIS_VERSION));
    }
    return out;
}

int runVerify(const GlobalOptions& global, VerifyOptions options) {
    const std::vector<std::string> files = clipFiles(options.files);
    for (const std::string& file : files) {
        protectInput(file);
    }
    if (files.size() == 1) {
        requireClipFile(files.front());
    }
    if ((options.write || options.compare) && options.list.empty() && !options.beside) {
        throw ToolError(kUsage, "--write and --compare need a list",
                        "name one with --framemd5, or use --beside");
    }
    if (options.jobs == 0) {
        constexpr unsigned kMostJobs = 8;
        options.jobs = std::clamp(std::thread::hardware_concurrency(), 1U, kMostJobs);
    }
    const auto lists = listPaths(options, files);
    if (!options.list.empty() && options.list.find_last_of("/\\") + 1 == options.list.size()) {
        makeFolder(options.list);
    }
    VerifyState state(options.state);
    const auto verifyAll = [&](HostedRun& hosted) {
        int result = kSuccess;
        std::size_t bad = 0;
        Json told = Json::array();
        for (const std::string& file : files) {
            throwIfInterrupted();
            try {
                const auto list = lists.find(file);
                const VerifyAnswer answer =
                    verifyClip(hosted, file, list == lists.end() ? "" : list->second, options, state);
                if (!answer.isWhole()) {
                    result = result == kSuccess ? kFailed : result;
                    ++bad;
                }
                if (global.json) {
                    told.push_back(verifyJson(answer));
                } else {
                    (void)std::fputs(verifyText(answer).c_str(), stdout);
                    (void)std::fflush(stdout);
                }
            } catch (const ToolError& error) {
                if (error.code() == kInterrupted || files.size() == 1) {
                    throw;
                }
                ++bad;
                result = tellFailure(error, false);
                told.push_back({{"file", file}, {"whole", false}, {"error", failureJson(error)}});
            }
        }
        if (global.json) {
            const Json out = {{"files", told}};
            writeAnswer("", jsonText(out));
        } else if (files.size() > 1) {
            std::printf("%zu of %s are whole\n", files.size() - bad,
                        counted(files.size(), "file", "files").c_str());
        }
        state.remove();
        return result;
    };
    // A trace of every call of hours would fill the memory.
    HostOptions watching;
    watching.keepTrace = false;
    return runHosted(global, verifyAll, watching);
}

}  // namespace

Command addVerifyCommand(CLI::App& app) {
    auto options = std::make_shared<VerifyOptions>();
    CLI::App* parser = app.add_subcommand(
        "verify", "Decode every frame and sample, hash them, and compare with hashes made earlier");
    parser->add_option("FILE", options->files, "AVI files, or folders of them")->required();
    CLI::Option* list = parser->add_option("--framemd5", options->list,
                                           "List of hashes as \"ffmpeg -f framemd5\" writes it: compared "
                                           "with if it exists, else written; for several "
                                           "clips a folder of lists CLIP.framemd5");
    parser->add_flag("--beside", options->beside, "The list of each clip lies beside it, as CLIP.framemd5")
        ->excludes(list);
    CLI::Option* write =
        parser->add_flag("--write", options->write, "Write the list, also in the place of one that exists");
    parser->add_flag("--compare", options->compare, "Compare; a list that does not exist is a failure")
        ->excludes(write);
    parser
        ->add_option("--jobs", options->jobs, "How many threads decode (default: one a processor, at most 8)")
        ->check(CLI::Range(1, 64));
    parser->add_option(
        "--resume", options->state,
        "File for what is done: a run that was ended goes on from it; removed by the end of the run");
    return {parser, [options](const GlobalOptions& global) { return runVerify(global, *options); }};
}

}  // namespace simhost::tool
