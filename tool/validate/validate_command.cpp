// validate: holds any importer against the rules of the host, one check at a time, each in a process that it
// may crash or hang.
#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>
#include <string_view>
#include <thread>
#include <utility>
#include <vector>

#include "tool/commands.h"
#include "tool/shared/base/number_text.h"
#include "tool/shared/base/output_file.h"
#include "tool/shared/base/progress.h"
#include "tool/shared/base/temporary_path.h"
#include "tool/shared/base/tool_error.h"
#include "tool/shared/base/tool_platform.h"
#include "tool/shared/run/clip_errors.h"
#include "tool/shared/run/hosted_run.h"
#include "tool/validate/run/job.h"
#include "tool/validate/run/made_clips.h"
#include "tool/validate/run/plan.h"
#include "tool/validate/run/report.h"
#include "tool/validate/run/supervisor.h"

namespace simhost::tool {
namespace validate {
namespace {

constexpr std::size_t kMostConfiguration = std::size_t{1} << 20;

struct ValidateWords {
    ValidateOptions options;
    std::string config;
    std::string libraryFolder;
    std::string explain;
    std::string child;
    bool list = false;
    bool markdown = false;
    bool verbose = false;
    bool json = false;  // --json, with a file or without
};

// The beginning of a file, up to `most` bytes: what is named by mistake may be a clip of any size.
std::string fileText(const std::string& path, std::size_t most) {
    std::ifstream file(pathFromUtf8(path), std::ios::binary);
    if (!file) {
        throw ToolError(kUsage, "cannot read '" + path + "'");
    }
    std::string text(most, '\0');
    file.read(text.data(), static_cast<std::streamsize>(most));
    text.resize(static_cast<std::size_t>(file.gcount()));
    return text;
}

std::string absolutePath(const std::string& path) {
    std::error_code error;
    const std::filesystem::path absolute = std::filesystem::absolute(pathFromUtf8(path), error);
    return error ? path : pathToUtf8(absolute);
}

// A report replaces an older one, never a file that is something else: the word behind --json may be a clip
// that was meant to be validated.
void checkReport(const std::string& path, const char* begins) {
    checkOutput(path);
    std::error_code error;
    if (path.empty() || !std::filesystem::is_regular_file(pathFromUtf8(path), error)) {
        return;
    }
    const std::string text = fileText(path, std::string_view(begins).size());
    if (!text.empty() && text != begins) {
        throw ToolError(kNoOutput, "'" + path + "' is there and no report of this kind",
                        "remove it, or name another file", "not-a-report");
    }
}

void checkInput(const ValidateOptions& options) {
    if (options.plugin.empty()) {
        throw ToolError(kUsage, "name the plug-in to validate", "\"importer_host help validate\" tells more");
    }
    std::error_code error;
    if (!std::filesystem::is_regular_file(pathFromUtf8(options.plugin), error)) {
        throw ToolError(kNoPlugin, "there is no file '" + options.plugin + "'", "", "missing-plugin");
    }
    protectInput(options.plugin);
    for (const std::string& clip : options.clips) {
        requireClipFile(clip);
    }
    checkReport(options.json, "{");
    checkReport(options.junit, "<?xml");
    checkReport(options.html, "<!DOCTYPE html>");
}

void explain(const std::string& id) {
    if (const Check* check = findCheck(id)) {
        (void)std::fputs(explainText(*check).c_str(), stdout);
        return;
    }
    ValidateOptions options;
    options.only = {id};
    (void)plannedChecks(options, allChecks());
    throw ToolError(kUsage, "'" + id + "' is a group of checks",
                    "\"importer_host validate --list\" lists the checks in it", "unknown-check");
}

void list(const ValidateWords& words) {
    const std::string text = words.json       ? listJson(allChecks())
                             : words.markdown ? listMarkdown(allChecks())
                                              : listText(allChecks());
    (void)std::fputs(text.c_str(), stdout);
}

std::uint32_t jobCount(const ValidateOptions& options) {
    return options.jobs != 0 ? options.jobs : std::clamp(std::thread::hardware_concurrency(), 1u, 4u);
}

bool doesNotLoad(const Validation& validation) {
    return std::any_of(validation.results.begin(), validation.results.end(), [](const CheckResult& result) {
        return result.id == "module.loads" && result.outcome == Outcome::kFailed;
    });
}

void validateAll(const GlobalOptions& global, const ValidateWords& words, Validation& out) {
    const ValidateOptions& options = words.options;
    const std::vector<PlannedCheck> plan = plannedChecks(options, allChecks());
    const TemporaryPath folder(makeTemporaryFolder());
    TrialSetting setting;
    setting.plugin = absolutePath(options.plugin);
    GlobalOptions libraries = global;
    libraries.codecFolder = words.libraryFolder;
    setting.libraryFolder = codecFolder(libraries);
    for (const std::string& clip : options.clips) {
        setting.clips.push_back({absolutePath(clip), false});
    }
    if (options.clips.empty()) {
        setting.clips = makeClips(folder.path());
    }
    const SupervisorOptions how{jobCount(options), options.timeout, folder.path(), options.dumps};
    const bool tells = !(words.json && options.json.empty());
    Progress progress(global.progress || stderrIsTerminal(), "checks", plan.size());
    out.results = superviseChecks(setting, plan, how, [&](const CheckResult& result) {
        const bool quiet = result.outcome == Outcome::kPassed || result.outcome == Outcome::kSkipped;
        if (tells && (words.verbose || !quiet)) {
            (void)std::fputs(resultText(out, result).c_str(), stdout);
            (void)std::fflush(stdout);
        }
        progress.advance();
    });
}

int runValidate(const GlobalOptions& global, const ValidateWords& words) {
    if (!words.child.empty()) {
        return runJob(words.child);
    }
    if (words.list) {
        list(words);
        return kSuccess;
    }
    if (!words.explain.empty()) {
        explain(words.explain);
        return kSuccess;
    }
    const ValidateOptions& options = words.options;
    checkInput(options);
    Validation validation;
    validation.plugin = options.plugin;
    validation.clips = options.clips;
    validation.level = options.level;
    validation.seed = options.seed;
    validation.libraryFolder = words.libraryFolder;
    validation.versions = std::string("importer_host ") + ORVANTIS_VERSION + ", " + systemName();
    validateAll(global, words, validation);
    if (words.json) {
        writeAnswer(options.json, jsonReport(validation));
    }
    if (!options.junit.empty()) {
        writeText(options.junit, junitReport(validation));
    }
    if (!options.html.empty()) {
        writeText(options.html, htmlReport(validation));
    }
    const OutcomeCounts counts = countOutcomes(validation.results);
    if (!words.json || !options.json.empty()) {
        const std::string skipped = words.verbose ? std::string() : skippedText(validation.results);
        (void)std::fputs((skipped + summaryText(counts) + "\n").c_str(), stdout);
    }
    if (counts.bad() > 0) {
        return doesNotLoad(validation) ? kNoPlugin : kBrokenRule;
    }
    return counts.success() ? kSuccess : kFailed;
}

// `--json PLUGIN.prm` means the plug-in, since no report is called so. True when what was taken for the
// plug-in is a clip.
bool takePluginBack(ValidateOptions& options) {
    std::string ending =
        options.json.substr(options.json.size() - std::min<std::size_t>(options.json.size(), 4));
    std::transform(ending.begin(), ending.end(), ending.begin(),
                   [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; });
    if (ending != ".prm") {
        return false;
    }
    const bool clip = !options.plugin.empty();
    if (clip) {
        options.clips.insert(options.clips.begin(), options.plugin);
    }
    options.plugin = std::exchange(options.json, {});
    return clip;
}

// The long names of the options that the command line gave.
std::vector<std::string> givenOptions(const CLI::App& parser) {
    std::vector<std::string> out;
    for (const CLI::Option* option : parser.get_options()) {
        if (option->count() > 0) {
            out.push_back(option->get_lnames().empty() ? "clips" : option->get_lnames().front());
        }
    }
    return out;
}

void addReportOptions(CLI::App& parser, ValidateWords& words) {
    ValidateOptions& options = words.options;
    parser
        .add_option("--json", options.json,
                    "Write the report as JSON to this file; without a file, to the standard output in the "
                    "place of the "
                    "text")
        ->expected(0, 1)
        ->type_name("FILE");
    parser.add_option("--junit", options.junit,
                      "Write the report for a build server, in the format of JUnit");
    parser.add_option("--html", options.html, "Write the report as a page");
    parser.add_option("--dumps", options.dumps, "Folder for minidumps of crashes (Windows)");
    parser.add_flag("--verbose", words.verbose, "Tell of the checks that passed too");
    parser.add_flag("--list", words.list, "List the checks instead, with --json for programs");
    parser.add_flag("--markdown", words.markdown)->group("");
    parser.add_option("--explain", words.explain, "Tell all about one check instead")->type_name("ID");
    parser.add_option("--child", words.child)->group("");
}

}  // namespace

static Command addCommand(CLI::App& app) {
    auto words = std::make_shared<ValidateWords>();
    ValidateOptions& options = words->options;
    CLI::App* parser = app.add_subcommand(
        "validate",
        "Hold any importer against the rules of the host, check by check, each in a process of its own");
    parser->add_option("PLUGIN", options.plugin, "The importer: a .prm file, whosever it is");
    parser->add_option("CLIP", options.clips,
                       "Files that it plays (default: small AVI files, made for the run)");
    parser->add_option("--level", options.level, "Run the checks up to this level: 1 the first ones, 10 all")
        ->capture_default_str()
        ->check(CLI::Range(kLowestLevel, kHighestLevel));
    parser->add_option("--seed", options.seed, "Seed of all that is drawn by lot")->capture_default_str();
    parser
        ->add_option("--repeat", options.repeat, "Run everything so many times, with the next seed each time")
        ->capture_default_str()
        ->check(CLI::Range(1u, kMostRepeats));
    parser->add_flag("--randomise", options.randomise, "Run the checks in an order drawn by lot");
    parser
        ->add_option("--only", options.only,
                     "Only these checks or groups, whatever their level: ids with commas between them")
        ->delimiter(',')
        ->allow_extra_args(false)
        ->type_name("ID,…");
    parser->add_option("--skip", options.skip, "Not these checks or groups")
        ->delimiter(',')
        ->allow_extra_args(false)
        ->type_name("ID,…");
    parser
        ->add_option("--jobs", options.jobs,
                     "Processes at a time (default: one for each processor, at most 4)")
        ->check(CLI::Range(1u, kMostJobs));
    parser->add_option("--timeout", options.timeout, "Seconds that a check may take")
        ->capture_default_str()
        ->check(CLI::Range(kLeastTimeout, kMostTimeout));
    parser->add_option("--config", words->config,
                       "JSON file with options by their long names, and \"clips\"; the command line wins");
    parser->add_option("--library-folder", words->libraryFolder,
                       "Folder of libraries that the plug-in needs (default: ../standin, if it exists)");
    addReportOptions(*parser, *words);
    return {parser,
            [words, parser](const GlobalOptions& global) {
                words->json = parser->get_option("--json")->count() > 0;
                std::vector<std::string> given = givenOptions(*parser);
                if (takePluginBack(words->options)) {
                    given.emplace_back("clips");
                }
                if (!words->config.empty()) {
                    const std::string folder = pathToUtf8(pathFromUtf8(words->config).parent_path());
                    const std::string text = fileText(words->config, kMostConfiguration + 1);
                    if (text.size() > kMostConfiguration) {
                        throw ToolError(kUsage, "the configuration file is larger than 1 MiB", "",
                                        "bad-configuration");
                    }
                    applyConfiguration(words->options, text, folder, given);
                }
                return runValidate(global, *words);
            },
            {.plugin = false, .profile = false, .log = false, .json = false}};
}

}  // namespace validate

Command addValidateCommand(CLI::App& app) {
    return validate::addCommand(app);
}

}  // namespace simhost::tool
