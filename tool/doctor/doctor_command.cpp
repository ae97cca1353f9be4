// doctor: answers what users ask first ("it does not appear", "no sound", "which version is this") by looking
// at the installation as the host and its loader would, and at one clip.
#include <CLI/CLI.hpp>
#include <cstdio>
#include <memory>
#include <string>
#include <vector>

#include "tool/commands.h"
#include "tool/doctor/doctor_checks.h"
#include "tool/doctor/doctor_clip.h"
#include "tool/doctor/doctor_search.h"
#include "tool/shared/base/doctor_platform.h"
#include "tool/shared/base/hosted_run.h"
#include "tool/shared/base/output_file.h"
#include "tool/shared/base/terminal.h"
#include "tool/shared/base/tool_error.h"
#include "tool/shared/base/tool_platform.h"
#include "tool/shared/logs/log_files.h"

namespace simhost::tool {
namespace {

struct DoctorOptions {
    std::string clip;
    std::vector<std::string> folders;
    std::string output;
    bool json = false;
    bool colour = false;
};

// What the checks found, told at once or, for a file or as JSON, in the end.
class Findings {
 public:
    explicit Findings(const DoctorOptions& options)
        : m_options(options),
          m_atOnce(!options.json && options.output.empty()),
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

    /// Gives the exit code.
    int finish() {
        const std::size_t bad = badChecks(m_checks);
        tell(
            bad == 0
                ? "Nothing is wrong. If the host does not show the plug-in all the same, hold Shift while it "
                  "starts: it remembers earlier failures.\n"
                : std::to_string(bad) + " to repair.\n");
        const std::string text = m_options.json ? checksJson(m_checks) + "\n" : m_text;
        if (!m_options.output.empty()) {
            writeFile(m_options.output, {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()});
        } else if (m_options.json) {
            (void)std::fputs(text.c_str(), stdout);
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
    bool m_atOnce;
    bool m_colour;
    std::vector<Check> m_checks;
    std::string m_text;
};

Check checkNewestLog() {
    constexpr std::uint64_t kMostBytes = std::uint64_t{64} << 20;
    const std::string path = newestLog();
    LogSummary summary;
    if (path.empty() || !readLog(path, kMostBytes, [&summary](const LogItem& item) { summary.add(item); })) {
        return {CheckState::kGood, "newest log", "none so far", ""};
    }
    if (summary.failures == 0) {
        return {CheckState::kGood, "newest log", path + ", without failures", ""};
    }
    return {CheckState::kWarning, "newest log",
            path + ": " + std::to_string(summary.failures) +
                " failures, the first: " + firstLine(summary.firstFailure->what),
            "\"importer_host log --failures\" explains them"};
}

// Loads the plug-in as the host would, and opens the clip through it.
void tryPlugin(const GlobalOptions& global, const std::string& plugin, bool codecFound,
               const std::string& clip, Findings& findings) {
    if (!isFile(plugin)) {
        findings.add({CheckState::kBad, "loading", "there is no plug-in to try",
                      "install it, or name one with --plugin"});
        return;
    }
    GlobalOptions options = global;
    options.plugin = plugin;
    options.useStandin = false;
    try {
        HostedRun hosted(options);
        findings.add({CheckState::kGood, "loading", plugin + " loads and has its entry point", ""});
        hosted.requireStart();
        findings.add({CheckState::kGood, "start", "the plug-in is ready", ""});
        if (!clip.empty()) {
            findings.add(checkClip(hosted, clip));
        }
        if (hosted.finish(kSuccess) != kSuccess) {
            findings.add(
                {CheckState::kBad, "end", "the plug-in broke a rule of the host", "please report it"});
        }
        for (const std::string& log : hosted.newLogs()) {
            findings.add({CheckState::kGood, "log of this run", log, ""});
        }
    } catch (const ToolError& error) {
        findings.add({CheckState::kBad, "loading", error.what(),
                      codecFound ? "install the plug-in and the codec anew"
                                 : "install the Orvantis codec, whose library the plug-in needs"});
    }
}

int runDoctor(const GlobalOptions& global, const DoctorOptions& options) {
    Findings findings(options);
    const std::vector<PluginFolder> folders = findPluginFolders(options.folders);
    findings.add(checkFolders(folders));
    const std::vector<LibraryFile> copies = findCopies(folders);
    findings.add(checkCopies(copies, folders, ORVANTIS_VERSION));
    const CodecSearch codecs = findCodecs(global.codecFolder);
    findings.add(checkCodec(codecs));
    findings.add(checkCodecBeside(findCodecsBeside(copies), !codecs.found.empty()));
    findings.add(checkLogSwitch(logSetting()));
    findings.add(checkNewestLog());
    const std::string plugin = !global.plugin.empty() ? global.plugin
                               : copies.empty()       ? joinedPath(executableFolder(), kPluginFileName)
                                                      : copies.front().path;
    tryPlugin(global, plugin, !codecs.found.empty(), options.clip, findings);
    return findings.finish();
}

}  // namespace

Command addDoctorCommand(CLI::App& app) {
    auto options = std::make_shared<DoctorOptions>();
    CLI::App* parser = app.add_subcommand(
        "doctor",
        "Look for what keeps the plug-in from appearing or a clip from playing, and tell what to do");
    parser->add_option("CLIP", options->clip, "AVI file to try");
    parser
        ->add_option("--plugin-folder", options->folders,
                     "Look here for the plug-in, not where the installed hosts look; may be repeated")
        ->allow_extra_args(false);
    parser->add_flag("--json", options->json, "Write JSON");
    parser->add_option("--out", options->output,
                       "File for the answer, in UTF-8 (default: the standard output)");
    parser->add_flag("--color", options->colour, "Use colours even if the output is no terminal");
    return {parser, [options](const GlobalOptions& global) { return runDoctor(global, *options); }};
}

}  // namespace simhost::tool
