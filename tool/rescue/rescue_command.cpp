// rescue: finds what is whole in a damaged AVI file, and writes it as a new file or mends the file where it
// lies.
#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstdio>
#include <memory>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>

#include "tool/commands.h"
#include "tool/rescue/clip_scan.h"
#include "tool/rescue/index_check.h"
#include "tool/rescue/mending.h"
#include "tool/rescue/new_clip.h"
#include "tool/rescue/rescue_words.h"
#include "tool/rescue/storage.h"
#include "tool/rescue/undo_file.h"
#include "tool/shared/base/file_facts.h"
#include "tool/shared/base/interruption.h"
#include "tool/shared/base/json_text.h"
#include "tool/shared/base/number_text.h"
#include "tool/shared/base/output_file.h"
#include "tool/shared/base/progress.h"
#include "tool/shared/base/temporary_path.h"
#include "tool/shared/base/tool_error.h"
#include "tool/shared/base/tool_platform.h"
#include "tool/shared/run/clip_errors.h"
#include "tool/shared/run/hosted_run.h"

namespace simhost::tool {
namespace {

using RescueJson = nlohmann::ordered_json;

struct RescueOptions {
    std::string file;
    std::string output;
    bool check = false;
    bool inPlace = false;
    bool undo = false;
};

// Progress in mebibytes, told by places in a file.
class PlaceProgress {
 public:
    PlaceProgress(bool enabled, const char* what, std::uint64_t bytes)
        : m_progress(enabled, what, bytes >> kUnitBits) {}
    void comeTo(std::uint64_t place) {
        const std::uint64_t now = std::max(place >> kUnitBits, m_done);
        m_progress.advance(now - m_done);
        m_done = now;
    }

 private:
    static constexpr int kUnitBits = 20;

