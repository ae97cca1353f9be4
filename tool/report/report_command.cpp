// report: everything about one file on one HTML page, with the diagnostic log of the run that made it.
#include <CLI/CLI.hpp>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <nlohmann/json.hpp>
#include <optional>
#include <set>
#include <string>
#include <system_error>
#include <vector>

#include "tool/commands.h"
#include "tool/report/report_run.h"
#include "tool/shared/base/failure.h"
#include "tool/shared/base/interruption.h"
#include "tool/shared/base/json_text.h"
#include "tool/shared/base/output_file.h"
#include "tool/shared/base/tool_error.h"
#include "tool/shared/base/tool_platform.h"
#include "tool/shared/run/clip_errors.h"
#include "tool/shared/run/hosted_run.h"

namespace simhost::tool {
namespace {

using Json = nlohmann::ordered_json;

struct ReportOptions {
    std::vector<std::string> files;
    std::string folder;  // empty: beside each clip
    std::optional<std::uint32_t> frames;
    bool noLog = false;
    bool open = false;
};

// Where the pages go. Two clips of one name get two pages.
class Pages {
 public:
    explicit Pages(const ReportOptions& options) : m_folder(options.folder) {}

    /// Gives the path.
    std::string write(const std::string& clip, const Report& report) {
        const std::string page = reportPage(report);
        if (!m_folder.empty()) {
            return write(m_folder, report.fileName, page);
        }
        const std::filesystem::path beside = pathFromUtf8(clip).parent_path();
        try {
            return write(pathToUtf8(beside.empty() ? "." : beside), report.fileName, page);
        } catch (const ToolError& error) {
            // Clips often lie where nothing may be written.
            std::error_code none;
            const std::filesystem::path temporary = std::filesystem::temp_directory_path(none);
            if (none || error.code() != kNoOutput) {
                throw;
            }
            return write(pathToUtf8(temporary / "importer_host reports"), report.fileName, page);
        }
    }

 private:
    std::string write(const std::string& folder, const std::string& name, const std::string& page) {
        makeFolder(folder);
        std::string path;
        for (int number = 1; path.empty() || m_written.contains(path); ++number) {
            const std::string suffix = number > 1 ? " (" + std::to_string(number) + ")" : "";
            path = pathToUtf8(pathFromUtf8(folder) / pathFromUtf8(name + suffix + ".html"));
        }
        writeText(path, page);
        m_written.insert(path);
        return path;
    }

    std::string m_folder;
    std::set<std::string> m_written;
};

struct OneReport {
    std::string page;
    std::uint64_t framesAsked = 0;
    std::uint64_t sampleFramesRead = 0;
    int result = kSuccess;
    Json failure;  ///< null without one
};

OneReport reportOn(const std::string& file, const GlobalOptions& global, const ReportOptions& options,
                   Pages& pages) {
    const MadeReport made = makeReport(file, global, {options.frames, !options.noLog});
    OneReport out;
    out.result = made.result;
    if (made.failure) {
        out.failure = failureJson(*made.failure);
    }
    out.framesAsked = made.report.frames.size();
    for (const ReportSound& sound : made.report.sounds) {
        out.sampleFramesRead += sound.sampleFramesRead;
    }
    out.page = pages.write(file, made.report);
    return out;
}

int runReport(const GlobalOptions& global, const ReportOptions& options) {
    const std::vector<std::string> files = clipFiles(options.files);
    for (const std::string& file : files) {
        protectInput(file);
    }
    Pages pages(options);
    Json told = Json::array();
    int result = kSuccess;
    for (const std::string& file : files) {
        throwIfInterrupted();
        OneReport one;
        try {
            one = reportOn(file, global, options, pages);
        } catch (const ToolError& error) {
            if (files.size() == 1 || error.code() == kInterrupted) {
                throw;
            }
            one.result = tellFailure(error, false);
            one.failure = failureJson(error);
        }
        result = one.result == kSuccess ? result : one.result;
        if (!global.json && !one.page.empty()) {
            std::printf("%s\n", one.page.c_str());
            (void)std::fflush(stdout);
        }
        told.push_back({{"file", file},
                        {"page", one.page},
                        {"framesAsked", one.framesAsked},
                        {"sampleFramesRead", one.sampleFramesRead},
                        {"error", one.failure}});
        if (options.open && !one.page.empty() && !openWithSystem(one.page)) {
            (void)std::fprintf(stderr, "importer_host: '%s' cannot be opened; open it yourself\n",
                               one.page.c_str());
        }
    }
    if (global.json) {
        const Json out = {{"reports", told}};
        writeAnswer("", jsonText(out));
    }
    return result;
}

}  // namespace

Command addReportCommand(CLI::App& app) {
    auto options = std::make_shared<ReportOptions>();
    CLI::App* parser = app.add_subcommand(
        "report",
        "Write an HTML page about each file: streams, frames, sound, data rate, index, oddities, log");
    parser->add_option("FILE", options->files, "AVI files, or folders of them")->required();
    parser->add_option("--out", options->folder, "Folder for the pages (default: beside each file)");
    parser->add_flag("--open", options->open, "Show each page when it is done");
    parser
        ->add_option("--frames", options->frames,
                     "How many frames to show (default: 24, fewer when they are larger than 2000 × 2000)")
        ->check(CLI::Range(0, 200));
    parser->add_flag("--no-log", options->noLog, "Leave the plug-in's log off");
    return {parser, [options](const GlobalOptions& global) { return runReport(global, *options); }};
}

}  // namespace simhost::tool
