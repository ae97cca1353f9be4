// frames: delivers frames as PNG files, as raw rows, and on a contact sheet.
#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstdio>
#include <memory>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <vector>

#include "tool/commands.h"
#include "tool/shared/base/json_text.h"
#include "tool/shared/base/number_text.h"
#include "tool/shared/base/output_file.h"
#include "tool/shared/base/progress.h"
#include "tool/shared/base/tool_error.h"
#include "tool/shared/media/frame_range.h"
#include "tool/shared/media/media_facts.h"
#include "tool/shared/media/pixel_format_choice.h"
#include "tool/shared/pictures/contact_sheet.h"
#include "tool/shared/pictures/picture.h"
#include "tool/shared/pictures/png.h"
#include "tool/shared/run/clip_errors.h"
#include "tool/shared/run/hosted_run.h"
#include "tool/shared/run/result_names.h"

namespace simhost::tool {
namespace {

using Json = nlohmann::ordered_json;

constexpr std::int64_t kMostPngPixels = 100'000'000;

struct FramesOptions {
    std::string file;
    std::string range = "0";
    std::vector<std::string> formats;
    std::string folder;
    std::string sheet;
    bool raw = false;
    bool keepGoing = false;
    bool stop = false;  ///< also for a sheet

    bool goesOn() const noexcept { return keepGoing || (!sheet.empty() && !stop); }
};

struct LostFrame {
    std::uint32_t index = 0;
    std::uint32_t format = 0;
    std::int32_t result = 0;
};

class FrameWriter {
 public:
    FrameWriter(const FramesOptions& options, std::size_t columns, double framesPerSecond)
        : m_options(options),
          m_columns(columns),
          m_framesPerSecond(framesPerSecond),
          m_sheet(kCellWidth, pathToUtf8(pathFromUtf8(options.file).filename())) {
        m_stem = pathToUtf8(pathFromUtf8(options.file).stem());
    }

    /// `onSheet`: also there, if there is a sheet.
    void write(const Frame& frame, std::uint32_t index, bool onSheet) {
        onSheet = onSheet && !m_options.sheet.empty();
        char number[16];
        (void)std::snprintf(number, sizeof number, "%06u", index);
        const std::string name = shortFormatName(frame.pixelFormat());
        const std::string path = m_options.folder + "/" + m_stem + "_" + name + "_" + number;
        if (!m_options.folder.empty() && m_options.raw) {
            writeFile(path + ".raw", frame.picture());
            ++m_files;
        }
        const bool shown = canShow(frame.pixelFormat());
        const bool png = !m_options.folder.empty() && !m_options.raw;
        if (!shown && (png || onSheet)) {
            throw ToolError(kUsage, name + " can only be written with --raw, not shown");
        }
        if (!png && !onSheet) {
            return;
        }
        const std::int32_t step = m_sheet.step(frame.width(), frame.height());
        std::optional<Picture> whole;
        if (png) {
            whole = toPicture(frame);
            writeFile(path + ".png", encodePng(*whole));
            ++m_files;
        }
        if (onSheet) {
            m_sheet.add(whole && step == 1 ? *whole : toPicture(frame, step),
                        std::to_string(index) + "  " + time(index) + name);
            ++m_onSheet;
        }
    }

    /// A tile of the sheet for a frame that there is not.
    void writeLost(const LostFrame& lost, std::int32_t width, std::int32_t height) {
        if (m_options.sheet.empty()) {
            return;
        }
        Picture blank;
        blank.width = std::clamp(width, 1, kCellWidth);
        blank.height = static_cast<std::int32_t>(std::clamp<std::int64_t>(
            std::int64_t{height} * blank.width / std::max(width, 1), 1, 2 * kCellWidth));
        blank.samples.assign(
            static_cast<std::size_t>(blank.width) * static_cast<std::size_t>(blank.height) * 3, 0);
        m_sheet.add(
            blank, std::to_string(lost.index) + "  " + time(lost.index) + "lost: " + resultText(lost.result));
    }

    void finish() {
        if (!m_options.sheet.empty()) {
            writeFile(m_options.sheet, encodePng(m_sheet.render(m_columns)));
        }
    }

