// collect: one zip file with what a support person asks for, without the user's name. Nothing is sent
// anywhere.
#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstdio>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <functional>
#include <memory>
#include <nlohmann/json.hpp>
#include <set>
#include <string>
#include <system_error>
#include <vector>

#include "tool/collect/folder_list.h"
#include "tool/collect/mask.h"
#include "tool/collect/personal_names.h"
#include "tool/collect/zip_file.h"
#include "tool/commands.h"
#include "tool/doctor/doctor_run.h"
#include "tool/doctor/doctor_search.h"
#include "tool/report/report_run.h"
#include "tool/shared/base/interruption.h"
#include "tool/shared/base/json_text.h"
#include "tool/shared/base/number_text.h"
#include "tool/shared/base/output_file.h"
#include "tool/shared/base/tool_error.h"
#include "tool/shared/logs/log_files.h"
#include "tool/shared/run/clip_errors.h"
#include "tool/shared/run/doctor_platform.h"
#include "tool/shared/run/hosted_run.h"
#include "tool/shared/run/versions.h"

namespace simhost::tool {
namespace {

using Json = nlohmann::ordered_json;

struct CollectOptions {
    std::vector<std::string> files;
    std::string out;
    std::vector<std::string> folders;
    std::uint32_t logs = 5;
    std::uint32_t frames = 0;
};

// Masks what goes in, and remembers what it is.
class Collection {
 public:
    Collection() : m_mask(personalNames()) {}

    void add(const std::string& name, const std::string& what, const std::string& text, bool page = false) {
        const std::string masked = freeName(m_mask.apply(name));
        const std::string bytes = page ? m_mask.applyToPage(text) : m_mask.apply(text);
        m_zip.add(masked, bytes);
        m_contents.push_back({{"name", masked}, {"what", what}, {"bytes", bytes.size()}});
    }

    /// A part that fails becomes a text that says so.
    void tryAdd(const std::string& name, const std::string& what, const std::function<std::string()>& make,
                bool page = false) {
        throwIfInterrupted();
        try {
            add(name, what, make(), page);
        } catch (const ToolError& error) {
            if (error.code() == kInterrupted) {
                throw;
            }
            add(name + ".failed.txt", what + ": it could not be made",
                std::string(error.what()) + "\n" + error.advice() + "\n");
        }
    }

    const Json& contents() const { return m_contents; }
    std::string contentsText() const {
        std::string out;
        for (const Json& each : m_contents) {
            out += "  " + each["name"].get<std::string>() + ", " +
                   bytesText(static_cast<double>(each["bytes"].get<std::uint64_t>())) + ": " +
                   each["what"].get<std::string>() + "\n";
        }
        return out;
    }
    std::vector<std::uint8_t> finish() { return m_zip.finish(); }

 private:
    std::string freeName(const std::string& name) {
        std::string out = name;
        for (int number = 2; !m_names.insert(out).second; ++number) {
            const std::size_t dot = std::min(name.rfind('.'), name.size());
            out = name.substr(0, dot) + " (" + std::to_string(number) + ")" + name.substr(dot);
        }
        return out;
    }

