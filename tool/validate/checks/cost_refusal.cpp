#include <fstream>
#include <string>

#include "tool/shared/base/number_text.h"
#include "tool/shared/base/output_file.h"
#include "tool/validate/base/check.h"
#include "tool/validate/base/playing.h"
#include "tool/validate/base/timing.h"

namespace simhost::tool::validate {
namespace {

void costRefusal(Trial& trial) {
    Stage stage(trial);
    const std::string path = copyOfClip(trial, stage, "foreign");
    std::ofstream(pathFromUtf8(path), std::ios::binary) << std::string(1000000, 'x');
    const double seconds = quickestSeconds(5, [&] { (void)Playing::open(stage.importer(), path); });
    if (seconds > 0.1) {
        trial.warn({.call = "imOpenFile8 and imGetInfo8, refused",
                    .clip = "a file of a million letters",
                    .seen = decimalText(seconds, 2) + " s"});
    }
}

const Registered kCostRefusal({"cost.refusal", 4,
                               "A file of another format is refused within a tenth of a second.",
                               "Every importer is asked about every file that is dropped on the host.",
                               costRefusal});

}  // namespace
}  // namespace simhost::tool::validate
