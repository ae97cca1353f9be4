// importer_host: asks an importer plug-in the host's questions from the command line.
#include <CLI/CLI.hpp>
#include <cstdio>
#include <exception>
#include <string>
#include <vector>

#include "simhost/host_profile.h"
#include "tool/commands.h"
#include "tool/shared/base/hosted_run.h"
#include "tool/shared/base/tool_error.h"
#include "tool/shared/base/tool_platform.h"

namespace simhost::tool {
namespace {

std::string footer() {
    std::string out =
        "Exit codes: 0 success; 1 the plug-in refused the file or a request, or doctor found a fault; 2 "
        "wrong\n"
        "arguments; 3 the plug-in could not be loaded; 4 a file could not be written; 5 the plug-in leaked,\n"
        "broke a rule of the host, or gave different frames on its two paths.\n\nHost profiles:\n";
    for (const HostProfile& profile : builtinProfiles()) {
        out += "  " + profile.name + std::string(20 - profile.name.size(), ' ') + profile.description + "\n";
    }
    return out;
}

int run(std::vector<std::string> arguments) {
    CLI::App app(
        "Opens clips through an importer plug-in as its host does, and shows what the host would see.");
    app.name("importer_host");
    app.allow_windows_style_options(false);  // "/clips/a.avi" is a path under Wine, not an option
    app.footer(footer());
    app.set_version_flag("--version", "importer_host " ORVANTIS_VERSION);
    app.require_subcommand(1);
    app.fallthrough();
    GlobalOptions global;
    app.add_option("--plugin", global.plugin,
                   "The plug-in (default: ImporterOrvantis.prm beside this program)");
    app.add_option(
        "--codec-folder", global.codecFolder,
        "Folder of the codec library, if not on the system path (default: ../standin, if it exists)");
    app.add_option("--profile", global.profile, "Kind of host, see below")->capture_default_str();
    app.add_flag("--log", global.log,
                 "Switch the plug-in's diagnostic log on for this run and tell where it is");
    app.add_flag("--progress", global.progress, "Show progress even if the error stream is no terminal");
    const Command commands[] = {addInfoCommand(app),  addFramesCommand(app), addAudioCommand(app),
                                addAsyncCommand(app), addReportCommand(app), addDoctorCommand(app),
                                addLogCommand(app),   addSoakCommand(app),   addBenchCommand(app)};
    // The parser takes its arguments from the back.
    std::vector<std::string> reversed(arguments.rbegin(), arguments.rend());
    try {
        app.parse(std::move(reversed));
    } catch (const CLI::ParseError& error) {
        return app.exit(error) == 0 ? kSuccess : kUsage;
    }
    for (const Command& command : commands) {
        if (command.parser->parsed()) {
            return command.run(global);
        }
    }
    return kUsage;
}

}  // namespace
}  // namespace simhost::tool

int main(int argc, char** argv) {
    using namespace simhost::tool;
    try {
        prepareTerminal();
        return run(programArguments(argc, argv));
    } catch (const ToolError& error) {
        (void)std::fprintf(stderr, "importer_host: %s\n", error.what());
        return error.code();
    } catch (const std::exception& error) {
        (void)std::fprintf(stderr, "importer_host: %s\n", error.what());
        return kFailed;
    }
}