    Mask m_mask;
    ZipFile m_zip;
    std::set<std::string> m_names;
    Json m_contents = Json::array();
};

std::string doctorText(const GlobalOptions& global, const CollectOptions& options,
                       const std::vector<std::string>& clips) {
    std::string out;
    examine(
        global, {clips, options.folders},
        [&out](const Versions& versions) { out += versionText(versions) + "\n"; },
        [&out](const Check& check) { out += checkText(check, false); });
    return out;
}

// The end of a log, from the beginning of a line on.
std::string logText(const std::string& path) {
    constexpr std::uintmax_t kMostBytes = std::uintmax_t{4} << 20;
    std::error_code error;
    const std::uintmax_t size = std::filesystem::file_size(pathFromUtf8(path), error);
    std::ifstream stream(pathFromUtf8(path), std::ios::binary);
    if (error || !stream) {
        throw ToolError(kFailed, "'" + path + "' cannot be read");
    }
    const bool cut = size > kMostBytes;
    stream.seekg(static_cast<std::streamoff>(cut ? size - kMostBytes : 0));
    std::string text(static_cast<std::size_t>(std::min(size, kMostBytes)), '\0');
    stream.read(text.data(), static_cast<std::streamsize>(text.size()));
    text.resize(static_cast<std::size_t>(stream.gcount()));
    return cut ? text.substr(std::min(text.find('\n'), text.size() - 1) + 1) : text;
}

void addLogs(std::uint32_t most, Collection& out) {
    std::vector<std::string> logs = logFiles();
    std::reverse(logs.begin(), logs.end());
    logs.resize(std::min<std::size_t>(logs.size(), most));
    for (const std::string& log : logs) {
        out.tryAdd("logs/" + pathToUtf8(pathFromUtf8(log).filename()), "a log of the plug-in, its last 4 MiB",
                   [&log] { return logText(log); });
    }
}

std::string defaultName() {
    const std::time_t now = std::time(nullptr);
    char text[64];
    (void)std::strftime(text, sizeof text, "orvantis-support-%Y%m%d-%H%M%S.zip", std::gmtime(&now));
    return text;
}

int runCollect(const GlobalOptions& global, CollectOptions options) {
    const std::vector<std::string> clips = clipFiles(options.files);
    for (const std::string& clip : clips) {
        requireClipFile(clip);
    }
    options.out = options.out.empty() ? defaultName() : options.out;
    checkOutput(options.out);
    Collection all;
    GlobalOptions hosts = global;
    hosts.useStandin = false;
    all.tryAdd("versions.txt", "the versions of tool, plug-in, codec library and system",
               [&] { return versionText(versionsOf(hosts)); });
    all.tryAdd("doctor.txt", "what doctor says of the installation and the clips",
               [&] { return doctorText(global, options, clips); });
    all.tryAdd("folders.txt", "the files in the host's plug-in folders, and where the codec library lies",
               [&] {
                   std::vector<std::string> folders;
                   for (const PluginFolder& folder : findPluginFolders(options.folders)) {
                       folders.push_back(folder.path);
                   }
                   return folderList(folders, libraryFolders());
               });
    for (const std::string& clip : clips) {
        all.tryAdd(
            "reports/" + pathToUtf8(pathFromUtf8(clip).filename()) + ".html",
            options.frames == 0 ? "the report on a clip, without pictures" : "the report on a clip",
            [&] {
                return reportPage(makeReport(clip, global, {options.frames, true}).report);
            },
            true);
    }
    addLogs(options.logs, all);
    const std::string said = "The user's name is replaced by " + std::string(kMaskedName) +
                             ", the home folder by " + std::string(kMaskedHome) +
                             " everywhere. Names of clips and of other folders are as they were.\n";
    all.add("README.txt", "this list",
            "Collected by importer_host " ORVANTIS_VERSION " for a support person.\n\n" + all.contentsText() +
                "\n" + said);
    writeFile(options.out, all.finish());
    if (global.json) {
        const Json told = {{"out", options.out}, {"contents", all.contents()}};
        writeAnswer("", jsonText(told));
    } else {
        std::printf("%s\n%s%sNothing has been sent to anybody: look into it, and send it yourself.\n",
                    options.out.c_str(), all.contentsText().c_str(), said.c_str());
    }
    return kSuccess;
}

}  // namespace

Command addCollectCommand(CLI::App& app) {
    auto options = std::make_shared<CollectOptions>();
    CLI::App* parser = app.add_subcommand(
        "collect",
        "Put what a support person asks for into one zip file, without the user's name; nothing is sent");
    parser->add_option("FILE", options->files, "AVI files that it is about, or folders of them");
    parser->add_option("--out", options->out,
                       "The zip file (default: orvantis-support-DATE-TIME.zip in the current folder)");
    parser->add_option("--logs", options->logs, "How many of the newest logs")
        ->capture_default_str()
        ->check(CLI::Range(0, 100));
    parser->add_option("--frames", options->frames, "How many pictures of each clip its report shows")
        ->capture_default_str()
        ->check(CLI::Range(0, 200));
    parser
        ->add_option("--plugin-folder", options->folders,
                     "Look here for the plug-in, not where the installed hosts look; may be repeated")
        ->allow_extra_args(false);
    return {parser,
            [options](const GlobalOptions& global) { return runCollect(global, *options); },
            {.log = false}};
}

}  // namespace simhost::tool
