// importer_host: asks an importer plug-in the host's questions from the command line.
#include <CLI/CLI.hpp>
#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <exception>
#include <memory>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "simhost/host_profile.h"
#include "tool/commands.h"
#include "tool/shared/base/failure.h"
#include "tool/shared/base/file_facts.h"
#include "tool/shared/base/help_formatter.h"
#include "tool/shared/base/interruption.h"
#include "tool/shared/base/json_text.h"
#include "tool/shared/base/nearest_name.h"
#include "tool/shared/base/tool_error.h"
#include "tool/shared/base/tool_platform.h"
#include "tool/shared/run/hosted_run.h"
#include "tool/shared/run/versions.h"

namespace simhost::tool {
namespace {

using Words = std::vector<std::string>;

std::string footer() {
    std::string out = wrapped(
        "\"importer_host help COMMAND\" tells more about a command. Clips alone, as when they are dropped on "
        "the program, get a "
        "report each, which is opened.\n\n"
        "Exit codes: 0 success; 1 the plug-in refused the file or a request, or doctor or verify found a "
        "fault; 2 "
        "wrong arguments; 3 the "
        "plug-in could not be loaded; 4 a file could not be written; 5 the plug-in leaked, broke a rule of "
        "the host, or gave "
        "different frames on its two paths; 130 ended by Ctrl-C.\n\n"
        "Host profiles:\n",
        kHelpColumns);
    for (const HostProfile& profile : builtinProfiles()) {
        out += "  " + profile.name + std::string(20 - profile.name.size(), ' ') + profile.description + "\n";
    }
    return out;
}

void addCommonOptions(CLI::App& parser, const CommonOptions& uses, GlobalOptions& global) {
    constexpr const char* kGroup = "Options of several commands";
    if (uses.plugin) {
        parser
            .add_option("--plugin", global.plugin,
                        "The plug-in (default: ImporterOrvantis.prm beside this program)")
            ->group(kGroup);
        parser
            .add_option("--codec-folder", global.codecFolder,
                        "Folder of the codec library, if not on the system path (default: ../standin, if it "
                        "exists)")
            ->group(kGroup);
    }
    if (uses.profile) {
        parser
            .add_option("--profile", global.profile,
                        "Kind of host: \"importer_host --help\" lists them (default: default)")
            ->group(kGroup);
    }
    if (uses.log) {
        parser
            .add_flag("--log", global.log,
                      "Write the plug-in's diagnostic log of this run among the user's logs and tell where")
            ->group(kGroup);
    }
    if (uses.progress) {
        parser
            .add_flag("--progress", global.progress, "Show progress even if the error stream is no terminal")
            ->group(kGroup);
    }
    if (uses.json) {
        parser.add_flag("--json", global.json, "Answer with a JSON object, failures too")->group(kGroup);
    }
}

// The first word that is no option and no option's value: where a command stands.
Words::iterator commandWord(Words& words, const CLI::App& app) {
    for (auto at = words.begin(); at != words.end(); ++at) {
        if (at->empty() || at->front() != '-' || at->size() == 1) {
            return at;
        }
        const CLI::Option* option = app.get_option_no_throw(*at);
        if (option != nullptr && option->get_items_expected_max() > 0 && at + 1 != words.end()) {
            ++at;
        }
    }
    return words.end();
}

// What users type who do not know the commands: a clip alone, "help", a word with a slip in it.
void completeCommand(Words& words, const CLI::App& app, const Words& names) {
    const auto at = commandWord(words, app);
    if (at == words.end() || std::find(names.begin(), names.end(), *at) != names.end()) {
        return;
    }
    if (*at == "help") {
        words.erase(at);
        words.emplace_back("--help");
        return;
    }
    const bool isPath = at->find_first_of("/\\.") != std::string::npos;
    if (isPath || fileFacts(*at).exists()) {
        words.insert(at, {"report", "--open"});
        return;
    }
    const std::string nearest = nearestName(*at, names);
    std::string all;
    for (const std::string& name : names) {
        all += (all.empty() ? "" : ", ") + name;
    }
    throw ToolError(kUsage, "there is no command '" + *at + "', and no file of that name",
                    nearest.empty() ? "the commands are " + all : "did you mean '" + nearest + "'?",
                    "unknown-command");
}

int tellVersions(const GlobalOptions& global) {
    const Versions versions = versionsOf(global);
    const std::string text = global.json ? jsonText(versionJson(versions)) : versionText(versions);
    (void)std::fputs(text.c_str(), stdout);
    return kSuccess;
}

int run(Words words, GlobalOptions& global) {
    CLI::App app(
        "Opens clips through an importer plug-in as its host does, and shows what the host would see.");
    app.name("importer_host");
    app.formatter(std::make_shared<HelpFormatter>());  // its commands inherit it
    app.allow_windows_style_options(false);            // "/clips/a.avi" is a path under Wine, not an option
    app.footer(footer());
    bool version = false;
    app.add_flag("--version", version,
                 "The versions of tool, plug-in, codec library and system, and the host profile");
    addCommonOptions(app, {}, global);
    const Command commands[] = {addInfoCommand(app),    addFramesCommand(app), addAudioCommand(app),
                                addAsyncCommand(app),   addReportCommand(app), addDoctorCommand(app),
                                addRescueCommand(app),  addVerifyCommand(app), addCollectCommand(app),
                                addExcerptCommand(app), addLogCommand(app),    addValidateCommand(app),
                                addSoakCommand(app),    addBenchCommand(app)};
    Words names;
    for (const Command& command : commands) {
        addCommonOptions(*command.parser, command.uses, global);
        names.push_back(command.parser->get_name());
    }
    completeCommand(words, app, names);
    try {
        // The parser takes its arguments from the back.
        app.parse(Words(words.rbegin(), words.rend()));
    } catch (const CLI::ParseError& error) {
        if (error.get_exit_code() == 0) {
            return app.exit(error);
        }
        throw ToolError(kUsage, error.what(),
                        "\"importer_host --help\" and \"importer_host help COMMAND\" tell more");
    }
    if (version) {
        return tellVersions(global);
    }
    for (const Command& command : commands) {
        if (command.parser->parsed()) {
            return command.run(global);
        }
    }
    throw ToolError(kUsage, "name a command, or a clip to report on", "\"importer_host --help\" lists them");
}

// What was printed may still be on its way.
int finishAnswer(int result) {
    if (std::fflush(stdout) == 0 && std::ferror(stdout) == 0) {
        return result;
    }
    const ToolError error(kNoOutput,
                          "cannot write the answer to the standard output: " + systemReason(errno));
    return result == kSuccess ? tellFailure(error, false) : result;
}

}  // namespace
}  // namespace simhost::tool

int main(int argc, char** argv) {
    using namespace simhost::tool;
    GlobalOptions global;
    try {
        watchForInterruption();
        prepareTerminal();
        const std::vector<std::string> words = programArguments(argc, argv);
        // Known before the parser: its own failures are told alike.
        global.json = std::find(words.begin(), words.end(), "--json") != words.end();
        return finishAnswer(run(words, global));
    } catch (const ToolError& error) {
        return tellFailure(error, global.json);
    } catch (const std::exception& error) {
        return tellFailure(ToolError(kFailed, error.what()), global.json);
    }
}
