#include "tool/rescue/rescue_run.h"

#include <algorithm>
#include <cstdio>
#include <nlohmann/json.hpp>

#include "tool/rescue/clip_scan.h"
#include "tool/rescue/index_check.h"
#include "tool/rescue/mending.h"
#include "tool/rescue/new_clip.h"
#include "tool/rescue/rescue_words.h"
#include "tool/rescue/undo_file.h"
#include "tool/shared/base/file_facts.h"
#include "tool/shared/base/interruption.h"
#include "tool/shared/base/json_text.h"
#include "tool/shared/base/number_text.h"
#include "tool/shared/base/output_file.h"
#include "tool/shared/base/progress.h"
#include "tool/shared/base/temporary_path.h"
#include "tool/shared/base/tool_error.h"

namespace simhost::tool {
namespace {

using RescueJson = nlohmann::ordered_json;

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

Found search(Storage& clip, const RescueOptions& options) {
    Found out;
    {
        PlaceProgress bar(options.progress, "search", clip.size());
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

Mending plan(Storage& clip, const Found& found, const RescueOptions& options) {
    const std::uint64_t size = clip.size();
    PlaceProgress bar(options.progress, "check", size);
    return planMending(clip, found.scan, found.check,
                       [&bar, size](std::uint64_t place) { bar.comeTo(std::min(place, size)); });
}

// What a run did beyond looking.
struct Deed {
    std::string text;
    RescueJson json;
};

void tell(const RescueOptions& options, const Found& found, const Deed& deed) {
    if (options.json) {
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

int runCheck(Disk& disk, const RescueOptions& options) {
    const auto clip = disk.openToRead(options.file);
    const Found found = search(*clip, options);
    Deed deed{verdictText(found.check), {}};
    if (found.check.gains()) {
        deed.text += "\n  -> importer_host rescue \"" + options.file + "\" --out NEW.avi";
    }
    tell(options, found, deed);
    return found.check.gains() ? kFailed : kSuccess;
}

void requireChunks(const Found& found, const RescueOptions& options) {
    if (found.scan.chunks.empty()) {
        throw ToolError(kFailed, "'" + options.file + "' holds no whole chunk", "", "nothing-found");
    }
}

// A file has another name until it is whole; its user knows the one that it will have.
template <typename Step>
void inTheNameOf(const std::string& name, const std::string& part, Step&& step) {
    try {
        step();
    } catch (const ToolError& error) {
        std::string text = error.what();
        const std::size_t at = text.find(part);
        if (at == std::string::npos) {
            throw;
        }
        throw ToolError(error.code(), text.replace(at, part.size(), name), error.advice(), error.kind());
    }
}

// Ends with the new file under its name. Chunks that the disk cannot read are left out, and all is written
// anew: their places in the file would be left over.
void writeOutput(Disk& disk, Storage& clip, Found& found, const RescueOptions& options) {
    constexpr int kMostAttempts = 5;  // a disk that goes on failing is none to work on
    const FileFacts facts = fileFacts(options.output);
    const auto folder = pathFromUtf8(facts.path).parent_path();
    for (int attempt = 1;; ++attempt) {
        const TemporaryPath part(pathToUtf8(folder / temporaryName(".part")));
        const NewClipLayout layout = layOutNewClip(found.scan);
        try {
            inTheNameOf(options.output, part.path(), [&] {
                const auto target = disk.create(part.path());
                PlaceProgress bar(options.progress, "write", layout.size);
                writeNewClip(clip, found.scan, layout, *target,
                             [&bar](std::uint64_t place) { bar.comeTo(place); });
                throwIfInterrupted();
                target->flush();
            });
            disk.publish(part.path(), options.output);
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

int runOut(Disk& disk, const RescueOptions& options) {
    requireFreeClip(options.output);
    const auto clip = disk.openToRead(options.file);
    Found found = search(*clip, options);
    requireChunks(found, options);
    writeOutput(disk, *clip, found, options);
    const std::uint64_t size = disk.openToRead(options.output)->size();
    tell(options, found,
         {"written: '" + options.output + "', " + counted(found.scan.chunks.size(), "chunk", "chunks") +
              ", " + bytesText(static_cast<double>(size)),
          {{"written", {{"file", options.output}, {"size", size}, {"chunks", found.scan.chunks.size()}}}}});
    return kSuccess;
}

int runInPlace(Disk& disk, const RescueOptions& options) {
    const std::string undo = undoPathOf(options.file);
    if (disk.exists(undo)) {
        throw ToolError(
            kNoOutput, "'" + undo + "' is there already: the clip has been changed before",
            "bring the old bytes back with \"importer_host rescue --undo FILE\", or remove that file",
            "undo-exists");
    }
    const auto clip = disk.openToChange(options.file);
    const Found found = search(*clip, options);
    requireChunks(found, options);
    if (!found.check.gains()) {
        tell(options, found, {verdictText(found.check), {{"changed", false}}});
        return kSuccess;
    }
    const Mending mending = plan(*clip, found, options);
    throwIfInterrupted();
    const auto folder = pathFromUtf8(undo).parent_path();
    const TemporaryPath part(pathToUtf8(folder / temporaryName(".part")));
    {
        const EndHeldBack whole;
        throwIfInterrupted();
        inTheNameOf(undo, part.path(), [&] { applyMending(disk, *clip, undo, part.path(), mending); });
    }
    tell(options, found,
         {"mended: the index names " + counted(found.scan.chunks.size(), "chunk", "chunks") +
              " now\nThe old bytes are in '" + undo +
              "': \"importer_host rescue --undo FILE\" brings them back; remove it when the clip is well.",
          {{"changed", true},
           {"undo", undo},
           {"chunks", found.scan.chunks.size()},
           {"newSize", mending.newSize}}});
    return kSuccess;
}

int runUndo(Disk& disk, const RescueOptions& options) {
    {
        const EndHeldBack whole;
        throwIfInterrupted();
        undoMending(disk, options.file, undoPathOf(options.file));
    }
    if (options.json) {
        (void)std::fputs(jsonText({{"file", options.file}, {"undone", true}}).c_str(), stdout);
    } else {
        (void)std::printf("undone: '%s' is as it was before\n", options.file.c_str());
    }
    return kSuccess;
}

}  // namespace

int runRescue(Disk& disk, const RescueOptions& options) {
    if (options.undo) {
        return runUndo(disk, options);
    }
    if (options.inPlace) {
        return runInPlace(disk, options);
    }
    return options.output.empty() ? runCheck(disk, options) : runOut(disk, options);
}

}  // namespace simhost::tool
