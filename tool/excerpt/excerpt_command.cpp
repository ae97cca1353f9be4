// excerpt: a file that behaves as a clip does and holds nothing of its pictures and its sound.
#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstdio>
#include <memory>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "fileio/win_file.h"
#include "tool/commands.h"
#include "tool/excerpt/excerpt_check.h"
#include "tool/excerpt/excerpt_file.h"
#include "tool/excerpt/sparse_platform.h"
#include "tool/excerpt/structure_map.h"
#include "tool/shared/base/json_text.h"
#include "tool/shared/base/number_text.h"
#include "tool/shared/base/output_file.h"
#include "tool/shared/base/progress.h"
#include "tool/shared/base/tool_error.h"
#include "tool/shared/base/tool_platform.h"
#include "tool/shared/run/clip_errors.h"
#include "tool/shared/run/hosted_run.h"

namespace simhost::tool {
namespace {

using Json = nlohmann::ordered_json;

struct ExcerptOptions {
    std::string file;
    std::string out;
};

void copy(fileio::File& file, const FileRange& range, ExcerptFile& out, std::vector<std::uint8_t>& buffer) {
    for (std::uint64_t at = range.begin; at < range.end;) {
        const std::uint64_t count = std::min<std::uint64_t>(buffer.size(), range.end - at);
        if (!file.seek(static_cast<std::int64_t>(at)) || file.read(buffer.data(), count) != count) {
            throw ToolError(kFailed, "the file cannot be read at " + std::to_string(at),
                            "look whether the disk is sound", "unreadable-file");
        }
        out.write(at, {buffer.data(), static_cast<std::size_t>(count)});
        at += count;
    }
}

int runExcerpt(const GlobalOptions& global, const ExcerptOptions& options) {
    requireClipFile(options.file);
    requireFreeName(options.out);
    fileio::WinFile file;
    if (!file.open(options.file.c_str(), fileio::kOpenRead | fileio::kOpenShareRead)) {
        throw ToolError(kFailed, "'" + options.file + "' cannot be read",
                        "check whether another program holds it open", "unreadable-file");
    }
    const auto size = static_cast<std::uint64_t>(std::max<std::int64_t>(file.size(), 0));
    const bool shown = global.progress || stderrIsTerminal();
    std::vector<FileRange> structure;
    {
        Progress progress(shown, "excerpt, bytes", size);
        std::uint64_t done = 0;
        structure = structureOf(file, [&](std::uint64_t position) {
            position = std::min(position, size);
            progress.advance(position > done ? position - done : 0);
            done = std::max(done, position);
        });
    }
    ExcerptFile out(options.out, size);
    std::uint64_t kept = 0;
    {
        Progress progress(shown, "writing", structure.size());
        std::vector<std::uint8_t> buffer(std::size_t{1} << 16);
        for (const FileRange& range : structure) {
            copy(file, range, out, buffer);
            kept += range.end - range.begin;
            progress.advance();
        }
    }
    out.close();
    const auto before = readAviFacts(options.file);
    const auto after = readAviFacts(out.partPath());
    std::vector<std::string> differences;
    if (before && after) {
        differences = structureDifferences(*before, *after);
    } else {
        differences.emplace_back("whether it can be read");
    }
    out.finish();
    const std::uint64_t onDisk = bytesOnDisk(options.out);
    if (global.json) {
        const Json told = {
            {"file", options.file},      {"excerpt", options.out}, {"bytes", size},
            {"bytesKept", kept},         {"bytesOnDisk", onDisk},  {"same", differences.empty()},
            {"differences", differences}};
        writeAnswer("", jsonText(told));
    } else {
        std::printf("%s\n  %s of %s are kept, pictures and sound are noughts; it takes %s of the disk\n",
                    options.out.c_str(), bytesText(static_cast<double>(kept)).c_str(),
                    bytesText(static_cast<double>(size)).c_str(),
                    bytesText(static_cast<double>(onDisk)).c_str());
        for (const std::string& difference : differences) {
            std::printf("  it differs from the clip: %s\n", difference.c_str());
        }
    }
    return differences.empty() ? kSuccess : kFailed;
}

}  // namespace

Command addExcerptCommand(CLI::App& app) {
    auto options = std::make_shared<ExcerptOptions>();
    CLI::App* parser = app.add_subcommand(
        "excerpt",
        "Write a file that behaves as a clip does, without its pictures and sound, to send to others");
    parser->add_option("FILE", options->file, "AVI file")->required();
    parser->add_option("--out", options->out, "The new file; nothing is replaced")->required();
    return {parser,
            [options](const GlobalOptions& global) { return runExcerpt(global, *options); },
            {.plugin = false, .profile = false, .log = false}};
}

}  // namespace simhost::tool
