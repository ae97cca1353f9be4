// The commands of the tool. Each adds itself to the parser; what it returns runs it and gives the exit code.
// Failures are ToolErrors. Main thread only.
#pragma once

#include <functional>

namespace CLI {
class App;
}

namespace simhost::tool {

struct GlobalOptions;

/// Which of the options that several commands share a command has a use for.
struct CommonOptions {
    bool plugin = true;    ///< --plugin and --codec-folder
    bool profile = true;   ///< --profile
    bool log = true;       ///< --log
    bool progress = true;  ///< --progress
    bool json = true;      ///< --json
};

struct Command {
    CLI::App* parser;
    std::function<int(const GlobalOptions&)> run;
    CommonOptions uses = {};
};

Command addInfoCommand(CLI::App& app);
Command addFramesCommand(CLI::App& app);
Command addAudioCommand(CLI::App& app);
Command addAsyncCommand(CLI::App& app);
Command addRescueCommand(CLI::App& app);
Command addLogCommand(CLI::App& app);
Command addReportCommand(CLI::App& app);
Command addDoctorCommand(CLI::App& app);
Command addSoakCommand(CLI::App& app);
Command addBenchCommand(CLI::App& app);
Command addVerifyCommand(CLI::App& app);
Command addCollectCommand(CLI::App& app);
Command addExcerptCommand(CLI::App& app);
Command addValidateCommand(CLI::App& app);

}  // namespace simhost::tool
