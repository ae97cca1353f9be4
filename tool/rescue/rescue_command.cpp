// rescue: finds what is whole in a damaged AVI file, and writes it as a new file or mends the file where it
// lies.
#include <CLI/CLI.hpp>
#include <memory>

#include "tool/commands.h"
#include "tool/rescue/rescue_run.h"
#include "tool/shared/base/tool_platform.h"
#include "tool/shared/run/clip_errors.h"
#include "tool/shared/run/hosted_run.h"

namespace simhost::tool {

Command addRescueCommand(CLI::App& app) {
    auto options = std::make_shared<RescueOptions>();
    CLI::App* parser = app.add_subcommand(
        "rescue", "Find what is whole in a clip that has no index or is damaged, and make it playable");
    parser->add_option("FILE", options->file, "An AVI file")->required();
    auto* check = parser->add_flag(
        "--check", options->check,
        "Write nothing, say what is there (the default); exit code 1 when a rescue would gain");
    auto* output = parser->add_option(
        "--out", options->output, "Write all that is whole into this new OpenDML file, which must not exist");
    auto* inPlace = parser->add_flag(
        "--in-place", options->inPlace,
        "Append indexes to the file and mend its headers, after FILE.undo holds all old bytes");
    auto* undo =
        parser->add_flag("--undo", options->undo, "Bring back the bytes that --in-place has changed");
    for (CLI::Option* one : {check, output, inPlace, undo}) {
        for (CLI::Option* other : {check, output, inPlace, undo}) {
            if (one != other) {
                one->excludes(other);
            }
        }
    }
    return {parser,
            [options](const GlobalOptions& global) {
                requireClipFile(options->file);
                options->json = global.json;
                options->progress = global.progress || stderrIsTerminal();
                return runRescue(systemDisk(), *options);
            },
            {.plugin = false, .profile = false, .log = false}};
}

}  // namespace simhost::tool