    /// When the sheet does not show all frames.
    void tellSpread(std::size_t shown, std::size_t all) {
        m_sheet.setTitle(pathToUtf8(pathFromUtf8(m_options.file).filename()) + ", " + std::to_string(shown) +
                         " of " + std::to_string(all) + " frames, evenly spread");
    }

    std::size_t files() const noexcept { return m_files; }
    std::size_t onSheet() const noexcept { return m_onSheet; }

 private:
    static constexpr std::int32_t kCellWidth = 240;

    std::string time(std::uint32_t index) const {
        return m_framesPerSecond > 0 ? timeText(index / m_framesPerSecond) + "  " : "";
    }

    const FramesOptions& m_options;
    std::size_t m_columns;
    double m_framesPerSecond;
    std::string m_stem;
    std::size_t m_files = 0;
    std::size_t m_onSheet = 0;
    ContactSheet m_sheet;
};

// What became of the frames that were asked for.
struct Delivery {
    std::size_t delivered = 0;
    std::size_t files = 0;
    std::size_t onSheet = 0;
    bool spread = false;  ///< the sheet shows some of them only
    std::vector<LostFrame> lost;
};

Json toJson(const FramesOptions& options, const Delivery& done, const std::vector<std::string>& notes) {
    Json out = {{"file", options.file},
                {"delivered", done.delivered},
                {"files", done.files},
                {"onSheet", done.onSheet}};
    out["folder"] = options.folder.empty() ? Json() : Json(options.folder);
    out["sheet"] = options.sheet.empty() ? Json() : Json(options.sheet);
    std::string note;
    for (const std::string& text : notes) {
        note += (note.empty() ? "" : "; ") + text;
    }
    out["note"] = note;
    out["lost"] = Json::array();
    for (const LostFrame& frame : done.lost) {
        out["lost"].push_back({{"frame", frame.index},
                               {"format", pixelFormatName(frame.format)},
                               {"result", frame.result},
                               {"resultName", resultText(frame.result)}});
    }
    return out;
}

void printCounts(const FramesOptions& options, const Delivery& done) {
    if (!options.sheet.empty()) {
        std::printf("%s on %s%s\n", counted(done.onSheet, "frame", "frames").c_str(), options.sheet.c_str(),
                    done.spread ? ", evenly spread over the range" : "");
    }
    if (!options.folder.empty()) {
        std::printf("%s in %s\n", counted(done.files, "file", "files").c_str(), options.folder.c_str());
    }
    if (!done.lost.empty()) {
        const LostFrame& first = done.lost.front();
        std::printf("%zu of %s could not be delivered, the first is frame %u: %s\n", done.lost.size(),
                    counted(done.delivered + done.lost.size(), "frame", "frames").c_str(), first.index,
                    resultText(first.result).c_str());
    }
}

// A PNG of more is not made: it takes 20 bytes of memory for each pixel.
void requirePngSize(std::int32_t width, std::int32_t height) {
    if (std::int64_t{width} * height > kMostPngPixels) {
        throw ToolError(kFailed,
                        "frames of " + std::to_string(width) + " × " + std::to_string(height) +
                            " are too large for PNG files, which are made up to 100 million pixels",
                        "--raw writes them as they are, --sheet shows them small", "frame-too-large");
    }
}

int deliver(const HostedRun& hosted, const FramesOptions& options, const FrameRange& range, bool json) {
    Answer<host::imFileInfoRec8> info;
    const auto clip = hosted.open(options.file, 0, info);
    const std::uint32_t count = frameCount(info.record);
    auto frames = framesOf(range, count);
    if (frames.empty()) {
        throw ToolError(kFailed, "the clip has " + counted(count, "frame", "frames") + ", counted from 0; '" +
                                     options.range + "' asks for others");
    }
    std::vector<std::string> notes;
    if (const std::string cut = rangeNote(range, count); !cut.empty()) {
        notes.push_back(cut);
    }
    const std::int32_t width = info.record.vidInfo.imageWidth;
    const std::int32_t height = info.record.vidInfo.imageHeight;
    if (!options.folder.empty() && !options.raw) {
        requirePngSize(width, height);
    }
    auto formats = chosenFormats(options.formats, clip->pixelFormats().formats);
    auto onSheet = formats;
    onSheet.resize(std::min(formats.size(), ContactSheet::mostCells(width, height)));
    if (!options.sheet.empty() && onSheet.size() < formats.size()) {
        notes.push_back("frames of " + std::to_string(width) + " × " + std::to_string(height) +
                        " are large: the sheet shows them in " + std::to_string(onSheet.size()) + " of " +
                        std::to_string(formats.size()) + " pixel formats; --format names others");
    }
    for (const std::string& note : notes) {
        (void)std::fprintf(stderr, "importer_host: %s\n", note.c_str());
    }
    const auto shown = spreadFrames(frames, ContactSheet::mostFrames(onSheet.size(), width, height));
    const std::size_t asked = frames.size();
    if (options.folder.empty()) {
        frames = shown;
        formats = onSheet;
    }
    // With several formats a row of the sheet is a format.
    constexpr std::size_t kMostColumns = 12;
    const std::size_t columns = onSheet.size() > 1 ? std::min(shown.size(), kMostColumns) : 0;
    FrameWriter writer(options, columns, framesPerSecond(info.record));
    Delivery done;
    done.spread = !options.sheet.empty() && shown.size() < asked;
    if (done.spread) {
        writer.tellSpread(shown.size(), asked);
    }
    {
        Progress progress(hosted.progress(), "frames", std::uint64_t{frames.size()} * formats.size());
        for (const std::uint32_t format : formats) {
            for (const std::uint32_t index : frames) {
                const FrameAnswer answer = clip->getFrame(index, format);
                const bool isShown = std::binary_search(shown.begin(), shown.end(), index) &&
                                     std::find(onSheet.begin(), onSheet.end(), format) != onSheet.end();
                if (answer.frame) {
                    writer.write(*answer.frame, index, isShown);
                    ++done.delivered;
                } else if (options.goesOn()) {
                    done.lost.push_back({index, format, answer.result});
                    if (isShown) {
                        writer.writeLost(done.lost.back(), width, height);
                    }
                } else {
                    throw ToolError(kFailed,
                                    "frame " + std::to_string(index) + " in " + pixelFormatName(format) +
                                        ": " + resultText(answer.result),
                                    "--keep-going delivers the frames behind it");
                }
                progress.advance();
            }
        }
    }
    writer.finish();
    done.files = writer.files();
    done.onSheet = writer.onSheet();
    if (json) {
        writeAnswer("", jsonText(toJson(options, done, notes)));
    } else {
        printCounts(options, done);
    }
    return done.lost.empty() ? kSuccess : kFailed;
}

int runFrames(const GlobalOptions& global, const FramesOptions& options) {
    const auto range = parseFrameRange(options.range);
    if (!range) {
        throw ToolError(kUsage, "'" + options.range + "' is no range of frames: FIRST[:LAST[:STEP]] or all");
    }
    if (options.folder.empty() && options.sheet.empty()) {
        throw ToolError(kUsage, "nothing to write: give --out or --sheet");
    }
    requireClipFile(options.file);
    if (!options.folder.empty()) {
        makeFolder(options.folder);
    }
    checkOutput(options.sheet);
    return runHosted(global,
                     [&](HostedRun& hosted) { return deliver(hosted, options, *range, global.json); });
}

}  // namespace

Command addFramesCommand(CLI::App& app) {
    auto options = std::make_shared<FramesOptions>();
    CLI::App* parser =
        app.add_subcommand("frames", "Write frames as PNG or raw files, or on a contact sheet");
    parser->add_option("FILE", options->file, "AVI file")->required();
    parser->add_option("--range", options->range, "Frames: FIRST[:LAST[:STEP]] with LAST included, or all")
        ->capture_default_str();
    parser->add_option(
        "--format", options->formats,
        "Pixel formats by identifier (BGRA_4444_8u) or code (bgra), or all (default: the first offered)");
    parser->add_option("--out", options->folder, "Folder for one file per frame");
    parser->add_option("--sheet", options->sheet, "PNG file for all frames on one sheet");
    parser->add_flag("--raw", options->raw,
                     "Write the rows as they are, from the top, without padding, not PNG");
    CLI::Option* on = parser->add_flag("--keep-going", options->keepGoing,
                                       "Go on behind a frame that cannot be delivered (default for a sheet)");
    parser->add_flag("--stop-at-failure", options->stop, "Stop there, also for a sheet")->excludes(on);
    return {parser, [options](const GlobalOptions& global) { return runFrames(global, *options); }};
}

}  // namespace simhost::tool
