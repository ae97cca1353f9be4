// frames: delivers frames as PNG files, as raw rows, and on a contact sheet.
#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstdio>
#include <memory>
#include <string>
#include <vector>

#include "simhost/text.h"
#include "tool/commands.h"
#include "tool/shared/base/hosted_run.h"
#include "tool/shared/base/output_file.h"
#include "tool/shared/base/progress.h"
#include "tool/shared/base/tool_error.h"
#include "tool/shared/media/frame_range.h"
#include "tool/shared/media/media_facts.h"
#include "tool/shared/pictures/contact_sheet.h"
#include "tool/shared/pictures/picture.h"
#include "tool/shared/pictures/png.h"

namespace simhost::tool {
namespace {

struct FramesOptions {
    std::string file;
    std::string range = "0";
    std::vector<std::string> formats;
    std::string folder;
    std::string sheet;
    bool raw = false;
};

// The part of a format's identifier that tells formats apart even where names of files ignore case.
std::string shortName(std::uint32_t format) {
    const std::string name = pixelFormatName(format);
    return name.substr(name.find('_') + 1);
}

std::vector<std::uint32_t> chosenFormats(const FramesOptions& options,
                                         const std::vector<std::uint32_t>& offered) {
    if (offered.empty()) {
        throw ToolError(kFailed, "the plug-in offers no pixel format");
    }
    std::vector<std::uint32_t> out;
    for (const std::string& text : options.formats) {
        if (text == "all") {
            out.insert(out.end(), offered.begin(), offered.end());
            continue;
        }
        const auto format = pixelFormatFromText(text);
        if (!format) {
            throw ToolError(kUsage, "there is no pixel format '" + text + "'");
        }
        out.push_back(*format);
    }
    return out.empty() ? std::vector{offered.front()} : out;
}

class FrameWriter {
 public:
    FrameWriter(const FramesOptions& options, std::size_t columns) : m_options(options), m_columns(columns) {
        m_stem = pathToUtf8(pathFromUtf8(options.file).stem());
        if (!options.folder.empty()) {
            makeFolder(options.folder);
        }
    }

    void write(const Frame& frame, std::uint32_t index) {
        char number[16];
        (void)std::snprintf(number, sizeof number, "%06u", index);
        const std::string name = shortName(frame.pixelFormat());
        const std::string path = m_options.folder + "/" + m_stem + "_" + name + "_" + number;
        if (!m_options.folder.empty() && m_options.raw) {
            writeFile(path + ".raw", frame.picture());
            ++m_files;
        }
        const bool shown = canShow(frame.pixelFormat());
        const bool png = !m_options.folder.empty() && !m_options.raw;
        if (!shown && (png || !m_options.sheet.empty())) {
            throw ToolError(kUsage, name + " can only be written with --raw, not shown");
        }
        if (!png && m_options.sheet.empty()) {
            return;
        }
        const Picture picture = toPicture(frame);
        if (png) {
            writeFile(path + ".png", encodePng(picture));
            ++m_files;
        }
        if (!m_options.sheet.empty()) {
            m_sheet.add(picture, std::to_string(index) + " " + name);
        }
    }

    void finish() {
        if (!m_options.sheet.empty()) {
            writeFile(m_options.sheet, encodePng(m_sheet.render(m_columns)));
            std::printf("%zu frames on %s\n", m_sheet.size(), m_options.sheet.c_str());
        }
        if (!m_options.folder.empty()) {
            std::printf("%zu files in %s\n", m_files, m_options.folder.c_str());
        }
    }

 private:
    const FramesOptions& m_options;
    std::size_t m_columns;
    std::string m_stem;
    std::size_t m_files = 0;
    ContactSheet m_sheet;
};

int runFrames(const GlobalOptions& global, const FramesOptions& options) {
    const auto range = parseFrameRange(options.range);
    if (!range) {
        throw ToolError(kUsage, "'" + options.range + "' is no range of frames: FIRST[:LAST[:STEP]] or all");
    }
    if (options.folder.empty() && options.sheet.empty()) {
        throw ToolError(kUsage, "nothing to write: give --out or --sheet");
    }
    return runHosted(global, [&](HostedRun& hosted) {
        Answer<host::imFileInfoRec8> info;
        const auto clip = hosted.open(options.file, 0, info);
        const std::uint32_t count = frameCount(info.record);
        const auto frames = framesOf(*range, count);
        if (frames.empty() || (range->last && *range->last >= count)) {
            throw ToolError(kFailed, "the clip has " + std::to_string(count) + " frames, counted from 0; '" +
                                         options.range + "' asks for others");
        }
        const auto formats = chosenFormats(options, clip->pixelFormats().formats);
        // With several formats a row of the sheet is a format.
        constexpr std::size_t kMostColumns = 12;
        const std::size_t columns = formats.size() > 1 ? std::min(frames.size(), kMostColumns) : 0;
        FrameWriter writer(options, columns);
        {
            Progress progress(hosted.progress(), "frames", std::uint64_t{frames.size()} * formats.size());
            for (const std::uint32_t format : formats) {
                for (const std::uint32_t index : frames) {
                    const FrameAnswer answer = clip->getFrame(index, format);
                    if (!answer.frame) {
                        throw ToolError(kFailed, "frame " + std::to_string(index) + " in " +
                                                     pixelFormatName(format) + ": " +
                                                     resultText(answer.result));
                    }
                    writer.write(*answer.frame, index);
                    progress.advance();
                }
            }
        }
        writer.finish();
        return kSuccess;
    });
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
    return {parser, [options](const GlobalOptions& global) { return runFrames(global, *options); }};
}

}  // namespace simhost::tool
