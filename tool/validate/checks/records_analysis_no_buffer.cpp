#include "tool/validate/base/check.h"
#include "tool/validate/base/playing.h"

namespace simhost::tool::validate {
namespace {

void recordsAnalysisNoBuffer(Trial& trial) {
    Stage stage(trial);
    forClips(trial, stage, [&](Playing& playing) {
        (void)playing.clip().analysis(0, false);
        (void)playing.clip().analysis(0);
    });
}

const Registered kRecordsAnalysisNoBuffer({"records.analysis-no-buffer", 5,
                                           "imAnalysis without a buffer is harmless.",
                                           "The host asks with none when it has nothing to show.",
                                           recordsAnalysisNoBuffer});

}  // namespace
}  // namespace simhost::tool::validate
