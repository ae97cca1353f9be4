// doctor: answers what users ask first ("it does not appear", "no sound", "which version is this") by looking
// at the installation as the host and its loader would, and at one clip.
#include <CLI/CLI.hpp>
#include <cstdio>
#include <memory>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "tool/commands.h"
#include "tool/doctor/doctor_checks.h"
#include "tool/doctor/doctor_clip.h"
#include "tool/doctor/doctor_search.h"
#include "tool/shared/base/interruption.h"
#include "tool/shared/base/number_text.h"
#include "tool/shared/base/output_file.h"
#include "tool/shared/base/terminal.h"
#include "tool/shared/base/tool_error.h"
#include "tool/shared/base/tool_platform.h"
#include "tool/shared/logs/log_files.h"
#include "tool/shared/run/clip_errors.h"
#include "tool/shared/run/doctor_platform.h"
#include "tool/shared/run/hosted_run.h"
#include "tool/shared/run/versions.h"

namespace simhost::tool {
namespace {

struct DoctorOptions {
    std::vector<std::string> clips;
    std::vector<std::string> folders;
    std::string output;
    bool colour = false;
};

// What the checks found, told at once or, for a file or as JSON, in the end.
class Findings {
 public:
    Findings(const DoctorOptions& options, bool json)
        : m_options(options),
          m_json(json),
          m_atOnce(!json && options.output.empty()),
          m_colour(options.colour || (m_atOnce && prepareColours())) {}

    void add(const Check& check) {
        m_checks.push_back(check);
        tell(checkText(check, m_colour));
    }
    void add(const std::vector<Check>& checks) {
        for (const Check& check : checks) {
            add(check);
        }
    }

    void add(const Versions& versions) {
        m_versions = versionJson(versions);
        tell(versionText(versions) + "\n");
    }

    /// Gives the exit code.
    int finish() {
        const std::size_t bad = badChecks(m_checks);
        tell(
            bad == 0
                ? "Nothing is wrong. If the host does not show the plug-in all the same, hold Shift while it "
                  "starts: it remembers earlier failures.\n"
                : std::to_string(bad) + " to repair.\n");
        if (!m_atOnce) {
            writeAnswer(m_options.output, m_json ? checksJson(m_checks, m_versions) + "\n" : m_text);
        }
        return bad == 0 ? kSuccess : kFailed;
    }

 private:
    void tell(const std::string& text) {
        m_text += text;
        if (m_atOnce) {
            (void)std::fputs(text.c_str(), stdout);
            (void)std::fflush(stdout);
        }
    }

    const DoctorOptions& m_options;
    bool m_json;
    bool m_atOnce;
    bool m_colour;
    nlohmann::ordered_json m_versions;
    std::vector<Check> m_checks;
    std::string m_text;
};

Check checkNewestLog() {
    // A log of hours is long, and what is wrong now stands at its end.
    constexpr std::uint64_t kMostBytes = std::uint64_t{4} << 20;
    const std::string path = newestLog();
    LogSummary summary;
    const auto read =
        path.empty() ? LogPart::kNone
                     : readLogEnd(path, kMostBytes, [&summary](const LogItem& item) { summary.add(item); });
    if (read == LogPart::kNone) {
        return {CheckState::kGood, "newest log", "none so far", ""};
    }
    const std::string where = path + (read == LogPart::kEnd ? ", its end" : "");
    if (summary.failures == 0) {
        return {CheckState::kGood, "newest log", where + ", without failures", ""};
    }
    return {CheckState::kWarning, "newest log",
            where + ": " + counted(summary.failures, "failure", "failures") +
                ", the first: " + firstLine(summary.firstFailure->what),
            "\"importer_host log --failures\" explains them"};
}

// One after the other: what is wrong with one says nothing of the next.
void tryClips(const HostedRun& hosted, const std::vector<std::string>& clips, Findings& findings) {
    for (const std::string& clip : clips) {
        throwIfInterrupted();
        std::vector<Check> checks = checkClip(hosted, clip);
        for (Check& check : checks) {
            check.name = clips.size() > 1 ? clip + ": " + check.name : check.name;
        }
        findings.add(checks);
    }
}

// Loads the plug-in as the host would, and opens the clips through it.
void tryPlugin(const GlobalOptions& global, const std::string& plugin, const std::vector<std::string>& clips,
               Findings& findings) {
    if (!isFile(plugin)) {
        findings.add({CheckState::kBad, "loading", "there is no plug-in to try",
                      "install it, or name one with --plugin"});
        return;
    }
    GlobalOptions options = global;
    options.plugin = plugin;
    try {
        HostedRun hosted(options);
        findings.add({CheckState::kGood, "loading", plugin + " loads and has its entry point", ""});
        hosted.requireStart();
        findings.add({CheckState::kGood, "start", "the plug-in is ready", ""});
        tryClips(hosted, clips, findings);
        if (hosted.finish(kSuccess) != kSuccess) {
            findings.add(
                {CheckState::kBad, "end", "the plug-in broke a rule of the host", "please report it"});
        }
        for (const std::string& log : hosted.newLogs()) {
            findings.add({CheckState::kGood, "log of this run", log, ""});
        }
    } catch (const ToolError& error) {
        if (error.code() == kInterrupted) {
            throw;
        }
        findings.add({CheckState::kBad, "loading", error.what(), error.advice()});
    }
}

int runDoctor(const GlobalOptions& global, const DoctorOptions& options) {
    const std::vector<std::string> clips = clipFiles(options.clips);
    for (const std::string& path : clips) {
        protectInput(path);
    }
    checkOutput(options.output);
    Findings findings(options, global.json);
    const std::vector<PluginFolder> folders = findPluginFolders(options.folders);
    const std::vector<LibraryFile> copies = findCopies(folders);
    const std::string plugin = !global.plugin.empty() ? global.plugin
                               : copies.empty()       ? joinedPath(executableFolder(), kPluginFileName)
                                                      : copies.front().path;
    GlobalOptions hosts = global;
    hosts.useStandin = false;
    findings.add(versionsOf(hosts, plugin));
    findings.add(checkFolders(folders));
    findings.add(checkCopies(copies, folders, ORVANTIS_VERSION));
    const CodecSearch codecs = findCodecs(global.codecFolder);
    findings.add(checkCodec(codecs));
    findings.add(checkCodecBeside(findCodecsBeside(copies), !codecs.found.empty()));
    findings.add(checkLogSwitch(logSetting()));
    findings.add(checkNewestLog());
    tryPlugin(hosts, plugin, clips, findings);
    return findings.finish();
}

}  // namespace

Command addDoctorCommand(CLI::App& app) {
    auto options = std::make_shared<DoctorOptions>();
    CLI::App* parser = app.add_subcommand(
        "doctor",
        "Look for what keeps the plug-in from appearing or a clip from playing, and tell what to do");
    parser->add_option("CLIP", options->clips, "AVI files to try, or folders of them");
    parser
        ->add_option("--plugin-folder", options->folders,
                     "Look here for the plug-in, not where the installed hosts look; may be repeated")
        ->allow_extra_args(false);
    parser->add_option("--out", options->output,
                       "File for the answer, in UTF-8 (default: the standard output)");
    parser->add_flag("--color", options->colour, "Use colours even if the output is no terminal");
    return {parser,
            [options](const GlobalOptions& global) { return runDoctor(global, *options); },
            {.progress = false}};
}

}  // namespace simhost::tool
