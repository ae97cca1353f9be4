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
#include "tool/doctor/doctor_dumps.h"
#include "tool/doctor/doctor_run.h"
#include "tool/shared/base/output_file.h"
#include "tool/shared/base/terminal.h"
#include "tool/shared/base/tool_error.h"
#include "tool/shared/run/clip_errors.h"
#include "tool/shared/run/hosted_run.h"
#include "tool/shared/run/versions.h"

namespace simhost::tool {
namespace {

struct DoctorOptions {
    std::vector<std::string> clips;
    std::vector<std::string> folders;
    std::string output;
    std::string dumps;
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

int runDoctor(const GlobalOptions& global, const DoctorOptions& options) {
    const std::vector<std::string> clips = clipFiles(options.clips);
    for (const std::string& path : clips) {
        protectInput(path);
    }
    checkOutput(options.output);
    if (!options.dumps.empty()) {
        switchDumps(options.dumps == "on");
    }
    Findings findings(options, global.json);
    examine(
        global, {clips, options.folders}, [&](const Versions& versions) { findings.add(versions); },
        [&](const Check& check) { findings.add(check); });
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
    parser
        ->add_option("--dumps", options->dumps,
                     "Switch the system's crash dumps of the hosts on or off, as an administrator")
        ->check(CLI::IsMember({"on", "off"}));
    parser->add_flag("--color", options->colour, "Use colours even if the output is no terminal");
    return {parser,
            [options](const GlobalOptions& global) { return runDoctor(global, *options); },
            {.progress = false}};
}

}  // namespace simhost::tool