    Progress m_progress;
    std::uint64_t m_done = 0;
};

struct Found {
    ClipScan scan;
    IndexCheck check;
};

Found search(Storage& clip, const RescueOptions& options, bool progress) {
    Found out;
    {
        PlaceProgress bar(progress, "search", clip.size());
        out.scan = scanClip(clip, [&bar](std::uint64_t place) { bar.comeTo(place); });
    }
    if (!out.scan.headers.fault.empty()) {
        throw ToolError(kFailed, "'" + options.file + "' cannot be rescued: " + out.scan.headers.fault,
                        "without its headers nobody knows what its data are", "no-headers");
    }
    throwIfInterrupted();
    out.check = checkIndexes(clip, out.scan);
    return out;
}

// What a run did beyond looking.
struct Deed {
    std::string text;
    RescueJson json;
};

void tell(const GlobalOptions& global, const RescueOptions& options, const Found& found, const Deed& deed) {
    if (global.json) {
        RescueJson out;
        out["file"] = options.file;
        out.update(foundJson(found.scan, found.check));
        if (deed.json.is_object()) {
            out.update(deed.json);
        }
        (void)std::fputs(jsonText(out).c_str(), stdout);
        return;
    }
    (void)std::printf("%s\n%s%s\n", options.file.c_str(), foundText(found.scan, found.check).c_str(),
                      deed.text.c_str());
}

int runCheck(const GlobalOptions& global, const RescueOptions& options, bool progress) {
    const auto clip = systemDisk().openToRead(options.file);
    const Found found = search(*clip, options, progress);
    Deed deed{verdictText(found.check), {}};
    if (found.check.gains()) {
        deed.text += "\n  -> importer_host rescue \"" + options.file + "\" --out NEW.avi";
    }
    tell(global, options, found, deed);
    return found.check.gains() ? kFailed : kSuccess;
}

void requireChunks(const Found& found, const RescueOptions& options) {
    if (found.scan.chunks.empty()) {
        throw ToolError(kFailed, "'" + options.file + "' holds no whole chunk", "", "nothing-found");
    }
}

// Ends with the new file under its name. Chunks that the disk cannot read are left out, and all is written
// anew: their places in the file would be left over.
void writeOutput(Storage& clip, Found& found, const RescueOptions& options, bool progress) {
    constexpr int kMostAttempts = 5;  // a disk that goes on failing is none to work on
    const FileFacts facts = fileFacts(options.output);
    const auto folder = pathFromUtf8(facts.path).parent_path();
    for (int attempt = 1;; ++attempt) {
        const TemporaryPath part(pathToUtf8(folder / temporaryName(".part")));
        const NewClipLayout layout = layOutNewClip(found.scan);
        try {
            {
                const auto target = systemDisk().create(part.path());
                PlaceProgress bar(progress, "write", layout.size);
                writeNewClip(clip, found.scan, layout, *target,
                             [&bar](std::uint64_t place) { bar.comeTo(place); });
                throwIfInterrupted();
                target->flush();
            }
            systemDisk().publish(part.path(), options.output);
            return;
        } catch (const UnreadableChunks& bad) {
            if (attempt == kMostAttempts) {
                throw ToolError(kFailed, bad.what(),
                                "copy what can be read of the disk first, then rescue the copy");
            }
            for (const std::size_t number : bad.numbers()) {
                const FoundChunk& chunk = found.scan.chunks[number];
                found.scan.addDamage({{chunk.offset() - kChunkHeaderSize, chunk.end()},
                                      Stretch::Kind::kUnreadable,
                                      chunk.stream(),
                                      chunk.code()});
            }
            found.scan.chunks.remove(bad.numbers());
            found.check = checkIndexes(clip, found.scan);
        }
    }
}

int runOut(const GlobalOptions& global, const RescueOptions& options, bool progress) {
    requireFreeClip(options.output);
    const auto clip = systemDisk().openToRead(options.file);
    Found found = search(*clip, options, progress);
    requireChunks(found, options);
    writeOutput(*clip, found, options, progress);
    const std::uint64_t size = systemDisk().openToRead(options.output)->size();
    tell(global, options, found,
         {"written: '" + options.output + "', " + counted(found.scan.chunks.size(), "chunk", "chunks") +
              ", " + bytesText(static_cast<double>(size)),
          {{"written", {{"file", options.output}, {"size", size}, {"chunks", found.scan.chunks.size()}}}}});
    return kSuccess;
}

int runInPlace(const GlobalOptions& global, const RescueOptions& options, bool progress) {
    const std::string undo = undoPathOf(options.file);
    if (systemDisk().exists(undo)) {
        throw ToolError(
            kNoOutput, "'" + undo + "' is there already: the clip has been changed before",
            "bring the old bytes back with \"importer_host rescue --undo FILE\", or remove that file",
            "undo-exists");
    }
    const auto clip = systemDisk().openToChange(options.file);
    const Found found = search(*clip, options, progress);
    requireChunks(found, options);
    if (!found.check.gains()) {
        tell(global, options, found, {verdictText(found.check), {{"changed", false}}});
        return kSuccess;
    }
    const Mending mending = planMending(*clip, found.scan, found.check);
    throwIfInterrupted();
    const auto folder = pathFromUtf8(undo).parent_path();
    const TemporaryPath part(pathToUtf8(folder / temporaryName(".part")));
    applyMending(systemDisk(), *clip, undo, part.path(), mending);
    tell(global, options, found,
         {"mended: the index names " + counted(found.scan.chunks.size(), "chunk", "chunks") +
              " now\nThe old bytes are in '" + undo +
              "': \"importer_host rescue --undo FILE\" brings them back; remove it when the clip is well.",
          {{"changed", true},
           {"undo", undo},
           {"chunks", found.scan.chunks.size()},
           {"newSize", mending.newSize}}});
    return kSuccess;
}

int runUndo(const GlobalOptions& global, const RescueOptions& options) {
    undoMending(systemDisk(), options.file, undoPathOf(options.file));
    if (global.json) {
        (void)std::fputs(jsonText({{"file", options.file}, {"undone", true}}).c_str(), stdout);
    } else {
        (void)std::printf("undone: '%s' is as it was before\n", options.file.c_str());
    }
    return kSuccess;
}

int runRescue(const GlobalOptions& global, const RescueOptions& options) {
    requireClipFile(options.file);
    const bool progress = global.progress || stderrIsTerminal();
    if (options.undo) {
        return runUndo(global, options);
    }
    if (options.inPlace) {
        return runInPlace(global, options, progress);
    }
    return options.output.empty() ? runCheck(global, options, progress) : runOut(global, options, progress);
}

}  // namespace

Command addRescueCommand(CLI::App& app) {
    auto options = std::make_shared<RescueOptions>();
    CLI::App* parser = app.add_subcommand(
        "rescue", "Find what is whole in a clip that has no index or is damaged, and make it playable");
    parser->add_option("FILE", options->file, "An AVI file")->required();
    auto* check = parser->add_flag(
        "--check", options->check,
        "Write nothing, say what is there (the default); exit code 1 when a rescue would gain");
    auto* output = parser->add_option(
        "--out", options->output, "Write all that is whole into this new OpenDML file, which must not exist");
    auto* inPlace = parser->add_flag(
        "--in-place", options->inPlace,
        "Append indexes to the file and mend its headers, after FILE.undo holds all old bytes");
    auto* undo =
        parser->add_flag("--undo", options->undo, "Bring back the bytes that --in-place has changed");
    for (CLI::Option* one : {check, output, inPlace, undo}) {
        for (CLI::Option* other : {check, output, inPlace, undo}) {
            if (one != other) {
                one->excludes(other);
            }
        }
    }
    return {parser,
            [options](const GlobalOptions& global) { return runRescue(global, *options); },
            {.plugin = false, .profile = false, .log = false}};
}

}  // namespace simhost::tool
