#include <string>

#include "host/result_codes.h"
#include "tool/validate/base/check.h"
#include "tool/validate/base/playing.h"

namespace simhost::tool::validate {
namespace {

void recordsAnalysisText(Trial& trial) {
    Stage stage(trial);
    bool any = false;
    forClips(trial, stage, [&](Playing& playing) {
        for (const std::int32_t size : {1, 2, 10, 100, 4096, 65536}) {
            const AnalysisText text = playing.clip().analysis(size);
            if (text.result != host::imNoErr) {
                continue;
            }
            any = true;
            if (!text.terminated) {
                trial.fail({.call = "imAnalysis with a buffer of " + std::to_string(size) + " bytes",
                            .field = "imAnalysisRec.buffer",
                            .clip = playing.path(),
                            .seen = "a text without an end"});
            }
        }
    });
    if (!any) {
        Trial::skip("the plug-in answers no imAnalysis");
    }
}

const Registered kRecordsAnalysisText(
    {"records.analysis-text", 2, "The text of imAnalysis is ended within its buffer, however small that is.",
     "The host shows it in its window of properties.", recordsAnalysisText});

}  // namespace
}  // namespace simhost::tool::validate
